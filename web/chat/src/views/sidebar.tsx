import type { JSX } from "preact";
import { useState } from "preact/hooks";
import { Avatar } from "./avatar.tsx";
import { useStore } from "./context.ts";
import { ConversationList } from "./conversation_list.tsx";
import { Icon } from "./icons.tsx";

/** The left column: who is signed in, a field for a new chat, and the conversations. */
export function Sidebar(): JSX.Element {
  const { session } = useStore();
  const nick = session.me.value?.nick ?? "";
  return (
    <aside class="sidebar">
      <header class="bar">
        <Avatar nick={nick} />
        <h1 class="bar-title">{nick}</h1>
        <button
          type="button"
          class="icon-button"
          title="Sign out"
          aria-label="Sign out"
          onClick={() => void session.signOut()}
        >
          <Icon name="leave" />
        </button>
      </header>
      <NewChat />
      <ConversationList />
    </aside>
  );
}

function NewChat(): JSX.Element {
  const store = useStore();
  const [nick, setNick] = useState("");
  const submit = (event: Event) => {
    event.preventDefault();
    const name = nick.trim();
    if (!name) return;
    setNick("");
    store.startChat(name);
  };
  return (
    <form class="new-chat" onSubmit={submit}>
      <input
        aria-label="Start a chat with"
        placeholder="Start a chat with…"
        autoCapitalize="none"
        spellcheck={false}
        value={nick}
        onInput={(event) => setNick(event.currentTarget.value)}
      />
      <button type="submit" class="icon-button" aria-label="Start chat" title="Start chat">
        <Icon name="plus" />
      </button>
    </form>
  );
}
