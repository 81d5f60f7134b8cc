import { IMMsgType, type BridgeClient, type IMMessage, type IMUserID } from "@imsdkbridge/client";
import { computed, signal } from "@preact/signals";
import { PagedSearch } from "./paged_search.ts";

/** Hits per page. */
const pageSize = 20;

/** The search in the shown conversation: walks from hit to hit, newest first. */
export class ConversationSearch {
  /** The conversation that is searched; none while the search is closed. */
  readonly cid = signal<IMUserID | undefined>(undefined);
  readonly search: PagedSearch;
  /** The place among the hits, from 0 for the newest; -1 before the first step. */
  readonly at = signal(-1);
  readonly current = computed(() => this.search.hits.value[this.at.value]);

  readonly #jump: (message: IMMessage) => void;

  /** `jump` shows a hit. */
  constructor(client: BridgeClient, jump: (message: IMMessage) => void, rest?: number) {
    this.#jump = jump;
    this.search = new PagedSearch(async (keywords, page, signal) => {
      const request = {
        cid: this.cid.value!,
        keywords,
        msgtypes: [IMMsgType.kMsgText, IMMsgType.kMsgFile],
        count: pageSize,
        needpage: 1,
        page,
        ignoreboundary: 1,
      };
      const answer = await client.singlemsg.SearchDBMsg(request, { signal });
      return answer;
    }, rest);
    this.search.hits.subscribe((hits) => {
      if (hits.length > 0 && this.at.peek() < 0) void this.step(1);
    });
  }

  open(cid: IMUserID): void {
    this.cid.value = cid;
  }

  close(): void {
    this.cid.value = undefined;
    this.setQuery("");
  }

  setQuery(query: string): void {
    this.at.value = -1;
    this.search.setQuery(query);
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
