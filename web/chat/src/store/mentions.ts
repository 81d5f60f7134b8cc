import {
  IMMsgStatus,
  TribeAtMsgType,
  TribeAtRelation,
  type BridgeClient,
  type IMAtReaders,
  type IMAtReadCounts,
  type IMUserID,
  type TribeAtRequest,
} from "@imsdkbridge/client";
import { signal } from "@preact/signals";
import { allMembers } from "./names.ts";
import { isTribe, keyOf, samePeer, type ChatMessage, type Peer } from "./peers.ts";
import type { Threads } from "./threads.ts";

/** Somebody who can be mentioned; nobody in particular for all members. */
export interface Candidate {
  userid: IMUserID | undefined;
  display: string;
}

/** Whom words in a text stand for, by tribe. */
type Chosen = Record<string, Record<string, IMUserID | "all">>;

/** Mentions per request. */
const pageSize = 50;

/** Who calls for whom in tribes: mentions that are written, unread ones, and who has read own ones. */
export class Mentions {
  /** Identifiers of unread messages that mention the account, oldest first, by tribe. */
  readonly unread = signal<ReadonlyMap<string, readonly string[]>>(new Map());
  /** How far own messages that mention were read, by message. */
  readonly counts = signal<ReadonlyMap<string, IMAtReadCounts>>(new Map());

  readonly #client: BridgeClient;
  readonly #threads: Threads;
  readonly #storage: Storage;
  readonly #asked = new Set<string>();
  #owner = "";
  /** What was chosen to stand in texts, by tribe and by the words in the text. */
  #chosen: Chosen = {};

  constructor(client: BridgeClient, threads: Threads, storage: Storage) {
    this.#client = client;
    this.#threads = threads;
    this.#storage = storage;
    client.on("onTribeAtMsgReaded", ({ tribeid, counts }) => {
      const own = counts.filter((one) => this.counts.value.has(one.msgid));
      this.#count(own);
      const others = counts.filter((one) => one.readedcount + one.unreadcount === 0);
      this.#read(tribeid, new Set(others.map(({ msgid }) => msgid)));
    });
  }

  /** Takes up what this account chose in the tab; forgets what is known of another one. */
  enter(me: IMUserID): void {
    this.#asked.clear();
    const owner = `mentions ${keyOf(me)}`;
    if (owner === this.#owner) return;
    this.#owner = owner;
    this.#chosen = JSON.parse(this.#storage.getItem(owner) ?? "{}") as Chosen;
    this.unread.value = new Map();
    this.counts.value = new Map();
  }

  /** Learns which mentions in a tribe are unread. */
  async load(tribeid: string): Promise<void> {
    try {
      const page = await this.#client.tribemsg.RoamTribeAtMsgs({
        tribeid,
        count: pageSize,
        gohistory: 1,
      });
      this.unread.value = new Map(this.unread.value).set(tribeid, []);
      this.arrived(page.msgs);
    } catch {
      // Those that are seen are marked all the same.
    }
  }

  /** Messages came: they may mention the account. */
  arrived(messages: readonly ChatMessage[]): void {
    for (const message of messages) {
      if (!isTribe(message.cid) || !isOpen(message)) continue;
      const { tribeid } = message.cid;
      const known = this.unread.value.get(tribeid) ?? [];
      if (known.includes(message.msgid)) continue;
      this.unread.value = new Map(this.unread.value).set(tribeid, [...known, message.msgid]);
    }
  }

  /** Somebody sees these messages now: mentions count as read, own ones show who has read them. */
  seen(tribeid: string, messages: readonly ChatMessage[]): void {
    const open = messages.filter(isOpen).map(({ msgid }) => msgid);
    if (open.length > 0) {
      this.#read(tribeid, new Set(open));
      const request = { tribeid, msgids: open };
      // What does not get through is unread again with the next load.
      this.#client.tribemsg.SetTribeAtMsgsReaded(request).catch(() => {});
    }
    const own = messages.filter(isOwnMention).map(({ msgid }) => msgid);
    const fresh = own.filter((msgid) => !this.#asked.has(msgid));
    if (fresh.length > 0) void this.#askCounts(tribeid, fresh);
  }

  /** Who has read an own message, and who has not. */
  readers(tribeid: string, msgid: string): Promise<IMAtReaders> {
    return this.#client.tribemsg.GetTribeAtMsgUnreadUsers({ tribeid, msgid });
  }

  /** Those who can be mentioned by what was typed after the "@"; without it, who spoke lately. */
  async candidates(cid: Peer, query: string, me: IMUserID | undefined): Promise<Candidate[]> {
    if (!isTribe(cid)) return [];
    const { tribeid } = cid;
    const { tribemgr, tribemsg } = this.#client;
    const [all, found] = await Promise.all([
      // It is refused to those who may not.
      tribemsg.AtTribeMember({ tribeid }).catch(() => undefined),
      query ? tribemgr.SearchTribeMember({ tribeid, key: query }) : undefined,
    ]);
    const lately = [...this.#threads.of(cid).peek().messages].reverse();
    const members = found
      ? found.memberlist.map(({ appkey, nick, display, name }) => {
          return { userid: { appkey, nick }, display: display || name };
        })
      : lately.map(({ fromid }) => ({ userid: fromid, display: fromid.nick }));
    const distinct = new Map(members.map((member) => [keyOf(member.userid), member]));
    const others = [...distinct.values()].filter(({ userid }) => !samePeer(userid, me));
    const everyone = all && { userid: undefined, display: allMembers };
    const fits = everyone?.display.toLowerCase().startsWith(query.toLowerCase());
    return everyone && fits ? [everyone, ...others] : others;
  }

  /** Chooses somebody to mention; resolves with the words to write, fails as the host does. */
  async choose(tribeid: string, { userid, display }: Candidate): Promise<string> {
    const answer = await this.#client.tribemsg.AtTribeMember({
      tribeid,
      ...(userid && { userid }),
    });
    const words = `@${userid ? answer.display || display : allMembers}`;
    this.#chosen[tribeid] = { ...this.#chosen[tribeid], [words]: userid ?? "all" };
    this.#storage.setItem(this.#owner, JSON.stringify(this.#chosen));
    return words;
  }

  /** Whom a text mentions. */
  in(cid: Peer, text: string): TribeAtRequest | undefined {
    const chosen = (isTribe(cid) && this.#chosen[cid.tribeid]) || {};
    const meant = Object.entries(chosen).filter(([words]) => text.includes(words));
    if (meant.some(([, whom]) => whom === "all")) return { atmsgtype: TribeAtMsgType.kAtAll };
    const atmembers = meant.map(([, whom]) => whom as IMUserID);
    return atmembers.length ? { atmsgtype: TribeAtMsgType.kAtMembers, atmembers } : undefined;
  }

  async #askCounts(tribeid: string, msgids: string[]): Promise<void> {
    for (const msgid of msgids) this.#asked.add(msgid);
    try {
      const { counts } = await this.#client.tribemsg.GetTribeAtMsgUnreadCount({ tribeid, msgids });
      this.#count(counts);
    } catch {
      // They are asked for again when they are next in sight.
      for (const msgid of msgids) this.#asked.delete(msgid);
    }
  }

  #count(counts: readonly IMAtReadCounts[]): void {
    this.counts.value = new Map([
      ...this.counts.value,
      ...counts.map((one) => [one.msgid, one] as const),
    ]);
  }

  #read(tribeid: string, msgids: ReadonlySet<string>): void {
    const rest = (this.unread.value.get(tribeid) ?? []).filter((msgid) => !msgids.has(msgid));
    this.unread.value = new Map(this.unread.value).set(tribeid, rest);
    for (const msgid of msgids) this.#threads.markMentionRead(msgid);
  }
}

/** Whether a message mentions the account, who has not read it. */
function isOpen({ tribeat, msgstatus }: ChatMessage): boolean {
  return mentionsMe(tribeat) && tribeat?.msgreaded === 0 && msgstatus !== IMMsgStatus.kMsgWithdrawn;
}

/** Whether a message calls for the account, by name or with all others. */
function mentionsMe(tribeat: ChatMessage["tribeat"]): boolean {
  const relation = tribeat?.relation2me;
  return (
    relation === TribeAtRelation.kAtRelationMember || relation === TribeAtRelation.kAtRelationAll
  );
}

/** Whether a message is the account's own and mentions somebody. */
export function isOwnMention({ tribeat, msgstatus }: ChatMessage): boolean {
  return (
    tribeat?.relation2me === TribeAtRelation.kAtRelationSender && msgstatus === IMMsgStatus.kMsgSent
  );
}
