import { IMMsgStatus, type BridgeClient } from "@imsdkbridge/client";
import { textOf } from "../text/reasons.ts";
import type { Conversations } from "./conversations.ts";
import type { Faces } from "./faces.ts";
import type { Threads } from "./threads.ts";
import type { Toasts } from "./toasts.ts";
import { type Peer, type ChatMessage, named } from "./peers.ts";

interface Parts {
  client: BridgeClient;
  faces: Faces;
  threads: Threads;
  conversations: Conversations;
  toasts: Toasts;
  /** Told about messages, or all of a conversation, that were deleted. */
  deleted: (cid: Peer, msgids: readonly string[] | "all") => void;
}

/** What a person can do with messages where they stand, and what the peer does with them. */
export class MessageActions {
  readonly #parts: Parts;

  constructor(parts: Parts) {
    this.#parts = parts;
    parts.client.on("onMsgWithdrawNty", ({ code, withdraws }) => {
      if (code === 0) for (const withdrawn of withdraws) this.#withdrawn(withdrawn);
    });
  }

  /** Takes an own message back, on both sides. */
  async withdraw({ cid, msgid, msgtime, svrtime }: ChatMessage): Promise<void> {
    const { faces, toasts } = this.#parts;
    try {
      await faces.chat(cid).DoChatMsgWithdraw({ ...named(cid), msgid, msgtime, svrtime });
    } catch (error) {
      toasts.problem(`The message was not withdrawn: ${textOf(error)}.`);
    }
  }

  /** Sends a failed message again; why that fails stands below it. */
  async resend({ cid, msgid }: ChatMessage): Promise<void> {
    await this.sendAgain(cid, msgid).catch(() => {});
  }

  /** Sends a failed message again; rejects when the host does not take it. */
  async sendAgain(cid: Peer, msgid: string): Promise<void> {
    const { faces, threads, conversations } = this.#parts;
    const sending = { msgstatus: IMMsgStatus.kMsgSending };
    threads.patch(msgid, sending);
    conversations.patchLast(msgid, sending);
    try {
      await faces.chat(cid).ReSendChatMsg({ ...named(cid), msgid });
    } catch (error) {
      const outcome = { code: -1, result: textOf(error), msgid, svrtime: "" };
      conversations.patchLast(msgid, threads.setStatus(outcome));
      throw error;
    }
  }

  /** Deletes messages, or all of a conversation, from this device. Tells whether it was done. */
  async remove(cid: Peer, msgids: readonly string[] | "all"): Promise<boolean> {
    const { faces, toasts } = this.#parts;
    const which = msgids === "all" ? { all: 1 } : { msgids: [...msgids] };
    try {
      await faces.of(cid).DeleteLocalMsg({ ...named(cid), ...which });
    } catch (error) {
      toasts.problem(`Nothing was deleted: ${textOf(error)}.`);
      return false;
    }
    this.#parts.deleted(cid, msgids);
    return true;
  }

  #withdrawn({ cid, msgid }: Pick<ChatMessage, "cid" | "msgid">): void {
    const { threads, conversations } = this.#parts;
    const change = { msgstatus: IMMsgStatus.kMsgWithdrawn, msgbody: "" };
    const message = threads.patch(msgid, change);
    if (message) conversations.update(message);
    else void conversations.refreshLast(cid);
    void conversations.refreshUnread(cid);
  }
}
