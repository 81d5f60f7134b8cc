import {
  IMMsgStatus,
  IMMsgType,
  type BridgeClient,
  type IMMessage,
  type IMUserID,
  type IMMsgWithdraw,
} from "@imsdkbridge/client";
import { textOf } from "../text/reasons.ts";
import type { Conversations } from "./conversations.ts";
import { withEmotions } from "./emotion_text.ts";
import type { Faces } from "./faces.ts";
import type { Threads } from "./threads.ts";
import type { Toasts } from "./toasts.ts";

interface Parts {
  client: BridgeClient;
  faces: Faces;
  threads: Threads;
  conversations: Conversations;
  toasts: Toasts;
}

/** What a person can do with messages that are there already, and what the peer does with them. */
export class MessageActions {
  readonly #parts: Parts;

  constructor(parts: Parts) {
    this.#parts = parts;
    parts.client.on("onMsgWithdrawNty", ({ code, withdraws }) => {
      if (code === 0) for (const withdrawn of withdraws) this.#withdrawn(withdrawn);
    });
  }

  /** Takes an own message back, on both sides. */
  async withdraw({ cid, msgid, msgtime, svrtime }: IMMessage): Promise<void> {
    const { client, toasts } = this.#parts;
    try {
      await client.singlemsg.DoChatMsgWithdraw({ cid, msgid, msgtime, svrtime });
    } catch (error) {
      toasts.problem(`The message was not withdrawn: ${textOf(error)}.`);
    }
  }

  /** Sends a failed message again. */
  async resend({ cid, msgid, msgtype, svrtime }: IMMessage): Promise<void> {
    const { client, threads } = this.#parts;
    threads.patch(msgid, { msgstatus: IMMsgStatus.kMsgSending });
    try {
      await client.singlemsg.ReSendChatMsg({ cid, msgid });
    } catch (error) {
      const result = textOf(error);
      threads.setStatus({ code: -1, subcode: 0, result, msgtype, msgid, svrtime });
    }
  }

  /** Deletes messages, or all of a conversation, from this device. Tells whether it was done. */
  async remove(cid: IMUserID, msgids: readonly string[] | "all"): Promise<boolean> {
    const { faces, threads, conversations, toasts } = this.#parts;
    const which = msgids === "all" ? { all: 1 } : { msgids: [...msgids] };
    try {
      await faces.of(cid).DeleteLocalMsg({ cid, ...which });
    } catch (error) {
      toasts.problem(`Nothing was deleted: ${textOf(error)}.`);
      return false;
    }
    threads.remove(cid, msgids === "all" ? "all" : new Set(msgids));
    if (msgids === "all") conversations.remove(cid);
    else await conversations.refreshLast(cid);
    return true;
  }

  /** Sends messages on to other conversations, in their order. */
  async forward(messages: readonly IMMessage[], cids: readonly IMUserID[]): Promise<boolean> {
    const { client } = this.#parts;
    return this.#toMany("Forwarded to", cids, async () => {
      for (const { msgid, msgtype } of messages) {
        const request = { cids: [...cids], msgbody: [], msgtype, msgid };
        await client.singlemsg.ForwardChatMsg(request);
      }
    });
  }

  /** Sends one text to several people, each in a conversation of its own. */
  async broadcast(text: string, cids: readonly IMUserID[]): Promise<boolean> {
    const { client } = this.#parts;
    return this.#toMany("Sent to", cids, async () => {
      const value = await withEmotions(client, text);
      const msgbody = [{ type: IMMsgType.kMsgText, value }];
      await client.singlemsg.SendBroadcastMsg({ cids: [...cids], msgbody });
    });
  }

  async #toMany(
    done: string,
    cids: readonly IMUserID[],
    send: () => Promise<void>,
  ): Promise<boolean> {
    const { toasts } = this.#parts;
    try {
      await send();
    } catch (error) {
      toasts.problem(`Not everybody got it: ${textOf(error)}.`);
      return false;
    }
    const names = cids.length > 3 ? `${cids.length} people` : cids.map((c) => c.nick).join(", ");
    toasts.show(`${done} ${names}`);
    return true;
  }

  #withdrawn({ cid, msgid }: IMMsgWithdraw): void {
    const { threads, conversations } = this.#parts;
    const change = { msgstatus: IMMsgStatus.kMsgWithdrawn, msgbody: "" };
    const message = threads.patch(msgid, change);
    if (message) conversations.update(message);
    else void conversations.refreshLast(cid);
    void conversations.refreshUnread(cid);
  }
}
