import {
  MessageStatus,
  type BridgeClient,
  type Calls,
  type ConnectionState,
  type Message,
  type UserId,
} from "@imsdkbridge/client";
import { batch, signal } from "@preact/signals";
import { preview } from "../text/body.ts";
import { textOf } from "../text/reasons.ts";
import { ChatWindow, type PageFocus } from "./chat_window.ts";
import { Conversations } from "./conversations.ts";
import { Outbox } from "./outbox.ts";
import { Session } from "./session.ts";
import { Threads } from "./threads.ts";
import { appkey, keyOf, sameUser } from "./users.ts";

/** How many new messages are taken in at a time. */
const intakeCount = 40;

/** The chat's whole state, and everything a person can do; views read signals and call methods. */
export class ChatStore {
  readonly connection = signal<{ state: ConnectionState; reason: string }>({
    state: "connecting",
    reason: "",
  });
  /** The conversation in the message pane. */
  readonly active = signal<UserId | undefined>(undefined);
  /** The newest event in words, for screen readers. */
  readonly announcement = signal("");

  readonly session: Session;
  readonly conversations: Conversations;
  readonly threads: Threads;
  readonly outbox: Outbox;

  readonly #client: BridgeClient;
  readonly #window: ChatWindow;
  #account = "";

  constructor(client: BridgeClient, storage: Storage, focus: PageFocus) {
    this.#client = client;
    this.session = new Session(client, storage, () => this.#entered());
    this.conversations = new Conversations(client);
    this.threads = new Threads(client, (cid, messages) => {
      for (const message of messages) this.outbox.landed(message, this.session.me.value);
      this.outbox.reconcile(cid);
    });
    this.outbox = new Outbox(client, storage);
    this.#window = new ChatWindow(client, focus, (cid) => void this.#takeIn(cid));

    this.connection.value = { state: client.state, reason: client.reason };
    client.onState((state, reason) => {
      this.connection.value = { state, reason };
      if (state !== "open") this.outbox.connectionLost();
    });
    client.on("onReceiveNewMsg", ({ msgs }) => this.#received(msgs));
    client.on("onReceiveOfflineMsg", ({ msgs }) => this.#received(msgs));
    client.on("onSendNewMsg", ({ msgs }) => this.#sent(msgs));
    client.on("onSendMsgStatus", (status) => {
      const message = this.threads.setStatus(status);
      if (message) this.conversations.update(message);
    });
  }

  /** Signs in again on a fresh connection; runs before any other call. */
  restore(direct: Calls): Promise<void> {
    return this.session.restore(direct);
  }

  /** Connects now instead of waiting for the next attempt. */
  reconnect(): void {
    this.#client.reconnect();
  }

  /** Shows a conversation. */
  open(cid: UserId): void {
    if (sameUser(cid, this.active.value)) return;
    this.active.value = cid;
    this.#window.show(cid);
    void this.threads.open(cid);
  }

  /** Shows no conversation. */
  closeConversation(): void {
    this.active.value = undefined;
    this.#window.show(undefined);
  }

  /** Shows the conversation with an account that may not be in the list yet. */
  startChat(nick: string): void {
    const cid = { appkey, nick };
    this.conversations.ensure(cid);
    this.open(cid);
  }

  /** Sends the draft of the shown conversation. */
  async send(): Promise<void> {
    const cid = this.active.value;
    if (cid) await this.outbox.send(cid, this.threads.of(cid).value.messages.at(-1));
  }

  /** Sends a failed message again. */
  async resend({ cid, msgid, msgtype, svrtime }: Message): Promise<void> {
    this.threads.patch(msgid, { msgstatus: MessageStatus.sending });
    try {
      await this.#client.singlemsg.ReSendChatMsg({ cid, msgid });
    } catch (error) {
      const result = textOf(error);
      this.threads.setStatus({ code: -1, subcode: 0, result, msgtype, msgid, svrtime });
    }
  }

  #entered(): void {
    const me = this.session.me.value;
    if (!me) return;
    if (this.#account !== keyOf(me)) {
      this.#account = keyOf(me);
      batch(() => {
        this.closeConversation();
        this.conversations.clear();
        this.threads.clear();
      });
    }
    this.outbox.enter(me);
    this.threads.markStale();
    void this.conversations.load();
    this.#window.tellAgain();
    if (this.active.value) void this.threads.open(this.active.value);
  }

  #received(messages: readonly Message[]): void {
    this.#stored(messages);
    for (const cid of conversationsOf(messages)) {
      if (this.#window.shows(cid)) void this.#takeIn(cid);
      else void this.conversations.refreshUnread(cid);
    }
    const last = messages.at(-1);
    if (last) this.announcement.value = `${last.fromid.nick}: ${preview(last)}`;
  }

  #sent(messages: readonly Message[]): void {
    batch(() => {
      this.#stored(messages);
      for (const message of messages) this.outbox.landed(message, this.session.me.value);
    });
  }

  #stored(messages: readonly Message[]): void {
    batch(() => {
      this.threads.add(messages);
      for (const message of messages) this.conversations.note(message);
    });
  }

  /** The person sees this conversation: its new messages are taken in, which marks them read. */
  async #takeIn(cid: UserId): Promise<void> {
    const request = { cid, msgtime: "", msgid: "", count: intakeCount, gohistory: 1 };
    try {
      const { msgs } = await this.#client.singlemsg.GetNewMsg(request);
      this.#stored(msgs);
    } catch {
      // They are marked read the next time the conversation is shown.
    }
    await this.conversations.refreshUnread(cid);
  }
}

function conversationsOf(messages: readonly Message[]): UserId[] {
  return [...new Map(messages.map(({ cid }) => [keyOf(cid), cid])).values()];
}
