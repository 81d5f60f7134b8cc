import type { JSX } from "preact";
import { useLayoutEffect, useRef } from "preact/hooks";
import { samePeer, type ChatMessage, isTribe } from "../store/peers.ts";
import { noteOf } from "../text/note.ts";
import { timeOf, type Row } from "../text/rows.ts";
import { clockTime, dayName, fullTime } from "../text/time.ts";
import { Avatar } from "./avatar.tsx";
import { useStore } from "./context.ts";
import { MessageBubble } from "./message_bubble.tsx";
import type { MenuWish } from "./message_menu.tsx";
import { useMenuGestures } from "./use_menu_gestures.ts";

interface MessageRowProps {
  row: Row;
  /** Whether it was just jumped to. */
  marked: boolean;
  /** Whether the keyboard's focus is to be on it. */
  focused: boolean;
  openMenu: (wish: MenuWish) => void;
}

/** One row of the list: a message in its bubble or as a note, and the day that begins with it. */
export function MessageRow({ row, marked, focused, openMenu }: MessageRowProps): JSX.Element {
  const { message, newDay, first, last } = row;
  const store = useStore();
  const element = useRef<HTMLElement>(null);
  const mine = samePeer(message.fromid, store.session.me.value);
  const sender = store.names.ofSender(message);
  const note = noteOf(message, mine, sender);
  const open = (x: number, y: number) => openMenu({ message, mine, x, y, from: element.current });
  const gestures = useMenuGestures(open);
  const selecting = store.selection.active.value;
  const chosen = store.selection.chosen.value.has(message.msgid);
  const toggle = () => store.selection.toggle(message);

  useLayoutEffect(() => {
    if (focused) element.current?.focus({ preventScroll: true });
  }, [focused]);

  // In a tribe it is not clear who speaks.
  const portrayed = isTribe(message.cid) && !mine && note === undefined;

  const classes = [
    note === undefined ? "message" : "note-message",
    mine ? "mine" : "theirs",
    first && "first",
    last && "last",
    marked && "marked",
    selecting && "selecting",
    portrayed && "portrayed",
  ];
  return (
    <>
      {newDay && (
        <div class="day" role="separator">
          <span>{dayName(timeOf(message), new Date())}</span>
        </div>
      )}
      <article
        class={classes.filter(Boolean).join(" ")}
        data-msgid={message.msgid}
        aria-label={labelOf(message, mine, sender)}
        tabIndex={-1}
        ref={element}
        {...gestures}
      >
        {selecting && (
          <label class="choice">
            <input type="checkbox" aria-label="Select" checked={chosen} onChange={toggle} />
          </label>
        )}
        {portrayed && first && (
          <>
            <Avatar nick={sender} />
            <span class="sender">{sender}</span>
          </>
        )}
        {note === undefined ? (
          <MessageBubble message={message} mine={mine} openMenu={open} />
        ) : (
          <p class="note" title={fullTime(timeOf(message))}>
            {note}
          </p>
        )}
      </article>
    </>
  );
}

function labelOf(message: ChatMessage, mine: boolean, sender: string): string {
  const kind = message.extinfo.autochatmsg ? ", automatic reply" : "";
  return `${mine ? "You" : sender}${kind}, ${clockTime(timeOf(message))}`;
}
