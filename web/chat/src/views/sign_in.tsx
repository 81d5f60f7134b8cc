import type { JSX } from "preact";
import { useLayoutEffect, useRef, useState } from "preact/hooks";
import { demoAccounts, demoPassword } from "../store/users.ts";
import { Avatar } from "./avatar.tsx";
import { useStore } from "./context.ts";
import { Icon } from "./icons.tsx";

/** The sign-in form, with the demo accounts a click away. */
export function SignIn(): JSX.Element {
  const { session, connection } = useStore();
  const [nick, setNick] = useState("");
  const [password, setPassword] = useState("");
  const busy = session.status.value === "signingin";
  const problem =
    connection.value.state === "open" ? session.problem.value : "Waiting for the host…";

  const field = useRef<HTMLInputElement>(null);
  const tried = useRef(false);
  // What is typed after a refused password takes its place.
  useLayoutEffect(() => {
    if (tried.current && !busy) field.current?.select();
    tried.current = busy;
  }, [busy]);

  const submit = (event: Event) => {
    event.preventDefault();
    if (nick.trim() && !busy) void session.signIn(nick.trim(), password);
  };
  const useDemo = (account: string) => {
    setNick(account);
    setPassword(demoPassword);
    void session.signIn(account, demoPassword);
  };

  return (
    <main class="centered">
      <form class="card sign-in" onSubmit={submit}>
        <span class="logo">
          <Icon name="chat" />
        </span>
        <h1>Sign in to chat</h1>
        <p class="problem" role="alert">
          {problem}
        </p>
        <label>
          Account
          <input
            name="nick"
            autoComplete="username"
            autoCapitalize="none"
            spellcheck={false}
            autofocus
            required
            value={nick}
            onInput={(event) => setNick(event.currentTarget.value)}
          />
        </label>
        <label>
          Password
          <input
            ref={field}
            name="password"
            type="password"
            autoComplete="current-password"
            value={password}
            onInput={(event) => setPassword(event.currentTarget.value)}
          />
        </label>
        <button type="submit" class="button primary" disabled={busy}>
          {busy ? "Signing in…" : "Sign in"}
        </button>
        <fieldset class="demo" disabled={busy}>
          <legend>Demo accounts (password “{demoPassword}”)</legend>
          {demoAccounts.map((account) => (
            <button key={account} type="button" class="chip" onClick={() => useDemo(account)}>
              <Avatar nick={account} />
              {account}
            </button>
          ))}
        </fieldset>
      </form>
    </main>
  );
}
