import type { JSX } from "preact";
import { useEffect, useLayoutEffect, useMemo, useRef, useState } from "preact/hooks";
import type { Thread } from "../store/threads.ts";
import { sameUser } from "../store/users.ts";
import { rowsOf, type Row } from "../text/rows.ts";
import { dayName } from "../text/time.ts";
import { useStore } from "./context.ts";
import { Icon } from "./icons.tsx";
import { MessageBubble, OutgoingBubble } from "./message_bubble.tsx";

/** Pixels from the end within which the list follows new messages. */
const nearEnd = 60;
/** Pixels from the start at which older messages are fetched. */
const nearStart = 300;

/** The messages of a conversation; loads older ones as the person scrolls up. */
export function MessageList({ thread }: { thread: Thread }): JSX.Element {
  const store = useStore();
  const { cid, messages, older } = thread;
  const outgoing = store.outbox.outgoing.value.filter((entry) => sameUser(entry.cid, cid));
  const rows = useMemo(() => rowsOf(messages), [messages]);
  const loadOlder = () => void store.threads.loadOlder(cid);
  const { box, content, atEnd, toEnd } = useScroll(thread, outgoing.length, loadOlder);

  return (
    <div class="messages-frame">
      <div
        class="messages"
        role="log"
        aria-live="off"
        aria-label={`Messages with ${cid.nick}`}
        tabIndex={0}
        ref={box}
      >
        <div class="messages-content" ref={content}>
          <Beginning older={older} retry={loadOlder} />
          {rows.map((row) => (
            <RowView key={row.key} row={row} />
          ))}
          {outgoing.map((entry) => (
            <OutgoingBubble key={`out ${entry.id}`} entry={entry} />
          ))}
        </div>
      </div>
      {!atEnd && (
        <button type="button" class="to-end" aria-label="To the newest message" onClick={toEnd}>
          <Icon name="down" />
        </button>
      )}
    </div>
  );
}

function RowView({ row }: { row: Row }): JSX.Element {
  if (row.kind === "message") return <MessageBubble {...row} />;
  return (
    <div class="day" role="separator">
      <span>{dayName(row.time, new Date())}</span>
    </div>
  );
}

function Beginning({ older, retry }: Pick<Thread, "older"> & { retry: () => void }): JSX.Element {
  return (
    <div class="beginning">
      {older === "loading" && <span class="spinner" aria-label="Loading older messages" />}
      {older === "failed" && (
        <button type="button" class="link-button" onClick={retry}>
          Older messages could not be loaded. Try again
        </button>
      )}
    </div>
  );
}

/** Follows the end while the person is there, and holds the place while older messages come in. */
function useScroll(thread: Thread, outgoing: number, loadOlder: () => void) {
  const box = useRef<HTMLDivElement>(null);
  const content = useRef<HTMLDivElement>(null);
  const following = useRef(true);
  const [atEnd, setAtEnd] = useState(true);
  const before = useRef({ first: "", height: 0, outgoing: 0 });
  const first = thread.messages[0]?.msgid ?? "";

  useLayoutEffect(() => {
    const { scrollHeight } = box.current!;
    const grewAtStart = before.current.first !== "" && before.current.first !== first;
    // Whoever sends wants to see it.
    if (outgoing > before.current.outgoing) following.current = true;
    if (following.current) box.current!.scrollTop = scrollHeight;
    else if (grewAtStart) box.current!.scrollTop += scrollHeight - before.current.height;
    before.current = { first, height: scrollHeight, outgoing };
  }, [first, thread.messages, outgoing]);

  useEffect(() => {
    const element = box.current!;
    const fetchIfNear = () => {
      if (element.scrollTop < nearStart && thread.older === "more") loadOlder();
    };
    const onScroll = () => {
      const toGo = element.scrollHeight - element.scrollTop - element.clientHeight;
      following.current = toGo < nearEnd;
      setAtEnd(following.current);
      fetchIfNear();
    };
    // Pictures that load and a composer that grows change heights without any message.
    const observer = new ResizeObserver(() => {
      if (following.current) element.scrollTop = element.scrollHeight;
      before.current.height = element.scrollHeight;
    });
    element.addEventListener("scroll", onScroll, { passive: true });
    observer.observe(element);
    observer.observe(content.current!);
    fetchIfNear();
    return () => {
      element.removeEventListener("scroll", onScroll);
      observer.disconnect();
    };
  }, [thread.older, thread.messages, loadOlder]);

  const toEnd = () => {
    const element = box.current!;
    element.scrollTo({ top: element.scrollHeight });
  };
  return { box, content, atEnd, toEnd };
}
