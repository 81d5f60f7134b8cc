import { TribeAtMsgType, type BridgeClient, type IMUserID } from "@imsdkbridge/client";
import { batch, signal } from "@preact/signals";
import { isTribe, keyOf, samePeer, tribeOf, type ChatMessage, type Peer } from "./peers.ts";

/** How all members together are called in a text. */
export const allMembers = "everyone";

/** Members per request for their names. */
const mostAsked = 200;

/** The account's tribes by name, what keeps it out of one, and how members are called in them. */
export class Names {
  /** Names of the tribes that the account is in, by identifier. */
  readonly tribes = signal<ReadonlyMap<string, string>>(new Map());
  /** Why nothing can be written to a tribe, by identifier. */
  readonly barred = signal<ReadonlyMap<string, string>>(new Map());

  readonly #client: BridgeClient;
  readonly #changed: () => void;
  /** How members are called, by tribe and user. */
  readonly #members = signal<ReadonlyMap<string, string>>(new Map());
  readonly #asked = new Set<string>();
  /** Members whose names are to be asked for, by tribe. */
  readonly #wanted = new Map<string, IMUserID[]>();
  #generation = 0;

  /** `changed` is told when there are other tribes than before. */
  constructor(client: BridgeClient, changed: () => void) {
    this.#client = client;
    this.#changed = changed;
    const bar = (reason: string) => (told: { tribeid: string }) => this.#bar(told.tribeid, reason);
    const admit = ({ tribeid }: { tribeid: string }) => {
      this.#bar(tribeid, "");
      void this.load().then(this.#changed);
    };
    client.on("onTribeKickMember", bar("You were removed from this tribe."));
    client.on("onTribeClose", bar("This tribe was closed."));
    client.on("onJoinTribe", admit);
    client.on("onEnabledTribe", admit);
    client.on("onTribeBaseInfoChange", () => void this.load());
    client.on("onTribeMemberBaseInfoChange", ({ tribeid, userid, display }) =>
      this.#called(new Map([[memberKey(tribeid, userid), display]])),
    );
  }

  /** Logs the account into its tribes and learns their names. */
  async load(): Promise<void> {
    const generation = this.#generation;
    const { tribemgr } = this.#client;
    try {
      // It fails when that was done already.
      await tribemgr.InitTribe({}).catch(() => {});
      const { tribelist } = await tribemgr.GetShallowTribeList({});
      if (generation !== this.#generation) return;
      const known = tribelist.map(({ tribeid }) => [tribeid.tribeid, tribeid.display] as const);
      this.tribes.value = new Map([...this.tribes.value, ...known]);
    } catch {
      // A host without tribes has the other conversations all the same.
    }
  }

  /** Forgets everything; for a change of account. */
  clear(): void {
    this.#generation++;
    this.#asked.clear();
    this.#wanted.clear();
    batch(() => {
      this.tribes.value = new Map();
      this.barred.value = new Map();
      this.#members.value = new Map();
    });
  }

  /** How a conversation is called. */
  of(peer: Peer): string {
    if (!isTribe(peer)) return peer.nick;
    return this.tribes.value.get(peer.tribeid) || `Tribe ${peer.tribeid}`;
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
    return (isTribe(peer) && this.barred.value.get(peer.tribeid)) || "";
  }

  /** The conversations with the tribes that the account is in. */
  peers(): Peer[] {
    return [...this.tribes.value.keys()].map(tribeOf);
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

  #bar(tribeid: string, reason: string): void {
    const barred = new Map(this.barred.value);
    if (reason) barred.set(tribeid, reason);
    else barred.delete(tribeid);
    this.barred.value = barred;
  }
}

function memberKey(tribeid: string, user: IMUserID): string {
  return `${tribeid}\n${keyOf(user)}`;
}
