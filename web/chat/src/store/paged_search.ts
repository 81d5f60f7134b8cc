import { batch, signal } from "@preact/signals";
import { keywordsOf } from "../text/highlight.ts";
import { textOf } from "../text/reasons.ts";
import type { ChatMessage } from "./peers.ts";

/** Milliseconds without typing before the host is asked. */
const defaultRest = 250;

/** One page of what was found. */
export interface FoundPage {
  /** Oldest first, as the host gives them. */
  msgs: readonly ChatMessage[];
  totalpage: number;
  totalcount: number;
}

/** Asks for a page, numbered from 1 with the newest messages on the first. */
export type AskPage = (keywords: string[], page: number, signal: AbortSignal) => Promise<FoundPage>;

/** A search that follows what is typed, and gets its pages one after the other. */
export class PagedSearch {
  readonly query = signal("");
  readonly status = signal<"idle" | "searching" | "ready" | "failed">("idle");
  readonly problem = signal("");
  /** Newest first, as far as they were asked for. */
  readonly hits = signal<readonly ChatMessage[]>([]);
  readonly total = signal(0);

  readonly #ask: AskPage;
  readonly #rest: number;
  readonly #narrowed: () => boolean;
  #timer: ReturnType<typeof setTimeout> | undefined;
  #running = new AbortController();
  #page = 0;
  #pages = 0;

  /** `narrowed` tells whether there is something to search for without words. */
  constructor(ask: AskPage, rest = defaultRest, narrowed: () => boolean = () => false) {
    this.#ask = ask;
    this.#rest = rest;
    this.#narrowed = narrowed;
  }

  /** The words that are searched for. */
  get keywords(): string[] {
    return keywordsOf(this.query.value);
  }

  /** Whether there are hits that were not asked for yet. */
  get hasMore(): boolean {
    return this.#page < this.#pages;
  }

  /** Takes another query; the host is asked once the typing rests. */
  setQuery(query: string): void {
    this.#drop();
    this.query.value = query;
    if (this.keywords.length === 0 && !this.#narrowed()) return;
    this.status.value = "searching";
    this.#timer = setTimeout(() => void this.#next(), this.#rest);
  }

  /** Asks now instead of when the typing rests. */
  hurry(): void {
    if (this.#timer === undefined) return;
    clearTimeout(this.#timer);
    void this.#next();
  }

  /** Asks again, after a failure. */
  retry(): Promise<void> {
    return this.#next();
  }

  /** Gets the next page of hits, unless there is none or one is under way. */
  async more(): Promise<void> {
    if (this.hasMore && this.status.value === "ready") await this.#next();
  }

  /** Forgets the query and the hits. */
  clear(): void {
    this.#drop();
    this.query.value = "";
  }

  #drop(): void {
    clearTimeout(this.#timer);
    this.#timer = undefined;
    this.#running.abort();
    this.#page = this.#pages = 0;
    batch(() => {
      this.status.value = "idle";
      this.hits.value = [];
      this.total.value = 0;
    });
  }

  async #next(): Promise<void> {
    this.#timer = undefined;
    const running = (this.#running = new AbortController());
    this.status.value = "searching";
    try {
      const page = await this.#ask(this.keywords, this.#page + 1, running.signal);
      if (running.signal.aborted) return;
      this.#page++;
      this.#pages = page.totalpage;
      batch(() => {
        this.hits.value = [...this.hits.value, ...[...page.msgs].reverse()];
        this.total.value = page.totalcount;
        this.status.value = "ready";
      });
    } catch (error) {
      if (running.signal.aborted) return;
      this.problem.value = textOf(error);
      this.status.value = "failed";
    }
  }
}
