import { BridgeError, IMMsgStatus, IMMsgType, type BridgeClient } from "@imsdkbridge/client";
import { grouped } from "../text/grouped.ts";
import { outcomeOf, type Verb } from "../text/outcome.ts";
import { textOf } from "../text/reasons.ts";
import { withEmotions } from "./emotion_text.ts";
import type { Faces } from "./faces.ts";
import type { Names } from "./names.ts";
import type { Toasts } from "./toasts.ts";
import { keyOf, samePeer, type Peer, type ChatMessage, named } from "./peers.ts";

/** One message on its way to one receiver. */
export interface Parcel {
  readonly cid: Peer;
  /** What its message will say. */
  readonly body: string;
  readonly send: () => Promise<unknown>;
  /** `handing` until the host has answered, `open` until the message's status is known. */
  state: "handing" | "open" | "sent" | "failed";
  /** Its message, once that is stored. */
  msgid: string;
  /** Why it failed. */
  reason: string;
}

/** What was sent to several people at once; one toast tells how it stands. */
interface Delivery {
  readonly verb: Verb;
  readonly parcels: readonly Parcel[];
  toast: number;
  told: string;
}

/** What sending on and sending to many need of the rest of the chat. */
interface Parts {
  client: BridgeClient;
  faces: Faces;
  names: Names;
  toasts: Toasts;
  /** Sends a failed message again; rejects when the host does not take it. */
  resend: (cid: Peer, msgid: string) => Promise<unknown>;
}

/**
 * Messages to several people. Whether one was reached is told by the status of its message, not by
 * the host's answer, which only says that the message was taken.
 */
export class Deliveries {
  readonly #parts: Parts;
  #all: Delivery[] = [];

  constructor(parts: Parts) {
    this.#parts = parts;
    parts.client.on("onSendNewMsg", ({ msgs }) => msgs.forEach((message) => this.#stored(message)));
    parts.client.on("onSendMsgStatus", ({ msgid, code, result }) => {
      this.#settle(msgid, code === 0 ? "sent" : "failed", result);
    });
  }

  /**
   * Sends messages on, to each receiver in this order. Resolves once the host has answered: with
   * nothing, or when nobody will get any of it with the reason.
   */
  forward(messages: readonly ChatMessage[], cids: readonly Peer[]): Promise<string> {
    const { faces } = this.#parts;
    return this.#start(
      { doing: "Forwarding", done: "Forwarded" },
      cids.map((cid) =>
        messages.map((message) => {
          return parcel(cid, message.msgbody, () => faces.forward(cid, message));
        }),
      ),
    );
  }

  /** Sends one text to several people, each in a conversation of its own; resolves as `forward`. */
  async broadcast(text: string, cids: readonly Peer[]): Promise<string> {
    const { client, faces } = this.#parts;
    let value: string;
    try {
      value = await withEmotions(client, text);
    } catch (error) {
      return textOf(error);
    }
    const msgbody = [{ type: IMMsgType.kMsgText, value }];
    return this.#start(
      { doing: "Sending", done: "Sent" },
      cids.map((cid) => [parcel(cid, value, () => faces.broadcast(cid, msgbody))]),
    );
  }

  /** After a lost connection: asks what became of messages whose status was not heard. */
  async catchUp(): Promise<void> {
    for (const { cid, msgid, state } of this.#all.flatMap(({ parcels }) => parcels)) {
      if (state !== "open" || !msgid) continue;
      try {
        const { msgs } = await this.#parts.faces.chat(cid).SearchMsgByID({ ...named(cid), msgid });
        const status = msgs[0]?.msgstatus;
        if (status === IMMsgStatus.kMsgSent) this.#settle(msgid, "sent", "");
        if (status === IMMsgStatus.kMsgFailed) this.#settle(msgid, "failed", "it was not sent");
      } catch {
        // Its status may still come; the next connection asks again.
      }
    }
  }

  /** The connection is gone: what was taken and not stored cannot be followed any more. */
  connectionLost(): void {
    for (const delivery of this.#all) {
      for (const one of delivery.parcels) {
        if (one.state === "open" && !one.msgid) fail(one, "the connection was lost");
      }
      if (delivery.toast > 0) this.#show(delivery);
    }
  }

  /** Forgets everything; for a change of account. */
  clear(): void {
    for (const { toast } of this.#all) this.#parts.toasts.dismiss(toast);
    this.#all = [];
  }

  async #start(verb: Verb, lots: readonly (readonly Parcel[])[]): Promise<string> {
    const delivery: Delivery = { verb, parcels: lots.flat(), toast: 0, told: "" };
    this.#all.push(delivery);
    await Promise.all(lots.map((lot) => this.#hand(lot)));
    const taken = delivery.parcels.some(({ state, msgid }) => state !== "failed" || msgid);
    if (taken) {
      this.#show(delivery);
      return "";
    }
    this.#all = this.#all.filter((other) => other !== delivery);
    return delivery.parcels[0]?.reason ?? "";
  }

  /** Hands one receiver's messages over, one after the other, so that they arrive in order. */
  async #hand(lot: readonly Parcel[]): Promise<void> {
    for (const one of lot) {
      try {
        await (one.msgid ? this.#parts.resend(one.cid, one.msgid) : one.send());
        // Its events may have been faster than the answer.
        if (one.state === "handing") one.state = "open";
      } catch (error) {
        const refused = error instanceof BridgeError && error.kind === "failed";
        // Of a message that is stored its status tells more than a lost answer.
        if (one.msgid && !refused) one.state = "open";
        else fail(one, textOf(error));
      }
    }
  }

  async #retry(delivery: Delivery): Promise<void> {
    const failed = delivery.parcels.filter(({ state }) => state === "failed");
    for (const one of failed) one.state = "handing";
    this.#show(delivery);
    const lots = [...grouped(failed, ({ cid }) => keyOf(cid)).values()];
    await Promise.all(lots.map((lot) => this.#hand(lot)));
    this.#show(delivery);
  }

  #stored(message: ChatMessage): void {
    for (const { parcels } of this.#all) {
      const found = parcels.find((one) => isFor(one, message));
      if (found) return void (found.msgid = message.msgid);
    }
  }

  #settle(msgid: string, state: "sent" | "failed", reason: string): void {
    const delivery = this.#all.find(({ parcels }) => parcels.some((one) => one.msgid === msgid));
    const found = delivery?.parcels.find((one) => one.msgid === msgid);
    if (!delivery || !found) return;
    Object.assign(found, { state, reason });
    // The dialog waits for the answers; it tells itself when nobody got anything.
    if (delivery.toast > 0) this.#show(delivery);
  }

  /** Tells how a delivery stands, if that is news; one that is done is forgotten. */
  #show(delivery: Delivery): void {
    const { names, toasts } = this.#parts;
    const { text, problem, settled } = outcomeOf(delivery.verb, delivery.parcels, (cid) =>
      names.of(cid),
    );
    if (settled && !problem) this.#all = this.#all.filter((other) => other !== delivery);
    if (text === delivery.told) return;
    delivery.told = text;
    const retry = { label: "Retry", run: () => void this.#retry(delivery) };
    const more = { lasting: !settled || problem, ...(problem && { action: retry }) };
    toasts.dismiss(delivery.toast);
    delivery.toast = toasts.show(text, problem ? "problem" : "note", more);
  }
}

function parcel(cid: Peer, body: string, send: () => Promise<unknown>): Parcel {
  return { cid, body, send, state: "handing", msgid: "", reason: "" };
}

function fail(one: Parcel, reason: string): void {
  Object.assign(one, { state: "failed", reason });
}

/** Whether a message that was stored just now is the one that the parcel waits for. */
function isFor({ cid, body, msgid, state }: Parcel, message: ChatMessage): boolean {
  if (msgid || state === "failed") return false;
  // What could not be put together is announced as failed, without a body.
  const failed = message.msgstatus === IMMsgStatus.kMsgFailed;
  const bare = (text: string) => text.replace(/\s+/g, "");
  return samePeer(cid, message.cid) && (failed || bare(body) === bare(message.msgbody));
}
