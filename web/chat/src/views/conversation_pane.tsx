import type { IMUserID } from "@imsdkbridge/client";
import type { JSX } from "preact";
import { useState } from "preact/hooks";
import { keyOf, type Peer, isTribe } from "../store/peers.ts";
import { Avatar } from "./avatar.tsx";
import { Composer } from "./composer.tsx";
import { useStore } from "./context.ts";
import { DropZone } from "./drop_zone.tsx";
import { Icon } from "./icons.tsx";
import { Menu, type MenuItem } from "./menu.tsx";
import { MessageList } from "./message_list.tsx";
import { Notice } from "./notice.tsx";
import { SearchBar } from "./search_bar.tsx";
import { SelectionBar } from "./selection_bar.tsx";

/** The right side: one conversation with its messages and the field to write in. */
export function ConversationPane({ cid }: { cid: Peer }): JSX.Element {
  const store = useStore();
  const key = keyOf(cid);
  const readOnly = store.faces.isVirtual(cid);
  const barred = store.names.whyBarred(cid);
  return (
    <DropZone take={(files) => !readOnly && !barred && store.attachments.add(cid, files)}>
      <Header cid={cid} readOnly={readOnly} />
      {store.search.cid.value && <SearchBar key={`search ${key}`} />}
      <Messages key={`messages ${key}`} cid={cid} />
      {store.selection.active.value ? (
        <SelectionBar cid={cid} />
      ) : readOnly ? (
        <p class="read-only">These messages come from the service. They cannot be answered.</p>
      ) : barred ? (
        <p class="read-only">{barred}</p>
      ) : (
        <Composer key={`composer ${key}`} cid={cid} />
      )}
    </DropZone>
  );
}

function Header({ cid, readOnly }: { cid: Peer; readOnly: boolean }): JSX.Element {
  const store = useStore();
  const [menu, setMenu] = useState<{ x: number; y: number } | undefined>(undefined);
  const name = store.names.of(cid);
  const typing = store.typing.peers.value.has(keyOf(cid));
  const ignored = store.autoReplies.ignored.value.has(keyOf(cid));
  const replies = (user: IMUserID): MenuItem => ({
    label: ignored ? "Announce automatic replies" : "Ignore automatic replies",
    icon: ignored ? "bell" : "bell-off",
    run: () => void store.autoReplies.setIgnored(user, !ignored),
  });
  const remove: MenuItem = {
    label: "Delete the conversation…",
    icon: "trash",
    danger: true,
    run: () => void (store.dialog.value = { kind: "delete", cid, msgids: "all" }),
  };
  const items = readOnly || isTribe(cid) ? [remove] : [replies(cid), remove];
  return (
    <header class="bar">
      <button
        type="button"
        class="icon-button back"
        aria-label="Back to the conversations"
        onClick={() => store.closeConversation()}
      >
        <Icon name="back" />
      </button>
      <Avatar nick={name} />
      <div class="bar-lines">
        <h2 class="bar-title">{name}</h2>
        <span class="bar-line" role="status">
          {typing && `${name} is typing…`}
          {readOnly && "Service messages"}
          {isTribe(cid) && `Tribe No. ${cid.tribeid}`}
        </span>
      </div>
      {isTribe(cid) && (
        <button
          type="button"
          class="icon-button"
          title="Members and settings"
          aria-label="Members and settings"
          onClick={() => store.tribes.show(cid.tribeid)}
        >
          <Icon name="people" />
        </button>
      )}
      {!readOnly && (
        <button
          type="button"
          class="icon-button"
          title="Search in this conversation (Ctrl+F)"
          aria-label="Search in this conversation"
          onClick={() => store.search.open(cid)}
        >
          <Icon name="search" />
        </button>
      )}
      <button
        type="button"
        class="icon-button"
        title="More"
        aria-label="Conversation menu"
        aria-haspopup="menu"
        onClick={({ currentTarget }) => {
          const { right, bottom } = currentTarget.getBoundingClientRect();
          setMenu({ x: right, y: bottom + 4 });
        }}
      >
        <Icon name="more" />
      </button>
      {menu && (
        <Menu label="Conversation" items={items} {...menu} close={() => setMenu(undefined)} />
      )}
    </header>
  );
}

function Messages({ cid }: { cid: Peer }): JSX.Element {
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
        return (
          <Notice
            icon="chat"
            title="No messages yet"
            text={`Say hello to ${store.names.of(cid)}.`}
          />
        );
    }
  }
}
