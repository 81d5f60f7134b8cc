import type { JSX } from "preact";
import { useRef, useState } from "preact/hooks";
import type { Edge, Thread } from "../store/threads.ts";
import { isTribe, samePeer, tribeOf } from "../store/peers.ts";
import { rowAt } from "../text/rows.ts";
import { copiedText } from "./copied_text.ts";
import { useStore } from "./context.ts";
import { Icon } from "./icons.tsx";
import { OutgoingBubble } from "./message_bubble.tsx";
import { MessageMenu, type MenuWish } from "./message_menu.tsx";
import { MessageRow } from "./message_row.tsx";
import { useMessageScroll } from "./use_message_scroll.ts";

/** The messages of a conversation, of which only those in sight exist as elements. */
export function MessageList({ thread }: { thread: Thread }): JSX.Element {
  const store = useStore();
  const { cid, messages, older, newer } = thread;
  const outgoing = store.outbox.outgoing.value.filter((entry) => samePeer(entry.cid, cid));
  const [menu, setMenu] = useState<MenuWish | undefined>(undefined);
  const scroll = useMessageScroll(thread, outgoing);
  const { box, list, focused, marked } = scroll;
  const below = useBelow(thread, scroll.atEnd);

  return (
    <div class="messages-frame">
      <div
        class="messages"
        role="log"
        aria-live="off"
        aria-label={`Messages with ${store.names.of(cid)}`}
        tabIndex={0}
        ref={box}
        onKeyDown={scroll.onKeyDown}
        onCopy={copy}
      >
        <div class="messages-content">
          <div class="messages-rows" style={{ height: `${list.getTotalSize()}px` }}>
            <Beginning older={older} retry={() => void store.threads.load(cid, "older")} />
            {list.getVirtualItems().map(({ key, index, start }) => (
              <div
                key={key}
                class="row"
                data-index={index}
                ref={list.measureElement}
                style={{ transform: `translateY(${start}px)` }}
              >
                {index < messages.length ? (
                  <MessageRow
                    row={rowAt(messages, index)}
                    marked={messages[index]!.msgid === marked}
                    focused={messages[index]!.msgid === focused}
                    openMenu={setMenu}
                  />
                ) : (
                  <OutgoingBubble entry={outgoing[index - messages.length]!} />
                )}
              </div>
            ))}
          </div>
          <End newer={newer} retry={() => void store.threads.load(cid, "newer")} />
        </div>
      </div>
      {!scroll.atEnd && (
        <button
          type="button"
          class="to-end"
          title="To the newest message"
          aria-label="To the newest message"
          onClick={scroll.toEnd}
        >
          <Icon name="down" />
          {below > 0 && <span class="badge">{below > 99 ? "99+" : below}</span>}
        </button>
      )}
      {isTribe(cid) && <MentionChip tribeid={cid.tribeid} />}
      {menu && <MessageMenu wish={menu} close={() => setMenu(undefined)} />}
    </div>
  );
}

/** Leads to the unread messages that mention the person, from the oldest on. */
function MentionChip({ tribeid }: { tribeid: string }): JSX.Element | null {
  const store = useStore();
  const unread = store.mentions.unread.value.get(tribeid) ?? [];
  const oldest = unread[0];
  if (!oldest) return null;
  return (
    <button
      type="button"
      class="mention-chip"
      onClick={() => void store.jumpTo(tribeOf(tribeid), oldest)}
    >
      {unread.length > 1 ? `You were mentioned (${unread.length})` : "You were mentioned"}
    </button>
  );
}

/** How many messages came since the end of the list was last in sight. */
function useBelow({ messages, newer }: Thread, atEnd: boolean): number {
  const seen = useRef(messages.at(-1)?.msgid);
  if (atEnd) seen.current = messages.at(-1)?.msgid;
  const at = messages.findLastIndex(({ msgid }) => msgid === seen.current);
  return newer === "none" && at >= 0 ? messages.length - 1 - at : 0;
}

function Beginning({ older, retry }: { older: Edge; retry: () => void }): JSX.Element {
  return (
    <div class="beginning">
      {older === "loading" && (
        <span class="spinner" role="img" aria-label="Loading older messages" />
      )}
      {older === "failed" && (
        <button type="button" class="link-button" onClick={retry}>
          Older messages could not be loaded. Try again
        </button>
      )}
      {older === "none" && <span class="beginning-mark">Beginning of the conversation</span>}
    </div>
  );
}

function End({ newer, retry }: { newer: Edge; retry: () => void }): JSX.Element | null {
  if (newer !== "failed") return null;
  return (
    <div class="end">
      <button type="button" class="link-button" onClick={retry}>
        Newer messages could not be loaded. Try again
      </button>
    </div>
  );
}

function copy(event: ClipboardEvent): void {
  const selection = getSelection();
  if (!selection || selection.isCollapsed) return;
  event.preventDefault();
  event.clipboardData?.setData("text/plain", copiedText(selection));
}
