import type { BridgeClient } from "@imsdkbridge/client";
import { batch } from "@preact/signals";
import { preview } from "../text/body.ts";
import type { ChatStore } from "./chat_store.ts";
import type { Tabs } from "./tabs.ts";
import { keyOf, type Peer, type ChatMessage, named, isTribe } from "./peers.ts";

/** How many new messages are taken in at a time. */
const intakeCount = 40;

/** What of the chat a message that comes concerns. */
type Concerned = Pick<
  ChatStore,
  | "announcement"
  | "conversations"
  | "faces"
  | "mentions"
  | "names"
  | "outbox"
  | "session"
  | "showEnd"
  | "threads"
  | "typing"
  | "window"
>;

/** Takes in what the host announces: messages that came, were sent, and what became of them. */
export class Arrivals {
  readonly #client: BridgeClient;
  readonly #chat: Concerned;
  readonly #tabs: Tabs;

  constructor(client: BridgeClient, chat: Concerned, tabs: Tabs) {
    this.#client = client;
    this.#chat = chat;
    this.#tabs = tabs;
    client.on("onReceiveNewMsg", ({ msgs }) => this.#received(msgs));
    client.on("onReceiveOfflineMsg", ({ msgs }) => this.#received(msgs));
    client.on("onReceiveSysMsg", ({ msgs }) => this.#receivedVirtual(msgs));
    client.on("onReceiveSubscribeMsg", ({ msgs }) => this.#receivedVirtual(msgs));
    client.on("onSendNewMsg", ({ msgs }) => this.#sent(msgs));
    client.on("onSendMsgStatus", (status) => {
      chat.conversations.patchLast(status.msgid, chat.threads.setStatus(status));
    });
  }

  /** The person sees this conversation: its new messages are taken in, which marks them read. */
  async takeIn(cid: Peer): Promise<void> {
    const { faces, conversations } = this.#chat;
    const { tribemsg } = this.#client;
    const request = { ...named(cid), count: intakeCount, gohistory: 1 };
    try {
      const { msgs } = await faces.of(cid).GetNewMsg(request);
      this.#stored(msgs);
      // The host knows of no window that shows a tribe.
      if (isTribe(cid)) await tribemsg.SetMsgRead(named(cid));
      this.#tabs.tell({ kind: "read", cid });
    } catch {
      // They are marked read the next time the conversation is shown.
    }
    await conversations.refreshUnread(cid);
  }

  #received(messages: readonly ChatMessage[]): void {
    const { announcement, conversations, names, typing, window } = this.#chat;
    this.#stored(messages);
    for (const cid of conversationsOf(messages)) {
      typing.arrived(cid);
      if (window.shows(cid)) void this.takeIn(cid);
      else void conversations.refreshUnread(cid);
    }
    const last = messages.at(-1);
    const kind = last?.extinfo.autochatmsg ? ", automatic reply" : "";
    if (last) announcement.value = `${names.ofSender(last)}${kind}: ${preview(last)}`;
  }

  #receivedVirtual(messages: readonly ChatMessage[]): void {
    for (const { cid } of messages) this.#chat.faces.addVirtual(cid);
    this.#received(messages);
  }

  #sent(messages: readonly ChatMessage[]): void {
    const { outbox, session } = this.#chat;
    batch(() => {
      this.#stored(messages);
      for (const message of messages) outbox.landed(message, session.me.value);
    });
    // Whoever sends wants to see it.
    for (const cid of conversationsOf(messages)) void this.#chat.showEnd(cid);
  }

  #stored(messages: readonly ChatMessage[]): void {
    const { conversations, mentions, threads } = this.#chat;
    batch(() => {
      threads.add(messages);
      mentions.arrived(messages);
      for (const message of messages) conversations.note(message);
    });
  }
}

function conversationsOf(messages: readonly ChatMessage[]): Peer[] {
  return [...new Map(messages.map(({ cid }) => [keyOf(cid), cid])).values()];
}
