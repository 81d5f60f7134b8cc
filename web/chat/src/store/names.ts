import { TribeAtMsgType, type BridgeClient, type IMUserID } from "@imsdkbridge/client";
import { signal, type ReadonlySignal } from "@preact/signals";
import { isTribe, keyOf, samePeer, tribeOf, type ChatMessage, type Peer } from "./peers.ts";

/** How all members together are called in a text. */
export const allMembers = "everyone";

/** Members per request for their names. */
const mostAsked = 200;

/** What is known of the account's tribes. */
export interface KnownTribes {
  all: ReadonlySignal<ReadonlyMap<string, { name: string }>>;
  /** Of those too that the account was in since it signed in, by identifier. */
  names: ReadonlySignal<ReadonlyMap<string, string>>;
  closed: ReadonlySignal<ReadonlySet<string>>;
}

/** How conversations and those in them are called, and what keeps the account out of a tribe. */
export class Names {
  readonly #client: BridgeClient;
  readonly #tribes: KnownTribes;
  /** How members are called, by tribe and user. */
  readonly #members = signal<ReadonlyMap<string, string>>(new Map());
  readonly #asked = new Set<string>();
  /** Members whose names are to be asked for, by tribe. */
  readonly #wanted = new Map<string, IMUserID[]>();
  #generation = 0;

  constructor(client: BridgeClient, tribes: KnownTribes) {
    this.#client = client;
    this.#tribes = tribes;
    client.on("onTribeMemberBaseInfoChange", ({ tribeid, userid, display }) =>
      this.#called(new Map([[memberKey(tribeid, userid), display]])),
    );
  }

  /** Forgets everything; for a change of account. */
  clear(): void {
    this.#generation++;
    this.#asked.clear();
    this.#wanted.clear();
    this.#members.value = new Map();
  }

  /** How a conversation is called. */
  of(peer: Peer): string {
    if (!isTribe(peer)) return peer.nick;
    return this.#tribes.names.value.get(peer.tribeid) || `Tribe ${peer.tribeid}`;
  }

  /** How the sender of a message is called in its conversation; asks the host where need be. */
  ofSender({ cid, fromid }: Pick<ChatMessage, "cid" | "fromid">): string {
    if (!isTribe(cid)) return fromid.nick;
    const key = memberKey(cid.tribeid, fromid);
    this.#want(cid.tribeid, fromid, key);
    return this.#members.value.get(key) || fromid.nick;
  }

  /** The words that call for members in a message, and whether they mean the account. */
  callsIn(
    { cid, tribeat }: Pick<ChatMessage, "cid" | "tribeat">,
    me: IMUserID | undefined,
  ): ReadonlyMap<string, boolean> {
    const calls = new Map<string, boolean>();
    if (!isTribe(cid) || !tribeat) return calls;
    if (tribeat.atmsgtype === TribeAtMsgType.kAtAll) calls.set(`@${allMembers}`, true);
    for (const fromid of tribeat.atmembers) {
      const mine = samePeer(fromid, me);
      // A name may have changed since.
      for (const name of [this.ofSender({ cid, fromid }), fromid.nick]) {
        calls.set(`@${name}`, mine);
      }
    }
    return calls;
  }

  /** Why nothing can be written to this conversation; empty where it can. */
  whyBarred(peer: Peer): string {
    if (!isTribe(peer)) return "";
    const { all, closed, names } = this.#tribes;
    if (closed.value.has(peer.tribeid)) return "This tribe is closed.";
    const left = names.value.has(peer.tribeid) && !all.value.has(peer.tribeid);
    return left ? "You are not a member of this tribe any more." : "";
  }

  /** The conversations with the tribes that the account is in. */
  peers(): Peer[] {
    return [...this.#tribes.all.value.keys()].map(tribeOf);
  }

  #want(tribeid: string, user: IMUserID, key: string): void {
    if (this.#asked.has(key)) return;
    this.#asked.add(key);
    const first = this.#wanted.size === 0;
    this.#wanted.set(tribeid, [...(this.#wanted.get(tribeid) ?? []), user]);
    // All that one picture of the page needs is asked for at once.
    if (first) queueMicrotask(() => this.#ask());
  }

  #ask(): void {
    for (const [tribeid, users] of this.#wanted) {
      for (let at = 0; at < users.length; at += mostAsked) {
        void this.#askFor(tribeid, users.slice(at, at + mostAsked));
      }
    }
    this.#wanted.clear();
  }

  async #askFor(tribeid: string, memberlist: IMUserID[]): Promise<void> {
    const generation = this.#generation;
    try {
      const answer = await this.#client.tribemgr.GetTribeMemberbyID({ tribeid, memberlist });
      if (generation !== this.#generation) return;
      const named = answer.memberlist.map(
        (member) => [memberKey(tribeid, member), member.display || member.name] as const,
      );
      this.#called(new Map(named));
    } catch {
      // They go by their own names; the next page asks again.
      for (const user of memberlist) this.#asked.delete(memberKey(tribeid, user));
    }
  }

  #called(names: ReadonlyMap<string, string>): void {
    this.#members.value = new Map([...this.#members.value, ...names]);
  }
}

function memberKey(tribeid: string, user: IMUserID): string {
  return `${tribeid}\n${keyOf(user)}`;
}
