import { IMMsgType, type BridgeClient, type IMUserID } from "@imsdkbridge/client";
import { signal } from "@preact/signals";
import { PagedSearch } from "./paged_search.ts";

/** Hits per page. */
const pageSize = 30;
const msgtypes = [IMMsgType.kMsgText, IMMsgType.kMsgFile];

/** The search over all conversations: which have hits, and the messages themselves. */
export class GlobalSearch {
  readonly search: PagedSearch;
  /** The conversations with hits. */
  readonly cids = signal<readonly IMUserID[]>([]);
  /** The conversation that the hits are narrowed to. */
  readonly only = signal<IMUserID | undefined>(undefined);

  constructor(client: BridgeClient, rest?: number) {
    this.search = new PagedSearch(async (keywords, page, signal) => {
      const cid = this.only.peek();
      const request = { keywords, msgtypes, count: pageSize, needpage: 1, page, ignoreboundary: 1 };
      const [answer, found] = await Promise.all([
        client.singlemsg.SearchDBMsg2({ ...request, ...(cid && { cid }) }, { signal }),
        page === 1 && !cid
          ? client.singlemsg.SearchDBMsgCid({ keywords, msgtypes }, { signal })
          : undefined,
      ]);
      if (found && !signal.aborted) this.cids.value = found.cids;
      return answer;
    }, rest);
  }

  setQuery(query: string): void {
    this.cids.value = [];
    this.only.value = undefined;
    this.search.setQuery(query);
  }

  /** Shows the hits of one conversation only, or with none those of all. */
  narrow(cid: IMUserID | undefined): void {
    this.only.value = cid;
    this.search.setQuery(this.search.query.value);
  }

  clear(): void {
    this.setQuery("");
  }
}
