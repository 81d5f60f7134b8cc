import type { BridgeClient, Calls, ConnectionState, IMUserID } from "@imsdkbridge/client";
import { batch, effect, signal } from "@preact/signals";
import { textOf } from "../text/reasons.ts";
import { Arrivals } from "./arrivals.ts";
import { Attachments, type LocalFile } from "./attachments.ts";
import { AutoReplies } from "./auto_replies.ts";
import { ChatWindow } from "./chat_window.ts";
import { Contacts } from "./contacts/contacts.ts";
import { ConversationSearch } from "./conversation_search.ts";
import { Conversations } from "./conversations.ts";
import { Deliveries } from "./deliveries.ts";
import type { Dialog } from "./dialog.ts";
import { Emotions } from "./emotions.ts";
import { Faces } from "./faces.ts";
import { GlobalSearch } from "./global_search.ts";
import { Mentions } from "./mentions.ts";
import { MessageActions } from "./message_actions.ts";
import { Names } from "./names.ts";
import { Outbox } from "./outbox.ts";
import { PictureViewer } from "./picture_viewer.ts";
import { Receipts } from "./receipts.ts";
import { Roaming } from "./roaming.ts";
import { Selection } from "./selection.ts";
import { Session } from "./session.ts";
import { Shaking } from "./shaking.ts";
import { Shown, type InFront } from "./shown.ts";
import type { Surroundings } from "./surroundings.ts";
import { Tabs, type TabNews } from "./tabs.ts";
import { Threads } from "./threads.ts";
import { Toasts } from "./toasts.ts";
import { Translations } from "./translation.ts";
import { Tribes } from "./tribes/tribes.ts";
import { Typing } from "./typing.ts";
import { keyOf, samePeer, type Peer, isTribe } from "./peers.ts";

/** A message that was jumped to, and the words in it that were searched for. */
export interface Target {
  msgid: string;
  keywords: readonly string[];
}

/** A list of the left column. */
export type Section = "chats" | "contacts" | "tribes";

/** The chat's whole state, and everything a person can do; views read signals and call methods. */
export class ChatStore<F extends LocalFile = LocalFile> {
  readonly connection = signal<{ state: ConnectionState; reason: string }>({
    state: "connecting",
    reason: "",
  });
  /** The conversation in the message pane. */
  readonly active = signal<Peer | undefined>(undefined);
  /** The message to bring into view; another object for each wish. */
  readonly target = signal<Target | undefined>(undefined);
  /** Grows with each wish to see the newest end of the shown conversation. */
  readonly endWishes = signal(0);
  /** The newest event in words, for screen readers. */
  readonly announcement = signal("");
  readonly dialog = signal<Dialog | undefined>(undefined);
  /** What the left column lists. */
  readonly section = signal<Section>("chats");

  readonly session: Session;
  readonly faces: Faces;
  readonly names: Names;
  readonly conversations: Conversations;
  readonly threads: Threads;
  readonly outbox: Outbox;
  readonly toasts = new Toasts();
  readonly mentions: Mentions;
  readonly receipts: Receipts;
  readonly typing: Typing;
  readonly shaking: Shaking;
  readonly translations: Translations;
  readonly autoReplies: AutoReplies;
  readonly roaming: Roaming;
  readonly actions: MessageActions;
  readonly deliveries: Deliveries;
  readonly selection = new Selection();
  readonly search: ConversationSearch;
  readonly globalSearch: GlobalSearch;
  readonly attachments: Attachments<F>;
  readonly viewer: PictureViewer;
  readonly emotions: Emotions;
  readonly window: ChatWindow;
  readonly tribes: Tribes;
  readonly contacts: Contacts;

  readonly #client: BridgeClient;
  readonly #shown: Shown;
  readonly #tabs: Tabs;
  readonly #arrivals: Arrivals;
  #account = "";

  constructor(client: BridgeClient, around: Surroundings<F>) {
    const { storage, memory, focus, tabs, readFile, emotions } = around;
    this.#client = client;
    this.#shown = new Shown(storage);
    this.session = new Session(client, storage, () => this.#entered());
    this.faces = new Faces(client);
    this.tribes = new Tribes(client, this.toasts, () => this.closeConversation());
    this.contacts = new Contacts(client, this.toasts);
    this.names = new Names(client, this.tribes.list);
    this.#tabs = new Tabs(tabs, (news) => this.#heard(news));
    this.conversations = new Conversations(client, this.faces, (cid) => this.#inUse(cid));
    this.threads = new Threads(this.faces, (cid, messages) => {
      for (const message of messages) this.outbox.landed(message, this.session.me.value);
      this.outbox.reconcile(cid);
      // The page may have brought what was only on the server.
      const last = messages.at(-1);
      if (last) this.conversations.note(last);
    });
    this.outbox = new Outbox(client, this.faces, storage, (cid, text) =>
      this.mentions.in(cid, text),
    );
    this.mentions = new Mentions(client, this.threads, storage);
    this.receipts = new Receipts(client, this.threads);
    this.typing = new Typing(client);
    this.shaking = new Shaking(client, this.toasts, (cid) => this.#shaken(cid));
    this.translations = new Translations(client);
    const settingChanged = () => this.#tabs.tell({ kind: "settings" });
    this.autoReplies = new AutoReplies(client, memory, this.toasts, settingChanged);
    this.roaming = new Roaming(client, settingChanged);
    const { faces, threads, conversations, toasts } = this;
    const deleted = (cid: Peer, msgids: readonly string[] | "all") => {
      this.#deleted(cid, msgids);
      this.#tabs.tell({ kind: "deleted", cid, msgids });
    };
    this.actions = new MessageActions({ client, faces, threads, conversations, toasts, deleted });
    const resend = (cid: Peer, msgid: string) => this.actions.sendAgain(cid, msgid);
    this.deliveries = new Deliveries({ client, faces, names: this.names, toasts, resend });
    this.search = new ConversationSearch(client, (hit) => void this.jumpTo(hit.cid, hit.msgid));
    this.globalSearch = new GlobalSearch(client);
    this.attachments = new Attachments(client, this.faces, readFile);
    this.viewer = new PictureViewer(this.faces);
    this.emotions = new Emotions(emotions);
    this.window = new ChatWindow(client, focus, (cid) => void this.#arrivals.takeIn(cid));
    this.#arrivals = new Arrivals(client, this, this.#tabs);
    effect(() => {
      const cid = this.active.value;
      const tribe = this.tribes.open.value;
      const inFront = tribe ? { tribeid: tribe.tribeid } : cid && { cid };
      if (this.#account) this.#shown.keep(this.#account, inFront);
    });
    this.tribes.list.all.subscribe(() => {
      if (this.conversations.status.peek() === "ready") this.#listTribes();
    });
    this.window.attentive.subscribe((attentive) => {
      if (attentive && this.#account) void conversations.refreshUnreadOnes();
    });

    this.connection.value = { state: client.state, reason: client.reason };
    client.onState((state, reason) => {
      this.connection.value = { state, reason };
      if (state === "open") return;
      this.outbox.connectionLost();
      this.deliveries.connectionLost();
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
  open(cid: Peer): void {
    this.tribes.hide();
    if (samePeer(cid, this.active.value)) return;
    const before = this.active.value;
    this.#leave();
    this.active.value = cid;
    if (before) this.conversations.tidy(before);
    this.window.show(cid);
    void this.threads.open(cid);
    if (isTribe(cid)) void this.mentions.load(cid.tribeid);
  }

  /** Shows no conversation. */
  closeConversation(): void {
    const before = this.active.value;
    this.#leave();
    this.active.value = undefined;
    if (before) this.conversations.tidy(before);
    this.window.show(undefined);
  }

  /** Shows a conversation that may not be in the list yet. */
  startChat(cid: Peer): void {
    this.conversations.ensure(cid);
    this.open(cid);
  }

  /** Shows a message, with its conversation around it; `keywords` are marked in it. */
  async jumpTo(cid: Peer, msgid: string, keywords: readonly string[] = []): Promise<void> {
    this.open(cid);
    const wish = (this.target.value = { msgid, keywords });
    try {
      await this.threads.loadAround(cid, msgid);
      // The list may have looked for it before it was loaded.
      if (this.target.value === wish) this.target.value = { ...wish };
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

  /** Shows the newest end of a conversation, if it is the shown one. */
  async showEnd(cid: Peer): Promise<void> {
    if (!samePeer(cid, this.active.value)) return;
    this.target.value = undefined;
    await this.threads.toNewest(cid);
    this.endWishes.value++;
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
    const fresh = this.#account !== account;
    const before = fresh ? this.#shown.of(account) : undefined;
    if (fresh) {
      batch(() => {
        this.closeConversation();
        this.#account = account;
        this.dialog.value = undefined;
        this.viewer.close();
        this.conversations.clear();
        this.threads.clear();
        this.faces.clear();
        this.names.clear();
        this.attachments.clear();
        this.deliveries.clear();
        this.tribes.clear();
        this.contacts.clear();
      });
      // It stays kept until it is shown again.
      this.#shown.keep(account, before);
    }
    this.outbox.enter(me);
    this.mentions.enter(me);
    this.#tabs.enter(me);
    this.autoReplies.enter(me);
    this.threads.markStale();
    void Promise.all([this.tribes.enter(me), this.conversations.load()]).then(() => {
      // Which ones are virtual is known only now.
      if (this.#account !== account) return;
      this.#listTribes();
      this.outbox.held().forEach((cid) => this.conversations.ensure(cid));
      if (before && !this.active.value && !this.tribes.open.value) this.#showAgain(before);
    });
    void this.contacts.enter();
    void this.translations.load();
    void this.deliveries.catchUp();
    this.window.tellAgain();
    if (this.active.value) void this.threads.open(this.active.value);
  }

  #showAgain(before: InFront): void {
    if ("cid" in before) return this.startChat(before.cid);
    // The account may have been removed meanwhile.
    if (!this.tribes.list.all.value.has(before.tribeid)) return;
    this.section.value = "tribes";
    this.tribes.show(before.tribeid);
  }

  /** Whether a conversation is to stay in the list although there is no message in it. */
  #inUse(cid: Peer): boolean {
    const member = isTribe(cid) && this.tribes.list.all.peek().has(cid.tribeid);
    return member || this.#written(cid) || samePeer(cid, this.active.value);
  }

  /** Tribes are listed before anybody has written in them. */
  #listTribes(): void {
    for (const cid of this.names.peers()) this.conversations.ensure(cid);
  }

  /** Whether there is something for this conversation that did not become a message yet. */
  #written(cid: Peer): boolean {
    return this.outbox.holds(cid) || this.attachments.of(cid).length > 0;
  }

  /** Messages, or all of a conversation, are gone from this device. */
  #deleted(cid: Peer, msgids: readonly string[] | "all"): void {
    const gone = msgids === "all" ? "all" : new Set(msgids);
    const active = samePeer(cid, this.active.value);
    this.threads.remove(cid, gone);
    if (active) this.selection.drop(gone);
    // What is written there keeps its place.
    if (gone === "all" && !this.#written(cid)) {
      if (active) this.closeConversation();
      this.conversations.remove(cid);
    }
    void this.conversations.refreshLast(cid);
    void this.conversations.refreshUnread(cid);
  }

  /** Another tab of the account did something that the host does not tell. */
  #heard(news: TabNews): void {
    switch (news.kind) {
      case "read":
        return void this.conversations.refreshUnread(news.cid);
      case "deleted":
        return this.#deleted(news.cid, news.msgids);
      case "settings":
        this.autoReplies.load();
        return void this.roaming.load();
    }
  }

  #shaken(cid: IMUserID): void {
    const text = `${cid.nick} shook your window`;
    this.announcement.value = text;
    if (this.window.shows(cid)) return;
    this.toasts.show(text, "note", { action: { label: "Open", run: () => this.open(cid) } });
  }
}
