import type { BridgeClient, ModuleFace, IMUserID } from "@imsdkbridge/client";
import { keyOf } from "./users.ts";

/** Knows which conversations are virtual, and thus which module of the host serves one. */
export class Faces {
  readonly #client: BridgeClient;
  readonly #virtual = new Set<string>();

  constructor(client: BridgeClient) {
    this.#client = client;
  }

  /** The module that has this conversation's messages; only what both kinds offer. */
  of(cid: IMUserID): ModuleFace<"im.virtualmsg"> {
    return this.isVirtual(cid) ? this.#client.virtualmsg : this.#client.singlemsg;
  }

  /** Whether nobody stands behind it: system and subscription messages. */
  isVirtual(cid: IMUserID): boolean {
    return this.#virtual.has(keyOf(cid));
  }

  addVirtual(cid: IMUserID): void {
    this.#virtual.add(keyOf(cid));
  }

  /** Forgets everything; for a change of account. */
  clear(): void {
    this.#virtual.clear();
  }
}
