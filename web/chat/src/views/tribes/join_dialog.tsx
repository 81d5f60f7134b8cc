import type { JSX } from "preact";
import { useState } from "preact/hooks";
import { useStore } from "../context.ts";
import { Dialog } from "../dialog.tsx";
import { Actions } from "../dialog_actions.tsx";
import { Notice } from "../notice.tsx";

/** Joins a tribe by its number; asks for its password only when the tribe does. */
export function JoinDialog({ close }: { close: () => void }): JSX.Element {
  const { tribes } = useStore();
  const [tribeid, setTribeid] = useState("");
  const [words, setWords] = useState("");
  const [password, setPassword] = useState("");
  const [asksPassword, setAsksPassword] = useState(false);
  const [state, setState] = useState<"form" | "busy" | "waiting">("form");
  const [problem, setProblem] = useState("");
  const number = tribeid.trim();
  const join = async (event: Event) => {
    event.preventDefault();
    setState("busy");
    const outcome = await tribes.join(number, password, words.trim());
    setState(outcome.waiting ? "waiting" : "form");
    setProblem(outcome.problem ?? "");
    if (outcome.asksPassword) setAsksPassword(true);
    if (!outcome.problem && !outcome.waiting) close();
  };
  if (state === "waiting") {
    return (
      <Dialog title="Join a tribe" close={close}>
        <Notice
          icon="clock"
          title="Waiting for approval"
          text="A manager of the tribe decides. You will hear of it here."
          action={{ label: "All right", run: close }}
        />
      </Dialog>
    );
  }
  const firstTry = asksPassword && !password;
  return (
    <Dialog title="Join a tribe" close={close}>
      <form class="dialog-form" onSubmit={(event) => void join(event)}>
        <input
          class="field"
          aria-label="Number of the tribe"
          placeholder="Number of the tribe"
          inputMode="numeric"
          autofocus
          value={tribeid}
          onInput={(event) => {
            setTribeid(event.currentTarget.value);
            setAsksPassword(false);
            setPassword("");
            setProblem("");
          }}
        />
        {asksPassword ? (
          <input
            key="password"
            class="field"
            type="password"
            aria-label="Password of the tribe"
            placeholder="Password of the tribe"
            autocomplete="off"
            autofocus
            value={password}
            onInput={(event) => setPassword(event.currentTarget.value)}
          />
        ) : (
          <input
            key="words"
            class="field"
            aria-label="Words for its managers"
            placeholder="Words for its managers"
            dir="auto"
            maxLength={512}
            value={words}
            onInput={(event) => setWords(event.currentTarget.value)}
          />
        )}
        <p class="problem" role="alert">
          {firstTry
            ? "This tribe asks for a password."
            : problem && `You did not get in: ${problem}.`}
        </p>
        <Actions
          close={close}
          label="Join"
          off={!/^[1-9][0-9]*$/.test(number) || state === "busy" || firstTry}
        />
      </form>
    </Dialog>
  );
}
