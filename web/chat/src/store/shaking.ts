import { IMMsgType, type BridgeClient, type IMUserID } from "@imsdkbridge/client";
import { signal } from "@preact/signals";
import { textOf } from "../text/reasons.ts";
import type { Toasts } from "./toasts.ts";

/** Milliseconds between two shakes of this side, and between two that are shown. */
const defaults = { send: 10_000, show: 3_000 };

/** Window shakes, both ways. */
export class Shaking {
  /** Whether another shake may be sent now. */
  readonly ready = signal(true);
  /** Grows with each shake to be shown. */
  readonly count = signal(0);

  readonly #client: BridgeClient;
  readonly #toasts: Toasts;
  readonly #pauses: typeof defaults;
  #shown = -Infinity;

  /** `shaken` is told about each shake to be shown. */
  constructor(
    client: BridgeClient,
    toasts: Toasts,
    shaken: (cid: IMUserID) => void,
    pauses = defaults,
  ) {
    this.#client = client;
    this.#toasts = toasts;
    this.#pauses = pauses;
    client.on("onShakeMsgNotify", ({ appkey, nick }) => {
      const now = Date.now();
      if (now - this.#shown < this.#pauses.show) return;
      this.#shown = now;
      this.count.value++;
      shaken({ appkey, nick });
    });
  }

  /** Shakes the peer's window. */
  async shake(cid: IMUserID): Promise<void> {
    if (!this.ready.value) return;
    this.ready.value = false;
    setTimeout(() => (this.ready.value = true), this.#pauses.send);
    try {
      const msgbody = [{ type: IMMsgType.kMsgShake }];
      await this.#client.singlemsg.SendNormalChatMsg({ cid, autosend: 0, msgbody });
    } catch (error) {
      this.#toasts.problem(`The window was not shaken: ${textOf(error)}.`);
    }
  }
}
