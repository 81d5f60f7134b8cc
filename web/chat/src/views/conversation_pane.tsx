import type { UserId } from "@imsdkbridge/client";
import type { JSX } from "preact";
import { keyOf } from "../store/users.ts";
import { Avatar } from "./avatar.tsx";
import { Composer } from "./composer.tsx";
import { useStore } from "./context.ts";
import { Icon } from "./icons.tsx";
import { MessageList } from "./message_list.tsx";
import { Notice } from "./notice.tsx";

/** The right side: one conversation with its messages and the field to write in. */
export function ConversationPane({ cid }: { cid: UserId }): JSX.Element {
  const store = useStore();
  const key = keyOf(cid);
  return (
    <>
      <header class="bar">
        <button
          type="button"
          class="icon-button back"
          aria-label="Back to the conversations"
          onClick={() => store.closeConversation()}
        >
          <Icon name="back" />
        </button>
        <Avatar nick={cid.nick} />
        <h2 class="bar-title">{cid.nick}</h2>
      </header>
      <Messages key={`messages ${key}`} cid={cid} />
      <Composer key={`composer ${key}`} cid={cid} />
    </>
  );
}

function Messages({ cid }: { cid: UserId }): JSX.Element {
  const store = useStore();
  const thread = store.threads.of(cid).value;
  const waiting = store.outbox.outgoing.value.some((entry) => keyOf(entry.cid) === keyOf(cid));
  if (thread.messages.length > 0 || waiting) return <MessageList thread={thread} />;
  return <div class="centered">{placeholder()}</div>;

  function placeholder(): JSX.Element {
    switch (thread.status) {
      case "loading":
        return <Notice spinner title="Loading messages…" />;
      case "failed":
        return (
          <Notice
            icon="warning"
            title="The messages could not be loaded"
            text={thread.problem}
            action={{ label: "Try again", run: () => void store.threads.open(cid) }}
          />
        );
      case "ready":
        return <Notice icon="chat" title="No messages yet" text={`Say hello to ${cid.nick}.`} />;
    }
  }
}
