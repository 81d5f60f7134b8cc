import { IMMsgType, TribeAtRelation, type BridgeClient } from "@imsdkbridge/client";
import { computed, signal } from "@preact/signals";
import { PagedSearch, type AskPage } from "./paged_search.ts";
import { type Peer, type ChatMessage, isTribe } from "./peers.ts";
import { appkey } from "./users.ts";

/** Hits per page. */
const pageSize = 20;
/** What calls for the account. */
const callsMe = [TribeAtRelation.kAtRelationMember, TribeAtRelation.kAtRelationAll];

/** The search in the shown conversation: walks from hit to hit, newest first. */
export class ConversationSearch {
  /** The conversation that is searched; none while the search is closed. */
  readonly cid = signal<Peer | undefined>(undefined);
  readonly search: PagedSearch;
  /** In a tribe, whose messages are searched; empty: everybody's. */
  readonly from = signal("");
  /** In a tribe, whether only messages are searched that mention the account. */
  readonly mentions = signal(false);
  /** The place among the hits, from 0 for the newest; -1 before the first step. */
  readonly at = signal(-1);
  readonly current = computed(() => this.search.hits.value[this.at.value]);

  readonly #jump: (message: ChatMessage) => void;

  /** `jump` shows a hit. */
  constructor(client: BridgeClient, jump: (message: ChatMessage) => void, rest?: number) {
    this.#jump = jump;
    const ask: AskPage = async (keywords, page, signal) => {
      const request = {
        keywords,
        msgtypes: [IMMsgType.kMsgText, IMMsgType.kMsgFile],
        count: pageSize,
        needpage: 1,
        page,
        ignoreboundary: 1,
      };
      const cid = this.cid.value!;
      if (!isTribe(cid)) return client.singlemsg.SearchDBMsg({ cid, ...request }, { signal });
      const nick = this.from.value.trim();
      const narrow = {
        ...(nick && { fromids: [{ appkey, nick }] }),
        ...(this.mentions.value && { atrelations: callsMe }),
      };
      return client.tribemsg.SearchDBMsg({ cid, ...request, ...narrow }, { signal });
    };
    const narrowed = () => this.mentions.value || this.from.value.trim() !== "";
    this.search = new PagedSearch(ask, rest, narrowed);
    this.search.hits.subscribe((hits) => {
      if (hits.length > 0 && this.at.peek() < 0) void this.step(1);
    });
  }

  open(cid: Peer): void {
    this.cid.value = cid;
  }

  close(): void {
    this.cid.value = undefined;
    this.narrow("", false);
    this.setQuery("");
  }

  setQuery(query: string): void {
    this.at.value = -1;
    this.search.setQuery(query);
  }

  /** Searches only the messages of one sender, or only those that mention the account. */
  narrow(from: string, mentions: boolean): void {
    this.from.value = from;
    this.mentions.value = mentions;
    this.setQuery(this.search.query.value);
  }

  /** Goes to an older hit (1) or a newer one (-1); at the last one that is known it asks for more. */
  async step(by: 1 | -1): Promise<void> {
    const wanted = this.at.peek() + by;
    if (wanted < 0) return;
    if (wanted >= this.search.hits.peek().length) await this.search.more();
    const hit = this.search.hits.peek()[wanted];
    if (!hit) return;
    this.at.value = wanted;
    this.#jump(hit);
  }
}
