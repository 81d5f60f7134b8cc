import type {
  BridgeClient,
  Calls,
  ConnectionState,
  IMMessage,
  IMUserID,
} from "@imsdkbridge/client";
import { batch, signal } from "@preact/signals";
import { preview } from "../text/body.ts";
import { textOf } from "../text/reasons.ts";
import { Attachments, type LocalFile, type ReadFile } from "./attachments.ts";
import { AutoReplies } from "./auto_replies.ts";
import { ChatWindow, type PageFocus } from "./chat_window.ts";
import { ConversationSearch } from "./conversation_search.ts";
import { Conversations } from "./conversations.ts";
import { Emotions, type Emotion } from "./emotions.ts";
import { Faces } from "./faces.ts";
import { GlobalSearch } from "./global_search.ts";
import { MessageActions } from "./message_actions.ts";
import { Outbox } from "./outbox.ts";
import { PictureViewer } from "./picture_viewer.ts";
import { Receipts } from "./receipts.ts";
import { Roaming } from "./roaming.ts";
import { Selection } from "./selection.ts";
import { Session } from "./session.ts";
import { Shaking } from "./shaking.ts";
import { Threads } from "./threads.ts";
import { Toasts } from "./toasts.ts";
import { Translations } from "./translation.ts";
import { Typing } from "./typing.ts";
import { appkey, keyOf, sameUser } from "./users.ts";

/** How many new messages are taken in at a time. */
const intakeCount = 40;

/** What the store needs of the page around it. */
export interface Surroundings<F extends LocalFile = LocalFile> {
  /** Lives as long as the tab. */
  storage: Storage;
  /** Outlives the tab. */
  memory: Storage;
  focus: PageFocus;
  readFile: ReadFile<F>;
  emotions: () => Promise<readonly Emotion[]>;
}

/** A question or a form in front of the page. */
export type Dialog =
  | { kind: "forward"; messages: readonly IMMessage[] }
  | { kind: "delete"; cid: IMUserID; msgids: readonly string[] | "all" }
  | { kind: "broadcast" | "search" | "settings" };

/** The chat's whole state, and everything a person can do; views read signals and call methods. */
export class ChatStore<F extends LocalFile = LocalFile> {
  readonly connection = signal<{ state: ConnectionState; reason: string }>({
    state: "connecting",
    reason: "",
  });
  /** The conversation in the message pane. */
  readonly active = signal<IMUserID | undefined>(undefined);
  /** The message to bring into view; another object for each wish. */
  readonly target = signal<{ msgid: string } | undefined>(undefined);
  /** The newest event in words, for screen readers. */
  readonly announcement = signal("");
  readonly dialog = signal<Dialog | undefined>(undefined);

  readonly session: Session;
  readonly faces: Faces;
  readonly conversations: Conversations;
  readonly threads: Threads;
  readonly outbox: Outbox;
  readonly toasts = new Toasts();
  readonly receipts: Receipts;
  readonly typing: Typing;
  readonly shaking: Shaking;
  readonly translations: Translations;
  readonly autoReplies: AutoReplies;
  readonly roaming: Roaming;
  readonly actions: MessageActions;
  readonly selection = new Selection();
  readonly search: ConversationSearch;
  readonly globalSearch: GlobalSearch;
  readonly attachments: Attachments<F>;
  readonly viewer: PictureViewer;
  readonly emotions: Emotions;
  readonly window: ChatWindow;

  readonly #client: BridgeClient;
  readonly #storage: Storage;
  #account = "";

  constructor(client: BridgeClient, around: Surroundings<F>) {
    const { storage, memory, focus, readFile, emotions } = around;
    this.#client = client;
    this.#storage = storage;
    this.session = new Session(client, storage, () => this.#entered());
    this.faces = new Faces(client);
    this.conversations = new Conversations(client, this.faces);
    this.threads = new Threads(client, this.faces, (cid, messages) => {
      for (const message of messages) this.outbox.landed(message, this.session.me.value);
      this.outbox.reconcile(cid);
    });
    this.outbox = new Outbox(client, storage);
    this.receipts = new Receipts(client, this.threads);
    this.typing = new Typing(client);
    this.shaking = new Shaking(client, this.toasts, (cid) => this.#shaken(cid));
    this.translations = new Translations(client);
    this.autoReplies = new AutoReplies(client, memory, this.toasts);
    this.roaming = new Roaming(client);
    const { faces, threads, conversations, toasts } = this;
    this.actions = new MessageActions({ client, faces, threads, conversations, toasts });
    this.search = new ConversationSearch(client, (hit) => void this.jumpTo(hit.cid, hit.msgid));
    this.globalSearch = new GlobalSearch(client);
    this.attachments = new Attachments(client, readFile);
    this.viewer = new PictureViewer(client);
    this.emotions = new Emotions(emotions);
    this.window = new ChatWindow(client, focus, (cid) => void this.#takeIn(cid));
    this.window.attentive.subscribe((attentive) => {
      if (attentive && this.#account) void conversations.refreshUnreadOnes();
    });

    this.connection.value = { state: client.state, reason: client.reason };
    client.onState((state, reason) => {
      this.connection.value = { state, reason };
      if (state !== "open") this.outbox.connectionLost();
    });
    client.on("onReceiveNewMsg", ({ msgs }) => this.#received(msgs));
    client.on("onReceiveOfflineMsg", ({ msgs }) => this.#received(msgs));
    client.on("onReceiveSysMsg", ({ msgs }) => this.#receivedVirtual(msgs));
    client.on("onReceiveSubscribeMsg", ({ msgs }) => this.#receivedVirtual(msgs));
    client.on("onSendNewMsg", ({ msgs }) => this.#sent(msgs));
    client.on("onSendMsgStatus", (status) => {
      this.conversations.patchLast(status.msgid, this.threads.setStatus(status));
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
  open(cid: IMUserID): void {
    if (sameUser(cid, this.active.value)) return;
    this.#leave();
    this.active.value = cid;
    this.#storage.setItem(shownKey(this.#account), JSON.stringify(cid));
    this.window.show(cid);
    void this.threads.open(cid);
  }

  /** Shows no conversation. */
  closeConversation(): void {
    this.#leave();
    this.active.value = undefined;
    this.#storage.removeItem(shownKey(this.#account));
    this.window.show(undefined);
  }

  /** Shows the conversation with an account that may not be in the list yet. */
  startChat(nick: string): void {
    const cid = { appkey, nick };
    this.conversations.ensure(cid);
    this.open(cid);
  }

  /** Shows a message, with its conversation around it. */
  async jumpTo(cid: IMUserID, msgid: string): Promise<void> {
    this.open(cid);
    const wish = (this.target.value = { msgid });
    try {
      await this.threads.loadAround(cid, msgid);
      // The list may have looked for it before it was loaded.
      if (this.target.value === wish) this.target.value = { msgid };
    } catch (error) {
      this.toasts.problem(`The message cannot be shown: ${textOf(error)}.`);
    }
  }

  /** Sends the draft of the shown conversation, and after it the files. */
  async send(): Promise<void> {
    const cid = this.active.value;
    if (!cid) return;
    this.typing.stopped();
    if (this.threads.of(cid).value.newer !== "none") await this.threads.toNewest(cid);
    const after = this.threads.of(cid).value.messages.at(-1);
    const text = this.outbox.send(cid, after);
    await this.attachments.send(cid, text);
  }

  #leave(): void {
    this.typing.stopped();
    this.search.close();
    this.selection.end();
    this.target.value = undefined;
  }

  #entered(): void {
    const me = this.session.me.value;
    if (!me) return;
    const account = keyOf(me);
    const shown = this.#account === account ? null : this.#storage.getItem(shownKey(account));
    if (this.#account !== account) {
      batch(() => {
        this.closeConversation();
        this.#account = account;
        this.dialog.value = undefined;
        this.viewer.close();
        this.conversations.clear();
        this.threads.clear();
        this.faces.clear();
        this.attachments.clear();
      });
    }
    this.outbox.enter(me);
    this.autoReplies.enter(me);
    this.threads.markStale();
    void this.conversations.load().then(() => {
      // Which ones are virtual is known only now.
      if (shown && !this.active.value && this.#account === account) this.open(JSON.parse(shown));
    });
    void this.translations.load();
    this.window.tellAgain();
    if (this.active.value) void this.threads.open(this.active.value);
  }

  #received(messages: readonly IMMessage[]): void {
    this.#stored(messages);
    for (const cid of conversationsOf(messages)) {
      this.typing.arrived(cid);
      if (this.window.shows(cid)) void this.#takeIn(cid);
      else void this.conversations.refreshUnread(cid);
    }
    const last = messages.at(-1);
    if (last) this.announcement.value = `${last.fromid.nick}: ${preview(last)}`;
  }

  #receivedVirtual(messages: readonly IMMessage[]): void {
    for (const { cid } of messages) this.faces.addVirtual(cid);
    this.#received(messages);
  }

  #sent(messages: readonly IMMessage[]): void {
    batch(() => {
      this.#stored(messages);
      for (const message of messages) this.outbox.landed(message, this.session.me.value);
    });
  }

  #stored(messages: readonly IMMessage[]): void {
    batch(() => {
      this.threads.add(messages);
      for (const message of messages) this.conversations.note(message);
    });
  }

  #shaken(cid: IMUserID): void {
    const text = `${cid.nick} shook your window`;
    this.announcement.value = text;
    if (this.window.shows(cid)) return;
    this.toasts.show(text, "note", { label: "Open", run: () => this.open(cid) });
  }

  /** The person sees this conversation: its new messages are taken in, which marks them read. */
  async #takeIn(cid: IMUserID): Promise<void> {
    const request = { cid, msgtime: "", msgid: "", count: intakeCount, gohistory: 1 };
    try {
      const { msgs } = await this.faces.of(cid).GetNewMsg(request);
      this.#stored(msgs);
    } catch {
      // They are marked read the next time the conversation is shown.
    }
    await this.conversations.refreshUnread(cid);
  }
}

/** Where the tab keeps which conversation an account has in front, for after a reload. */
function shownKey(account: string): string {
  return `shown ${account}`;
}

function conversationsOf(messages: readonly IMMessage[]): IMUserID[] {
  return [...new Map(messages.map(({ cid }) => [keyOf(cid), cid])).values()];
}
