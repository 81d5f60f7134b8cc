import {
  MessageStatus,
  type BridgeClient,
  type Message,
  type MessagesAnswer,
  type SendStatusNotification,
  type UserId,
} from "@imsdkbridge/client";
import { signal, type Signal } from "@preact/signals";
import { textOf } from "../text/reasons.ts";
import { comparePositions, keyOf, type Position } from "./users.ts";

/** The loaded part of one conversation: its newest messages without a gap. */
export interface Thread {
  cid: UserId;
  status: "loading" | "ready" | "failed";
  problem: string;
  /** Oldest first. */
  messages: readonly Message[];
  /** What is before the first message: perhaps more, a page under way, a failed one, or nothing. */
  older: "more" | "loading" | "failed" | "none";
}

/** Messages per page of history. */
const pageSize = 40;

/** The messages of the conversations that were opened. */
export class Threads {
  /** Why messages failed, by message identifier. */
  readonly failures = signal<ReadonlyMap<string, string>>(new Map());

  readonly #client: BridgeClient;
  readonly #loaded: (cid: UserId, messages: readonly Message[]) => void;
  readonly #all = new Map<string, Signal<Thread>>();
  /**
   * Threads that may have missed messages: by key, the newest message that was loaded before the
   * first one that may be missing; none when nothing was loaded.
   */
  readonly #stale = new Map<string, Position | undefined>();

  /** `loaded` is told about each newest page that was fetched. */
  constructor(client: BridgeClient, loaded: (cid: UserId, messages: readonly Message[]) => void) {
    this.#client = client;
    this.#loaded = loaded;
  }

  /** The thread of a conversation; an empty one is made at first. */
  of(cid: UserId): Signal<Thread> {
    const key = keyOf(cid);
    let thread = this.#all.get(key);
    if (!thread) {
      thread = signal<Thread>({ cid, status: "loading", problem: "", messages: [], older: "more" });
      this.#all.set(key, thread);
      this.#stale.set(key, undefined);
    }
    return thread;
  }

  /** Forgets everything; for a change of account. */
  clear(): void {
    this.#all.clear();
    this.#stale.clear();
    this.failures.value = new Map();
  }

  /** Messages may have been missed: each thread fetches its newest page when it is next opened. */
  markStale(): void {
    for (const [key, thread] of this.#all) {
      // What comes live from now on follows the gap and says nothing about it.
      if (!this.#stale.has(key)) this.#stale.set(key, thread.value.messages.at(-1));
    }
  }

  /** Makes sure that the newest messages are there. */
  async open(cid: UserId): Promise<void> {
    const thread = this.of(cid);
    const key = keyOf(cid);
    const before = this.#stale.get(key);
    if (!this.#stale.delete(key)) return;
    if (thread.value.status === "failed") this.#change(thread, { status: "loading" });
    try {
      const page = await this.#page(cid, { msgtime: "", msgid: "" });
      const first = page.msgs[0];
      const touches = first && before && comparePositions(first, before) <= 0;
      const keep = thread.value.messages.filter(
        (message) => touches || !first || comparePositions(message, first) >= 0,
      );
      const older = touches ? thread.value.older : beginning(page);
      const messages = merge(keep, page.msgs);
      this.#change(thread, { status: "ready", problem: "", messages, older });
      this.#loaded(cid, page.msgs);
    } catch (error) {
      this.#stale.set(key, before);
      if (thread.value.status === "loading") {
        this.#change(thread, { status: "failed", problem: textOf(error) });
      }
    }
  }

  /** Loads the page before the first message. */
  async loadOlder(cid: UserId): Promise<void> {
    const thread = this.of(cid);
    const { status, older, messages } = thread.value;
    const first = messages[0];
    if (status !== "ready" || older === "loading" || older === "none" || !first) return;
    this.#change(thread, { older: "loading" });
    try {
      const page = await this.#page(cid, first);
      const merged = merge(thread.value.messages, page.msgs);
      // A page without anything new would be asked for again and again.
      const older = merged.length > thread.value.messages.length ? beginning(page) : "none";
      this.#change(thread, { messages: merged, older });
    } catch {
      this.#change(thread, { older: "failed" });
    }
  }

  /** Adds messages that came or were sent just now; they follow what is loaded. */
  add(messages: readonly Message[]): void {
    for (const message of messages) {
      const thread = this.#all.get(keyOf(message.cid));
      if (!thread) continue;
      const first = thread.value.messages[0];
      // Older than the loaded part: it comes with its page of history.
      if (first && comparePositions(message, first) < 0 && thread.value.older !== "none") continue;
      this.#change(thread, { messages: merge(thread.value.messages, [message]) });
    }
  }

  /** Takes in what became of a sent message; gives the message if it is loaded. */
  setStatus({ msgid, code, svrtime, result }: SendStatusNotification): Message | undefined {
    const failed = code !== 0;
    const failures = new Map(this.failures.value);
    if (failed) failures.set(msgid, result);
    else failures.delete(msgid);
    this.failures.value = failures;
    if (failed) return this.patch(msgid, { msgstatus: MessageStatus.failed });
    return this.patch(msgid, { msgstatus: MessageStatus.sent, svrtime });
  }

  /** Changes fields of one message, wherever it is loaded. */
  patch(msgid: string, change: Partial<Message>): Message | undefined {
    for (const thread of this.#all.values()) {
      const at = thread.value.messages.findLastIndex((message) => message.msgid === msgid);
      if (at < 0) continue;
      const messages = [...thread.value.messages];
      const changed = { ...messages[at]!, ...change };
      messages[at] = changed;
      this.#change(thread, { messages });
      return changed;
    }
    return undefined;
  }

  #page(cid: UserId, { msgtime, msgid }: Position): Promise<MessagesAnswer> {
    const request = { cid, msgtime, msgid, count: pageSize, gohistory: 1 };
    return this.#client.singlemsg.GetLocalHisMsg(request);
  }

  #change(thread: Signal<Thread>, change: Partial<Thread>): void {
    thread.value = { ...thread.value, ...change };
  }
}

function beginning(page: MessagesAnswer): Thread["older"] {
  return page.outofcache !== 0 || page.msgs.length === 0 ? "none" : "more";
}

/** Joins two sorted runs; of a message in both, the incoming one counts. */
function merge(known: readonly Message[], incoming: readonly Message[]): readonly Message[] {
  const byId = new Map(known.map((message) => [message.msgid, message]));
  for (const message of incoming) {
    const old = byId.get(message.msgid);
    // A page read before the status event must not turn a settled message back to sending.
    const settled = old && message.msgstatus === MessageStatus.sending;
    byId.set(message.msgid, settled ? { ...message, msgstatus: old.msgstatus } : message);
  }
  return [...byId.values()].sort(comparePositions);
}
