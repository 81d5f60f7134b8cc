import type { JSX } from "preact";
import { useState } from "preact/hooks";
import { IMTribeType } from "@imsdkbridge/client";
import type { Tribe } from "../../store/tribes/tribe_list.ts";
import { tribeOf } from "../../store/peers.ts";
import { levelWord } from "../../text/tribes.ts";
import { Avatar } from "../avatar.tsx";
import { useStore } from "../context.ts";
import { Icon } from "../icons.tsx";
import { Notice } from "../notice.tsx";
import { UnreadBadge } from "../unread_badge.tsx";

/** The account's tribes, with what makes or finds another. */
export function TribeSidebar(): JSX.Element {
  const { dialog, tribes } = useStore();
  const [query, setQuery] = useState("");
  const waiting = tribes.requests.waiting.value;
  return (
    <>
      <div class="new-chat">
        <input
          aria-label="Find a tribe"
          placeholder="Find a tribe…"
          spellcheck={false}
          value={query}
          onInput={(event) => setQuery(event.currentTarget.value)}
          onKeyDown={(event) => event.key === "Escape" && setQuery("")}
        />
        <button
          type="button"
          class="icon-button"
          aria-label="New tribe"
          title="New tribe"
          onClick={() => void (dialog.value = { kind: "tribe-create" })}
        >
          <Icon name="plus" />
        </button>
      </div>
      <div class="tribe-doors">
        <button
          type="button"
          class="chip small"
          onClick={() => void (dialog.value = { kind: "tribe-join" })}
        >
          Join a tribe
        </button>
        <button
          type="button"
          class="chip small"
          onClick={() => void (dialog.value = { kind: "tribe-requests" })}
        >
          Requests
          {waiting > 0 && <span class="badge">{waiting > 99 ? "99+" : waiting}</span>}
        </button>
      </div>
      <TribeRows query={query.trim().toLowerCase()} />
    </>
  );
}

function TribeRows({ query }: { query: string }): JSX.Element {
  const { list, open } = useStore().tribes;
  const all = list.sorted.value;
  if (all.length === 0) {
    switch (list.status.value) {
      case "loading":
        return <Notice spinner title="Loading tribes…" />;
      case "failed":
        return (
          <Notice
            icon="warning"
            title="The tribes could not be loaded"
            text={list.problem.value}
            action={{ label: "Try again", run: () => void list.load() }}
          />
        );
      case "ready":
        return <Notice icon="people" title="No tribes yet" text="Make one, or join one." />;
    }
  }
  const fitting = all.filter(
    ({ name, tribeid }) => name.toLowerCase().includes(query) || tribeid.startsWith(query),
  );
  if (fitting.length === 0) return <Notice icon="search" title="No tribe of that name" />;
  const shown = open.value?.tribeid;
  const current = Math.max(
    0,
    fitting.findIndex(({ tribeid }) => tribeid === shown),
  );
  return (
    <ul class="conversations" role="listbox" aria-label="Tribes" onKeyDown={moveFocus}>
      {fitting.map((tribe, index) => (
        <TribeRow
          key={tribe.tribeid}
          tribe={tribe}
          selected={tribe.tribeid === shown}
          reachable={index === current}
        />
      ))}
    </ul>
  );
}

/** Arrow keys, Home and End move the focus among the rows of a list. */
function moveFocus(event: KeyboardEvent): void {
  const rows = [...(event.currentTarget as HTMLElement).children] as HTMLElement[];
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
}

interface TribeRowProps {
  tribe: Tribe;
  selected: boolean;
  /** Whether Tab stops here; the arrow keys go on from there. */
  reachable: boolean;
}

function TribeRow({ tribe, selected, reachable }: TribeRowProps): JSX.Element {
  const { tribes, conversations } = useStore();
  const { tribeid, name, type, level } = tribe;
  const cid = tribeOf(tribeid);
  const unread = conversations.unreadOf(cid);
  const closed = tribes.list.closed.value.has(tribeid);
  const show = () => tribes.show(tribeid);
  const line = [levelWord(level), `No. ${tribeid}`].filter(Boolean).join(" · ");
  return (
    <li
      class={unread > 0 ? "conversation unread" : "conversation"}
      role="option"
      aria-selected={selected}
      tabIndex={reachable ? 0 : -1}
      data-tribe={tribeid}
      onClick={show}
      onKeyDown={(event) => {
        if (event.key !== "Enter" && event.key !== " ") return;
        event.preventDefault();
        show();
      }}
    >
      <Avatar nick={name} />
      <span class="conversation-lines">
        <span class="conversation-line">
          <span class="conversation-name" dir="auto">
            {name}
          </span>
          {closed && <span class="tag">Closed</span>}
          {type === IMTribeType.kMultiChat && <span class="tag">Multi-chat</span>}
        </span>
        <span class="conversation-line">
          <span class="conversation-preview">{line}</span>
          <UnreadBadge cid={cid} unread={unread} />
        </span>
      </span>
    </li>
  );
}
