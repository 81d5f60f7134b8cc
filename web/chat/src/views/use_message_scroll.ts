import { defaultRangeExtractor } from "@tanstack/virtual-core";
import type { RefObject } from "preact";
import { useCallback, useEffect, useLayoutEffect, useRef, useState } from "preact/hooks";
import type { Outgoing } from "../store/outbox.ts";
import { isTribe } from "../store/peers.ts";
import type { Thread } from "../store/threads.ts";
import { useStore } from "./context.ts";
import { useVirtualList, type VirtualList } from "./use_virtual_list.ts";

/** Pixels from the end within which the list follows new messages. */
const nearEnd = 60;
/** Rows from an end at which the page beyond it is fetched. */
const nearEdge = 12;
/** Milliseconds for which a message that was jumped to is marked. */
const markTime = 2_000;
/** Milliseconds in which a jump comes to rest. */
const settleTime = 500;
/** Milliseconds that messages stand in sight before they count as seen. */
const restTime = 200;
/** Height of a row that was never shown, in pixels, and of the mark above the first one. */
const estimate = 46;
const beginningHeight = 48;

interface MessageScroll {
  box: RefObject<HTMLDivElement>;
  list: VirtualList;
  /** Whether the newest message is in sight. */
  atEnd: boolean;
  /** Identifiers of the message with the keyboard's focus, and of the one that was jumped to. */
  focused: string;
  marked: string;
  toEnd: () => void;
  onKeyDown: (event: KeyboardEvent) => void;
}

/**
 * Scrolling of a message list: follows the end while the person is there, holds the place while
 * older messages come in, fetches what lies beyond the ends, and jumps.
 */
export function useMessageScroll(thread: Thread, outgoing: readonly Outgoing[]): MessageScroll {
  const store = useStore();
  const { cid, messages, older, newer } = thread;
  const box = useRef<HTMLDivElement>(null);
  const following = useRef(!store.target.peek());
  const [focused, setFocused] = useState("");
  const focusedAt = focused ? messages.findLastIndex(({ msgid }) => msgid === focused) : -1;

  const count = messages.length + outgoing.length;
  const getItemKey = useCallback(
    (index: number) => messages[index]?.msgid ?? `out ${outgoing[index - messages.length]?.id}`,
    [messages, outgoing.map(({ id }) => id).join()],
  );
  const list = useVirtualList({
    count,
    getItemKey,
    getScrollElement: () => box.current,
    estimateSize: () => estimate,
    paddingStart: beginningHeight,
    paddingEnd: 16,
    overscan: 6,
    anchorTo: "end",
    followOnAppend: newer === "none",
    scrollEndThreshold: nearEnd,
    // The focus would be lost with its element.
    rangeExtractor: (range) => {
      const rows = defaultRangeExtractor(range);
      if (focusedAt < 0 || rows.includes(focusedAt)) return rows;
      return [...rows, focusedAt].sort((a, b) => a - b);
    },
  });

  const showEnd = () => list.scrollToEnd();
  useLayoutEffect(() => {
    if (!store.target.peek()) showEnd();
  }, []);
  // Whoever sends wants to see it.
  useLayoutEffect(() => {
    if (outgoing.length > 0) showEnd();
  }, [outgoing.at(-1)?.id]);

  // A new message may stand here before the page of history that goes before it.
  const beginning = messages[0]?.msgid;
  useLayoutEffect(() => {
    if (following.current && newer === "none" && !store.target.peek()) showEnd();
  }, [beginning]);
  const endWishes = store.endWishes.value;
  const seenWishes = useRef(endWishes);
  useLayoutEffect(() => {
    if (endWishes !== seenWishes.current) showEnd();
    seenWishes.current = endWishes;
  }, [endWishes]);

  useEffect(() => {
    const element = box.current!;
    const onScroll = () => void (following.current = list.isAtEnd(nearEnd));
    // A composer that grows must not cover the end.
    const observer = new ResizeObserver(() => following.current && showEnd());
    element.addEventListener("scroll", onScroll, { passive: true });
    observer.observe(element);
    return () => {
      element.removeEventListener("scroll", onScroll);
      observer.disconnect();
    };
  }, []);

  const first = list.range?.startIndex ?? 0;
  const last = list.range?.endIndex ?? -1;
  useEffect(() => {
    if (older === "more" && first < nearEdge) void store.threads.load(cid, "older");
    if (newer === "more" && last >= messages.length - nearEdge) {
      void store.threads.load(cid, "newer");
    }
  }, [first, last, older, newer, messages]);

  const attentive = store.window.attentive.value;
  useEffect(() => {
    if (!attentive || store.faces.isVirtual(cid)) return undefined;
    // What a list that comes to its place only passes, nobody sees.
    const timer = setTimeout(() => {
      const seen = messages.slice(first, last + 1);
      if (isTribe(cid)) store.mentions.seen(cid.tribeid, seen);
      else store.receipts.seen(cid, seen);
    }, restTime);
    return () => clearTimeout(timer);
  }, [first, last, messages, attentive]);

  const marked = useJumps(thread, list, box);

  const focusMessage = (index: number) => {
    const message = messages[Math.min(Math.max(index, 0), messages.length - 1)];
    if (!message) return;
    list.scrollToIndex(messages.indexOf(message), { align: "auto" });
    setFocused(message.msgid);
  };
  const onKeyDown = (event: KeyboardEvent) => {
    const element = event.target as HTMLElement;
    const at = messages.findIndex(({ msgid }) => msgid === element.dataset["msgid"]);
    if (at < 0 && element !== box.current) return;
    const steps: Record<string, number> = {
      ArrowUp: at < 0 ? last : at - 1,
      ArrowDown: at < 0 ? first : at + 1,
    };
    const target = steps[event.key];
    if (target === undefined) return;
    event.preventDefault();
    focusMessage(target);
  };

  const toEnd = async () => {
    await store.threads.toNewest(cid);
    requestAnimationFrame(showEnd);
  };
  const atEnd = newer === "none" && (count === 0 || list.isAtEnd(nearEnd));
  return { box, list, atEnd, focused, marked, onKeyDown, toEnd: () => void toEnd() };
}

/** Brings the message that is wished for into view, and marks it for a while. */
function useJumps({ messages }: Thread, list: VirtualList, box: RefObject<HTMLDivElement>): string {
  const { target } = useStore();
  const [marked, setMarked] = useState("");
  const jump = useRef<{ wish: object; time: number } | undefined>(undefined);
  const wish = target.value;
  const at = wish ? messages.findIndex(({ msgid }) => msgid === wish.msgid) : -1;
  useLayoutEffect(() => {
    if (!wish || at < 0) return;
    if (jump.current?.wish !== wish) jump.current = { wish, time: performance.now() };
    // Older messages may come in front while the list still settles; later the place is held anyway.
    if (performance.now() - jump.current.time > settleTime) return;
    list.scrollToIndex(at, { align: "center" });
    setMarked(wish.msgid);
  }, [wish, at]);
  useEffect(() => {
    if (!wish || at < 0) return undefined;
    const end = performance.now() + settleTime;
    const follow = () => {
      showHit(box.current!, wish.msgid, list);
      if (performance.now() < end) frame = requestAnimationFrame(follow);
    };
    let frame = requestAnimationFrame(follow);
    return () => cancelAnimationFrame(frame);
  }, [wish]);
  useEffect(() => {
    const timer = setTimeout(() => setMarked(""), markTime);
    return () => clearTimeout(timer);
  }, [wish, marked]);
  return marked;
}

/** Of a message that is taller than the list, brings its first hit into sight. */
function showHit(box: HTMLElement, msgid: string, list: VirtualList): void {
  const row = box.querySelector(`[data-msgid="${msgid}"]`);
  const hit = row?.querySelector("mark");
  if (!row || !hit || row.clientHeight < box.clientHeight) return;
  const [place, view] = [hit.getBoundingClientRect(), box.getBoundingClientRect()];
  if (place.top >= view.top && place.bottom <= view.bottom) return;
  list.scrollToOffset(box.scrollTop + place.top - view.top - box.clientHeight / 2);
}
