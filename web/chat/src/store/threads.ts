import { IMMsgStatus, type SendMsgStatusNotify } from "@imsdkbridge/client";
import { signal, type Signal } from "@preact/signals";
import { textOf } from "../text/reasons.ts";
import type { Faces } from "./faces.ts";
import { merge } from "./message_runs.ts";
import {
  comparePositions,
  keyOf,
  type Position,
  type Peer,
  type ChatMessage,
  named,
} from "./peers.ts";

/** What lies beyond an end of the loaded part: perhaps more, a page under way, or nothing. */
export type Edge = "more" | "loading" | "failed" | "none";

/** The loaded part of one conversation, without a gap. */
export interface Thread {
  cid: Peer;
  status: "loading" | "ready" | "failed";
  problem: string;
  /** Oldest first. */
  messages: readonly ChatMessage[];
  older: Edge;
  /** Not "none" after a jump into the past: the newest messages are not loaded. */
  newer: Edge;
}

/** What became of a sent message. */
type SendOutcome = Pick<SendMsgStatusNotify, "msgid" | "code" | "svrtime" | "result">;

/** A page of history. */
interface Page {
  outofcache: number;
  msgs: readonly ChatMessage[];
}

/** Messages per page of history. */
const pageSize = 40;
const newestEnd: Position = { msgtime: "", msgid: "" };

/** The messages of the conversations that were opened. */
export class Threads {
  /** Why messages failed, by message identifier. */
  readonly failures = signal<ReadonlyMap<string, string>>(new Map());

  readonly #faces: Faces;
  readonly #loaded: (cid: Peer, messages: readonly ChatMessage[]) => void;
  readonly #all = new Map<string, Signal<Thread>>();
  /**
   * Threads that may have missed messages: by key, the newest message that was loaded before the
   * first one that may be missing; none when nothing was loaded.
   */
  readonly #stale = new Map<string, Position | undefined>();
  readonly #opening = new Map<string, Promise<void>>();
  /** Threads away from their newest end for which a live message came meanwhile. */
  readonly #passedBy = new Set<string>();

  /** `loaded` is told about each newest page that was fetched. */
  constructor(faces: Faces, loaded: (cid: Peer, messages: readonly ChatMessage[]) => void) {
    this.#faces = faces;
    this.#loaded = loaded;
  }

  /** The thread of a conversation; an empty one is made at first. */
  of(cid: Peer): Signal<Thread> {
    const key = keyOf(cid);
    let thread = this.#all.get(key);
    if (!thread) {
      const ends = { older: "more", newer: "none" } as const;
      thread = signal<Thread>({ cid, status: "loading", problem: "", messages: [], ...ends });
      this.#all.set(key, thread);
      this.#stale.set(key, undefined);
    }
    return thread;
  }

  /** Forgets everything; for a change of account. */
  clear(): void {
    this.#all.clear();
    this.#stale.clear();
    this.#opening.clear();
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
  open(cid: Peer): Promise<void> {
    const key = keyOf(cid);
    const thread = this.of(cid);
    const underWay = this.#opening.get(key);
    if (underWay && !this.#stale.has(key)) return underWay;
    if (!this.#stale.has(key)) return Promise.resolve();
    const opening = this.#open(cid, thread).finally(() => {
      if (this.#opening.get(key) === opening) this.#opening.delete(key);
    });
    this.#opening.set(key, opening);
    return opening;
  }

  async #open(cid: Peer, thread: Signal<Thread>): Promise<void> {
    const key = keyOf(cid);
    const before = this.#stale.get(key);
    this.#stale.delete(key);
    if (thread.value.status === "failed") this.#change(thread, { status: "loading" });
    try {
      const page = await this.#page(cid, newestEnd, 1);
      // Whoever reads in the past stays there.
      if (thread.value.newer === "none") {
        const first = page.msgs[0];
        const touches = first && before && comparePositions(first, before) <= 0;
        const keep = thread.value.messages.filter(
          (message) => touches || !first || comparePositions(message, first) >= 0,
        );
        const older = touches ? thread.value.older : edge(page);
        this.#change(thread, {
          status: "ready",
          problem: "",
          messages: merge(keep, page.msgs),
          older,
        });
      }
      this.#loaded(cid, page.msgs);
    } catch (error) {
      this.#stale.set(key, before);
      if (thread.value.status === "loading") {
        this.#change(thread, { status: "failed", problem: textOf(error) });
      }
    }
  }

  /** Loads the page beyond one end. */
  async load(cid: Peer, end: "older" | "newer"): Promise<void> {
    const thread = this.of(cid);
    const { status, messages } = thread.value;
    const from = end === "older" ? messages[0] : messages.at(-1);
    const state = thread.value[end];
    if (status !== "ready" || state === "loading" || state === "none" || !from) return;
    this.#change(thread, { [end]: "loading" });
    this.#passedBy.delete(keyOf(cid));
    try {
      const page = await this.#page(cid, from, end === "older" ? 1 : 0);
      // A jump has put other messages here meanwhile.
      if (!thread.value.messages.some(({ msgid }) => msgid === from.msgid)) return;
      const merged = merge(thread.value.messages, page.msgs);
      // A page without anything new would be asked for again and again.
      const further = merged.length > thread.value.messages.length ? edge(page) : "none";
      const passed = end === "newer" && this.#passedBy.has(keyOf(cid));
      this.#change(thread, { messages: merged, [end]: passed ? "more" : further });
    } catch {
      this.#change(thread, { [end]: "failed" });
    }
  }

  /** Loads a message and what stands around it, unless it is loaded; fails as the host does. */
  async loadAround(cid: Peer, msgid: string): Promise<void> {
    await this.open(cid);
    const thread = this.of(cid);
    if (thread.value.messages.some((message) => message.msgid === msgid)) return;
    const { msgs } = await this.#faces.chat(cid).SearchMsgByID({ ...named(cid), msgid });
    const target = msgs[0];
    if (!target) throw new Error("there is no such message any more");
    const [before, after] = await Promise.all([
      this.#page(cid, target, 1),
      this.#page(cid, target, 0),
    ]);
    const around = [...before.msgs, target, ...after.msgs];
    const { messages, newer } = thread.value;
    const [first, last] = [messages[0], around.at(-1)!];
    const touches =
      first && comparePositions(target, first) < 0 && comparePositions(last, first) >= 0;
    const ends = { older: edge(before), newer: touches ? newer : edge(after) };
    const joined = touches ? merge(messages, around) : around;
    this.#change(thread, { status: "ready", problem: "", messages: joined, ...ends });
  }

  /** Goes back to the newest messages after a jump into the past. */
  async toNewest(cid: Peer): Promise<void> {
    const thread = this.of(cid);
    if (thread.value.newer === "none") return;
    this.#change(thread, { newer: "loading" });
    try {
      const page = await this.#page(cid, newestEnd, 1);
      this.#change(thread, { messages: page.msgs, older: edge(page), newer: "none" });
    } catch {
      this.#change(thread, { newer: "failed" });
    }
  }

  /** Adds messages that came or were sent just now; they follow what is loaded. */
  add(messages: readonly ChatMessage[]): void {
    for (const message of messages) {
      const key = keyOf(message.cid);
      const thread = this.#all.get(key);
      if (!thread) continue;
      const { messages: known, older, newer } = thread.value;
      const [first, last] = [known[0], known.at(-1)];
      // Outside the loaded part: it comes with its page of history.
      if (first && older !== "none" && comparePositions(message, first) < 0) continue;
      if (last && newer !== "none" && comparePositions(message, last) > 0) {
        this.#passedBy.add(key);
        continue;
      }
      this.#change(thread, { messages: merge(known, [message]) });
    }
  }

  /** Takes messages out, or with "all" every one of the conversation. */
  remove(cid: Peer, msgids: ReadonlySet<string> | "all"): void {
    const thread = this.#all.get(keyOf(cid));
    if (!thread) return;
    const messages =
      msgids === "all" ? [] : thread.value.messages.filter(({ msgid }) => !msgids.has(msgid));
    const ends = msgids === "all" ? ({ older: "none", newer: "none" } as const) : {};
    this.#change(thread, { messages, ...ends });
  }

  /** Takes in what became of a sent message; gives what that changes in it. */
  setStatus({ msgid, code, svrtime, result }: SendOutcome): Partial<ChatMessage> {
    const failed = code !== 0;
    const failures = new Map(this.failures.value);
    if (failed) failures.set(msgid, result);
    else failures.delete(msgid);
    this.failures.value = failures;
    const change: Partial<ChatMessage> = failed
      ? { msgstatus: IMMsgStatus.kMsgFailed }
      : { msgstatus: IMMsgStatus.kMsgSent, svrtime };
    this.patch(msgid, change);
    return change;
  }

  /** Changes fields of one message, wherever it is loaded. */
  patch(msgid: string, change: Partial<ChatMessage>): ChatMessage | undefined {
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

  /** The account has read the mention of it in a message. */
  markMentionRead(msgid: string): void {
    for (const thread of this.#all.values()) {
      const message = thread.value.messages.find((one) => one.msgid === msgid);
      if (!message?.tribeat || message.tribeat.msgreaded === 1) continue;
      this.patch(msgid, { tribeat: { ...message.tribeat, msgreaded: 1 } });
    }
  }

  /** Changes many messages of one conversation at once, if it is loaded. */
  patchAll(cid: Peer, change: (message: ChatMessage) => ChatMessage): void {
    const thread = this.#all.get(keyOf(cid));
    if (thread) this.#change(thread, { messages: thread.value.messages.map(change) });
  }

  #page(cid: Peer, { msgtime, msgid }: Position, gohistory: number): Promise<Page> {
    const request = { ...named(cid), msgtime, msgid, count: pageSize, gohistory, autoroam: 1 };
    return this.#faces.of(cid).GetLocalHisMsg(request);
  }

  #change(thread: Signal<Thread>, change: Partial<Thread>): void {
    thread.value = { ...thread.value, ...change };
  }
}

function edge(page: Page): Edge {
  return page.outofcache !== 0 || page.msgs.length === 0 ? "none" : "more";
}
