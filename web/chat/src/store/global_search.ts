import { IMMsgType, type BridgeClient } from "@imsdkbridge/client";
import { signal } from "@preact/signals";
import { PagedSearch, type FoundPage } from "./paged_search.ts";
import { comparePositions, isTribe, type Peer } from "./peers.ts";

/** Hits per page. */
const pageSize = 30;
const nothing: FoundPage = { msgs: [], totalpage: 0, totalcount: 0 };
const msgtypes = [IMMsgType.kMsgText, IMMsgType.kMsgFile];

/** The search over all conversations: which have hits, and the messages themselves. */
export class GlobalSearch {
  readonly search: PagedSearch;
  /** The conversations with hits. */
  readonly cids = signal<readonly Peer[]>([]);
  /** The conversation that the hits are narrowed to. */
  readonly only = signal<Peer | undefined>(undefined);

  constructor(client: BridgeClient, rest?: number) {
    this.search = new PagedSearch(async (keywords, page, signal) => {
      const cid = this.only.peek();
      const request = { keywords, msgtypes, count: pageSize, needpage: 1, page, ignoreboundary: 1 };
      const { singlemsg, tribemsg } = client;
      if (cid) {
        return isTribe(cid)
          ? tribemsg.SearchDBMsg2({ ...request, cid }, { signal })
          : singlemsg.SearchDBMsg2({ ...request, cid }, { signal });
      }
      const kinds = page === 1 ? { keywords, msgtypes } : undefined;
      const [users, tribes, userCids, tribeCids] = await Promise.all([
        singlemsg.SearchDBMsg2(request, { signal }),
        // A host without tribes has the others all the same.
        tribemsg.SearchDBMsg2(request, { signal }).catch(() => nothing),
        kinds && singlemsg.SearchDBMsgCid(kinds, { signal }),
        kinds && tribemsg.SearchDBMsgCid(kinds, { signal }).catch(() => ({ cids: [] })),
      ]);
      if (userCids && tribeCids && !signal.aborted) {
        this.cids.value = [...userCids.cids, ...tribeCids.cids];
      }
      return {
        msgs: [...users.msgs, ...tribes.msgs].sort(comparePositions),
        totalpage: Math.max(users.totalpage, tribes.totalpage),
        totalcount: users.totalcount + tribes.totalcount,
      };
    }, rest);
  }

  setQuery(query: string): void {
    this.cids.value = [];
    this.only.value = undefined;
    this.search.setQuery(query);
  }

  /** Shows the hits of one conversation only, or with none those of all. */
  narrow(cid: Peer | undefined): void {
    this.only.value = cid;
    this.search.setQuery(this.search.query.value);
  }

  clear(): void {
    this.setQuery("");
  }
}
