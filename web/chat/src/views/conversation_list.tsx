import type { JSX } from "preact";
import { useRef } from "preact/hooks";
import type { Conversation } from "../store/conversations.ts";
import { keyOf, samePeer, type Peer, isTribe, tribeOf } from "../store/peers.ts";
import { cut } from "../text/body.ts";
import { lineOf } from "../text/line.ts";
import { timeOf } from "../text/rows.ts";
import { fullTime, listTime } from "../text/time.ts";
import { Avatar } from "./avatar.tsx";
import { useStore } from "./context.ts";
import { LineText } from "./line_text.tsx";
import { Notice } from "./notice.tsx";
import { UnreadBadge } from "./unread_badge.tsx";

/** The conversations, newest first. Arrow keys move, Enter opens. */
export function ConversationList(): JSX.Element {
  const { conversations } = useStore();
  const all = conversations.sorted.value;
  if (all.length > 0) return <Rows all={all} />;
  switch (conversations.status.value) {
    case "loading":
      return <Notice spinner title="Loading conversations…" />;
    case "failed":
      return (
        <Notice
          icon="warning"
          title="The conversations could not be loaded"
          text={conversations.problem.value}
          action={{ label: "Try again", run: () => void conversations.retry() }}
        />
      );
    case "ready":
      return (
        <Notice icon="chat" title="No conversations yet" text="Start one with a name above." />
      );
  }
}

function Rows({ all }: { all: Conversation[] }): JSX.Element {
  const store = useStore();
  const list = useRef<HTMLUListElement>(null);
  const tribe = store.tribes.open.value;
  const active = tribe ? tribeOf(tribe.tribeid) : store.active.value;
  const current = Math.max(
    0,
    all.findIndex(({ cid }) => samePeer(cid, active)),
  );

  const onKeyDown = (event: KeyboardEvent) => {
    const rows = [...(list.current?.children ?? [])] as HTMLElement[];
    const at = rows.indexOf(event.target as HTMLElement);
    const targets: Record<string, number> = {
      ArrowDown: at + 1,
      ArrowUp: at - 1,
      Home: 0,
      End: rows.length - 1,
    };
    const target = targets[event.key];
    if (target === undefined) return;
    event.preventDefault();
    rows[Math.min(Math.max(target, 0), rows.length - 1)]?.focus();
  };

  return (
    <ul
      class="conversations"
      role="listbox"
      aria-label="Conversations"
      ref={list}
      onKeyDown={onKeyDown}
    >
      {all.map((conversation, index) => (
        <Row
          key={keyOf(conversation.cid)}
          conversation={conversation}
          selected={samePeer(conversation.cid, active)}
          reachable={index === current}
          open={(cid) => store.open(cid)}
        />
      ))}
    </ul>
  );
}

interface RowProps {
  conversation: Conversation;
  selected: boolean;
  /** Whether Tab stops here; the arrow keys go on from there. */
  reachable: boolean;
  open: (cid: Peer) => void;
}

function Row({ conversation, selected, reachable, open }: RowProps): JSX.Element {
  const { cid, unread, last } = conversation;
  const store = useStore();
  const name = store.names.of(cid);
  const typing = store.typing.peers.value.has(keyOf(cid));
  const draft = selected ? "" : cut((store.outbox.drafts.value[keyOf(cid)] ?? "").trim(), 160);
  const onKeyDown = (event: KeyboardEvent) => {
    if (event.key !== "Enter" && event.key !== " ") return;
    event.preventDefault();
    open(cid);
  };
  return (
    <li
      class={unread > 0 ? "conversation unread" : "conversation"}
      role="option"
      aria-selected={selected}
      tabIndex={reachable ? 0 : -1}
      data-nick={name}
      onClick={() => open(cid)}
      onKeyDown={onKeyDown}
    >
      <Avatar nick={name} />
      <span class="conversation-lines">
        <span class="conversation-line">
          <span class="conversation-name">{name}</span>
          {store.faces.isVirtual(cid) && <span class="tag">Service</span>}
          {isTribe(cid) && <span class="tag">Tribe</span>}
          {last && (
            <time class="conversation-time" title={fullTime(timeOf(last))}>
              {listTime(timeOf(last), new Date())}
            </time>
          )}
        </span>
        <span class="conversation-line">
          <span class="conversation-preview" dir="auto">
            {typing ? <i>typing…</i> : draft ? <Draft text={draft} /> : <Preview last={last} />}
          </span>
          <UnreadBadge cid={cid} unread={unread} />
        </span>
      </span>
    </li>
  );
}

function Draft({ text }: { text: string }): JSX.Element {
  return (
    <>
      <b class="draft">Draft:</b> {text}
    </>
  );
}

function Preview({ last }: Pick<Conversation, "last">): JSX.Element {
  const { names, session } = useStore();
  if (!last) return <>No messages yet</>;
  const mine = samePeer(last.fromid, session.me.value);
  return <LineText line={lineOf(last, mine, names.ofSender(last))} />;
}
