import {
  BridgeError,
  EngineCode,
  IMMsgStatus,
  type BridgeClient,
  type IMFlagMsgReaded,
  type IMReadFlag,
  type IMUserID,
} from "@imsdkbridge/client";
import type { Threads } from "./threads.ts";
import { keyOf, samePeer, type ChatMessage } from "./peers.ts";

/** Milliseconds in which messages that were seen are gathered into one report. */
const gatherTime = 150;

/** Read receipts: reports what was seen, and notes what the peers report. */
export class Receipts {
  readonly #client: BridgeClient;
  readonly #threads: Threads;
  /** Reported, or on the way. */
  readonly #told = new Set<string>();
  readonly #waiting = new Map<string, { cid: IMUserID; msgids: string[] }>();
  #timer: ReturnType<typeof setTimeout> | undefined;

  constructor(client: BridgeClient, threads: Threads) {
    this.#client = client;
    this.#threads = threads;
    client.on("onFlagMyMsgReaded", ({ items }) => this.#flagged(items));
  }

  /** Somebody sees these messages now; those of the peer are reported, each once. */
  seen(cid: IMUserID, messages: readonly ChatMessage[]): void {
    for (const { msgid, fromid, msgstatus, extinfo } of messages) {
      const open = !extinfo.fixmsgread && !extinfo.syschatmsg && !this.#told.has(msgid);
      if (!open || !samePeer(fromid, cid) || msgstatus === IMMsgStatus.kMsgWithdrawn) continue;
      this.#told.add(msgid);
      const waiting = this.#waiting.get(keyOf(cid)) ?? { cid, msgids: [] };
      waiting.msgids.push(msgid);
      this.#waiting.set(keyOf(cid), waiting);
    }
    if (this.#waiting.size > 0) this.#timer ??= setTimeout(() => this.#report(), gatherTime);
  }

  #report(): void {
    this.#timer = undefined;
    const reports = [...this.#waiting.values()];
    this.#waiting.clear();
    for (const { cid, msgids } of reports) void this.#tell(cid, msgids);
  }

  async #tell(cid: IMUserID, msgids: string[]): Promise<void> {
    try {
      await this.#client.singlemsg.SetFlagsPeerMsgReaded({ cid, msgids });
    } catch (error) {
      // They are reported when they are next seen, unless the host refused for good.
      const refused = error instanceof BridgeError && error.kind === "failed";
      const passing: number[] = [EngineCode.kEngineNoLink, EngineCode.kEngineTimeout];
      if (refused && !passing.includes(error.code)) return;
      for (const msgid of msgids) this.#told.delete(msgid);
    }
  }

  #flagged(items: readonly IMFlagMsgReaded[]): void {
    const flags = new Map<string, { cid: IMUserID; byId: Map<string, IMReadFlag> }>();
    for (const { cid, msgid, readflag } of items) {
      const known = flags.get(keyOf(cid)) ?? { cid, byId: new Map() };
      known.byId.set(msgid, readflag);
      flags.set(keyOf(cid), known);
    }
    for (const { cid, byId } of flags.values()) {
      this.#threads.patchAll(cid, (message) => {
        const readflag = byId.get(message.msgid);
        return readflag === undefined ? message : { ...message, readflag };
      });
    }
  }
}
