import type { Peer } from "./peers.ts";

/** What was in front: a conversation, or a tribe's pane. */
export type InFront = { cid: Peer } | { tribeid: string };

/** Where the tab keeps what an account has in front, for after a reload. */
export class Shown {
  readonly #storage: Storage;

  constructor(storage: Storage) {
    this.#storage = storage;
  }

  of(account: string): InFront | undefined {
    const text = this.#storage.getItem(key(account));
    return text ? (JSON.parse(text) as InFront) : undefined;
  }

  keep(account: string, what: InFront | undefined): void {
    if (what) this.#storage.setItem(key(account), JSON.stringify(what));
    else this.#storage.removeItem(key(account));
  }
}

function key(account: string): string {
  return `shown ${account}`;
}
