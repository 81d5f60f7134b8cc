import type { BridgeClient, IMUserID } from "@imsdkbridge/client";
import { signal } from "@preact/signals";
import { textOf } from "../text/reasons.ts";
import type { Toasts } from "./toasts.ts";
import { keyOf } from "./peers.ts";

/**
 * Whose automatic replies are ignored: the host stores them as read and does not announce them. The
 * host cannot be asked for whom it does, so the page remembers what it told it.
 */
export class AutoReplies {
  /** Keys of the conversations. */
  readonly ignored = signal<ReadonlySet<string>>(new Set());

  readonly #client: BridgeClient;
  readonly #memory: Storage;
  readonly #toasts: Toasts;
  readonly #changed: () => void;
  #owner = "";

  /** `memory` outlives the tab; `changed` is told about each choice. */
  constructor(client: BridgeClient, memory: Storage, toasts: Toasts, changed: () => void) {
    this.#client = client;
    this.#memory = memory;
    this.#toasts = toasts;
    this.#changed = changed;
  }

  /** Takes up what this account chose before. */
  enter(me: IMUserID): void {
    this.#owner = `automatic replies ignored ${keyOf(me)}`;
    this.load();
  }

  /** Reads what is remembered; another tab may have changed it. */
  load(): void {
    this.ignored.value = new Set(JSON.parse(this.#memory.getItem(this.#owner) ?? "[]") as string[]);
  }

  async setIgnored(cid: IMUserID, ignore: boolean): Promise<void> {
    const owner = this.#owner;
    try {
      await this.#client.singlemsg.ShieldAutoReply({ cid, setignore: Number(ignore) });
    } catch (error) {
      this.#toasts.problem(`Nothing was changed: ${textOf(error)}.`);
      return;
    }
    if (owner !== this.#owner) return;
    this.load();
    const ignored = new Set(this.ignored.value);
    if (ignore) ignored.add(keyOf(cid));
    else ignored.delete(keyOf(cid));
    this.ignored.value = ignored;
    this.#memory.setItem(owner, JSON.stringify([...ignored]));
    this.#changed();
    const words = ignore ? "no longer announced" : "announced again";
    this.#toasts.show(`Automatic replies of ${cid.nick} are ${words}`);
  }
}
