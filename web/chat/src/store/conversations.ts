import type { BridgeClient } from "@imsdkbridge/client";
import { computed, signal } from "@preact/signals";
import { textOf } from "../text/reasons.ts";
import type { Faces } from "./faces.ts";
import { comparePositions, keyOf, type Peer, type ChatMessage, named } from "./peers.ts";

/** One line of the conversation list. */
export interface Conversation {
  cid: Peer;
  unread: number;
  /** The newest message; none in a conversation that was only just started. */
  last: ChatMessage | undefined;
}

/** How many conversations are asked for their newest message at the same time. */
const lanes = 8;

/** The account's conversations with their unread counts and newest messages. */
export class Conversations {
  readonly status = signal<"loading" | "ready" | "failed">("loading");
  readonly problem = signal("");
  readonly #all = signal<ReadonlyMap<string, Conversation>>(new Map());

  /** Started ones without a message first, then by newest message. */
  readonly sorted = computed(() =>
    [...this.#all.value.values()].sort((a, b) => {
      if (!a.last || !b.last) return Number(Boolean(a.last)) - Number(Boolean(b.last));
      return comparePositions(b.last, a.last);
    }),
  );
  readonly totalUnread = computed(() => this.sorted.value.reduce((sum, c) => sum + c.unread, 0));

  readonly #client: BridgeClient;
  readonly #faces: Faces;
  readonly #keeps: (cid: Peer) => boolean;
  /** Grows when the account changes, so that answers meant for the one before are dropped. */
  #generation = 0;
  /** Unread counts being asked for; true when asked for again meanwhile. */
  readonly #asking = new Map<string, boolean>();

  /** `keeps` tells of a conversation without messages whether it stays in the list. */
  constructor(client: BridgeClient, faces: Faces, keeps: (cid: Peer) => boolean) {
    this.#client = client;
    this.#faces = faces;
    this.#keeps = keeps;
  }

  /** Forgets everything; for a change of account. */
  clear(): void {
    this.#generation++;
    this.#all.value = new Map();
    this.status.value = "loading";
  }

  /** Loads the list; what is known already stays and is brought up to date. */
  async load(): Promise<void> {
    const generation = this.#generation;
    try {
      const [single, virtual, tribes] = await Promise.all([
        this.#client.singlemsg.GetUnreadCountInBulk({}),
        // A host without virtual conversations or tribes has the others all the same.
        this.#client.virtualmsg.GetUnreadCountInBulk({}).catch(() => ({ unreads: [] })),
        this.#client.tribemsg.GetUnreadCountInBulk({}).catch(() => ({ unreads: [] })),
      ]);
      for (const { cid } of virtual.unreads) this.#faces.addVirtual(cid);
      const unreads = [...single.unreads, ...virtual.unreads, ...tribes.unreads];
      if (generation !== this.#generation) return;
      for (const { cid, count } of unreads) this.#change(cid, { unread: count });
      // What is known and not among them may be gone.
      const queue = [...this.#all.value.values()].map(({ cid }) => cid);
      const work = async () => {
        for (let cid = queue.shift(); cid; cid = queue.shift()) {
          await this.#renew(cid, generation);
        }
      };
      await Promise.all(Array.from({ length: lanes }, work));
      if (generation !== this.#generation) return;
      this.status.value = "ready";
      for (const { cid } of this.sorted.peek()) this.tidy(cid);
    } catch (error) {
      if (generation !== this.#generation) return;
      this.problem.value = textOf(error);
      if (this.status.value === "loading") this.status.value = "failed";
    }
  }

  /** Tries again after `failed`. */
  retry(): Promise<void> {
    this.status.value = "loading";
    return this.load();
  }

  /** The number of unread messages of a conversation; 0 for one that is not in the list. */
  unreadOf(cid: Peer): number {
    return this.#all.value.get(keyOf(cid))?.unread ?? 0;
  }

  /** Puts a conversation into the list, unless it is there. */
  ensure(cid: Peer): void {
    if (!this.#all.value.has(keyOf(cid))) this.#change(cid, {});
  }

  /** Takes a message into account as the possibly newest of its conversation. */
  note(message: ChatMessage): void {
    const last = this.#all.value.get(keyOf(message.cid))?.last;
    if (!last || comparePositions(message, last) >= 0) this.#change(message.cid, { last: message });
  }

  /** Changes fields of a message, if it is the newest of its conversation. */
  patchLast(msgid: string, change: Partial<ChatMessage>): void {
    for (const { cid, last } of this.#all.value.values()) {
      if (last?.msgid === msgid) this.#change(cid, { last: { ...last, ...change } });
    }
  }

  /** Carries a new state of a message over to the list. */
  update(message: ChatMessage): void {
    const last = this.#all.value.get(keyOf(message.cid))?.last;
    if (last?.msgid === message.msgid) this.#change(message.cid, { last: message });
  }

  /** Takes a conversation out of the list. */
  remove(cid: Peer): void {
    const all = new Map(this.#all.value);
    all.delete(keyOf(cid));
    this.#all.value = all;
  }

  /** Takes a conversation out of the list if there is nothing in it that anybody wrote. */
  tidy(cid: Peer): void {
    const known = this.#all.value.get(keyOf(cid));
    const empty = known && !known.last && known.unread === 0;
    if (this.status.value === "ready" && empty && !this.#keeps(cid)) this.remove(cid);
  }

  /** Asks the host for the newest message anew, after the one known may have gone. */
  async refreshLast(cid: Peer): Promise<void> {
    try {
      await this.#renew(cid, this.#generation);
      this.tidy(cid);
    } catch {
      // The line keeps its old words until the list is loaded again.
    }
  }

  /** Asks the host for the unread count; requests that overlap are joined. */
  async refreshUnread(cid: Peer): Promise<void> {
    const key = keyOf(cid);
    const underWay = this.#asking.has(key);
    this.#asking.set(key, underWay);
    if (underWay) return;
    try {
      do {
        this.#asking.set(key, false);
        const { count } = await this.#faces.of(cid).GetUnreadCount(named(cid));
        // A conversation that was deleted meanwhile does not come back by it.
        if (this.#all.value.has(key)) this.#change(cid, { unread: count });
      } while (this.#asking.get(key));
    } catch {
      // The count stays as it was; the next event or connection asks again.
    } finally {
      this.#asking.delete(key);
    }
  }

  /** Asks for the counts that may have fallen by what the person did in another window. */
  async refreshUnreadOnes(): Promise<void> {
    const unread = this.sorted.peek().filter((conversation) => conversation.unread > 0);
    await Promise.all(unread.map(({ cid }) => this.refreshUnread(cid)));
  }

  /** Asks for the newest message; what came or went while the host was asked counts more. */
  async #renew(cid: Peer, generation: number): Promise<void> {
    const last = () => this.#all.value.get(keyOf(cid))?.last;
    const before = last();
    const request = { ...named(cid), count: 1, gohistory: 1 };
    const { msgs } = await this.#faces.of(cid).GetLocalHisMsg(request);
    const newest = msgs.at(-1);
    if (generation !== this.#generation || !this.#all.value.has(keyOf(cid))) return;
    const now = last();
    if (now === before) this.#change(cid, { last: newest });
    else if (newest && (!now || comparePositions(newest, now) > 0)) this.note(newest);
  }

  #change(cid: Peer, change: Partial<Conversation>): void {
    const key = keyOf(cid);
    const old = this.#all.value.get(key) ?? { cid, unread: 0, last: undefined };
    this.#all.value = new Map(this.#all.value).set(key, { ...old, ...change });
  }
}
