import { IMMsgType, type BridgeClient, type IMUserID } from "@imsdkbridge/client";
import { signal } from "@preact/signals";
import { keyOf, type Peer } from "./peers.ts";

/** Milliseconds: how often typing is told, after which rest it ended, and how long a peer's lasts. */
const defaults = { repeat: 4_000, rest: 5_000, expiry: 8_000 };

/** Who is typing: tells the peers about this side, and remembers what they tell. */
export class Typing {
  /** Keys of the conversations whose peer is typing. */
  readonly peers = signal<ReadonlySet<string>>(new Set());

  readonly #client: BridgeClient;
  readonly #times: typeof defaults;
  readonly #expiries = new Map<string, ReturnType<typeof setTimeout>>();
  #mine: { cid: IMUserID; told: number } | undefined;
  #restTimer: ReturnType<typeof setTimeout> | undefined;

  constructor(client: BridgeClient, times = defaults) {
    this.#client = client;
    this.#times = times;
    client.on("onPeerInputNotify", ({ value, cid }) => this.#peer(cid, value === 1));
  }

  /** The person changed a draft. */
  typed(cid: IMUserID): void {
    if (this.#mine && keyOf(this.#mine.cid) !== keyOf(cid)) this.stopped();
    const now = Date.now();
    if (!this.#mine || now - this.#mine.told >= this.#times.repeat) {
      this.#mine = { cid, told: now };
      this.#tell(cid, "1");
    }
    clearTimeout(this.#restTimer);
    this.#restTimer = setTimeout(() => this.stopped(), this.#times.rest);
  }

  /** The person sent the text, went elsewhere or rests. */
  stopped(): void {
    clearTimeout(this.#restTimer);
    if (this.#mine) this.#tell(this.#mine.cid, "0");
    this.#mine = undefined;
  }

  /** A message of this peer is there: it types no longer. */
  arrived(cid: Peer): void {
    this.#peer(cid, false);
  }

  #peer(cid: Peer, typing: boolean): void {
    const key = keyOf(cid);
    clearTimeout(this.#expiries.get(key));
    this.#expiries.delete(key);
    if (typing) {
      const timer = setTimeout(() => this.#peer(cid, false), this.#times.expiry);
      this.#expiries.set(key, timer);
    }
    if (this.peers.value.has(key) === typing) return;
    const peers = new Set(this.peers.value);
    if (typing) peers.add(key);
    else peers.delete(key);
    this.peers.value = peers;
  }

  #tell(cid: IMUserID, value: "1" | "0"): void {
    const msgbody = [{ type: IMMsgType.kMsgInputStatus, value }];
    // Nobody misses a typing state that got lost.
    this.#client.singlemsg.SendNormalChatMsg({ cid, autosend: 1, msgbody }).catch(() => {});
  }
}
