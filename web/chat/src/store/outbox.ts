import {
  BridgeError,
  type BridgeClient,
  type IMUserID,
  IMMsgType,
  type TribeAtRequest,
} from "@imsdkbridge/client";
import { signal } from "@preact/signals";
import { textOf } from "../text/reasons.ts";
import { withEmotions } from "./emotion_text.ts";
import {
  comparePositions,
  keyOf,
  samePeer,
  peerOf,
  type Position,
  type Peer,
  type ChatMessage,
} from "./peers.ts";
import type { Faces } from "./faces.ts";

/** A text on its way to becoming a message. */
export interface Outgoing {
  id: number;
  cid: Peer;
  text: string;
  /** The text as it is sent, with emotion tokens; none before the host has converted it. */
  body?: string;
  /** The newest message of the conversation when it was sent; it can only land after that. */
  after: Position | undefined;
  /**
   * `open` until the host answers, `accepted` until the message is stored; `uncertain` when the
   * connection broke before that, so that only history can tell.
   */
  state: "open" | "accepted" | "uncertain";
}

/** Milliseconds that a text waits for the connection and the host's answer. */
const sendTimeout = 30_000;

/**
 * What the person has written: drafts by conversation, and texts on their way. A text leaves only
 * when its message is stored; what could not be sent goes back into the draft with the reason.
 * Everything is kept in the tab's storage, so a reload loses none of it.
 */
export class Outbox {
  readonly drafts = signal<Readonly<Record<string, string>>>({});
  readonly outgoing = signal<readonly Outgoing[]>([]);
  /** By conversation: why its text came back. */
  readonly notices = signal<Readonly<Record<string, string>>>({});

  readonly #client: BridgeClient;
  readonly #faces: Faces;
  readonly #storage: Storage;
  readonly #mentioned: (cid: Peer, text: string) => TribeAtRequest | undefined;
  #owner = "";
  #nextId = 1;
  /** Messages that already stand for a text, so two equal texts need two messages. */
  readonly #claimed = new Set<string>();
  /** By conversation: what came back to the front of its draft. */
  readonly #returned = new Map<string, string>();

  /** `mentioned` tells whom a text to a conversation mentions. */
  constructor(
    client: BridgeClient,
    faces: Faces,
    storage: Storage,
    mentioned: (cid: Peer, text: string) => TribeAtRequest | undefined,
  ) {
    this.#mentioned = mentioned;
    this.#client = client;
    this.#faces = faces;
    this.#storage = storage;
  }

  /** Takes up what this account left in the tab; nothing changes for the account already here. */
  enter(me: IMUserID): void {
    const owner = `written ${keyOf(me)}`;
    if (owner === this.#owner) return;
    this.#owner = owner;
    this.#claimed.clear();
    const { drafts = {}, outgoing = [] } = JSON.parse(this.#storage.getItem(owner) ?? "{}") as {
      drafts?: Record<string, string>;
      outgoing?: Outgoing[];
    };
    this.drafts.value = drafts;
    this.notices.value = {};
    this.outgoing.value = outgoing.map((entry) => ({ ...entry, state: "uncertain" }));
    this.#nextId = 1 + Math.max(0, ...outgoing.map((entry) => entry.id));
  }

  /** Whether something is written to this conversation that did not become a message yet. */
  holds(cid: Peer): boolean {
    const draft = this.drafts.value[keyOf(cid)] ?? "";
    return draft.trim() !== "" || this.outgoing.value.some((entry) => samePeer(entry.cid, cid));
  }

  /** The conversations that drafts are written to. */
  held(): Peer[] {
    const keys = Object.entries(this.drafts.value).filter(([, draft]) => draft.trim());
    return keys.map(([key]) => peerOf(key));
  }

  setDraft(cid: Peer, text: string): void {
    this.drafts.value = { ...this.drafts.value, [keyOf(cid)]: text };
    this.#notice(cid, "");
    this.#save();
  }

  /**
   * Sends the draft of a conversation; `after` is the newest message shown there. Tells whether what
   * follows the text can go out: not when the host did not take it.
   */
  async send(cid: Peer, after: Position | undefined): Promise<boolean> {
    const text = wellFormed(this.drafts.value[keyOf(cid)] ?? "");
    if (!text.trim()) return true;
    const entry: Outgoing = { id: this.#nextId++, cid, text, after, state: "open" };
    this.outgoing.value = [...this.outgoing.value, entry];
    this.setDraft(cid, "");
    try {
      const value = await withEmotions(this.#client, text);
      this.#change({ body: value }, ({ id }) => id === entry.id);
      const item = { type: IMMsgType.kMsgText, value, jvale: "", filecontent: "", filepath: "" };
      const whom = this.#mentioned(cid, text);
      await this.#faces.send(cid, [item], { timeout: sendTimeout }, whom);
      this.#change({ state: "accepted" }, ({ id }) => id === entry.id);
      return true;
    } catch (error) {
      const kind = error instanceof BridgeError ? error.kind : "failed";
      if (kind === "disconnected" || kind === "closed") {
        this.#change({ state: "uncertain" }, ({ id }) => id === entry.id);
      } else if (kind === "timeout")
        this.#putBack(entry.id, "No answer came; this may not be sent.");
      else this.#putBack(entry.id, `Not sent: ${textOf(error)}.`);
      return false;
    }
  }

  /** The connection is gone: what was accepted may not have been stored. */
  connectionLost(): void {
    this.#change({ state: "uncertain" }, ({ state }) => state === "accepted");
  }

  /** A message of `me` is stored: the text it came from has landed. */
  landed(message: ChatMessage, me: Peer | undefined): void {
    if (!samePeer(message.fromid, me) || this.#claimed.has(message.msgid)) return;
    const entry = this.outgoing.value.find(
      ({ cid, text, body = text, after }) =>
        body === message.msgbody &&
        samePeer(cid, message.cid) &&
        (!after || comparePositions(message, after) > 0),
    );
    if (!entry) return;
    this.#claimed.add(message.msgid);
    this.#remove(entry.id);
  }

  /** The newest messages of a conversation are known: uncertain texts not among them come back. */
  reconcile(cid: Peer): void {
    for (const entry of this.outgoing.value) {
      if (entry.state !== "uncertain" || !samePeer(entry.cid, cid)) continue;
      this.#putBack(entry.id, "The connection was lost before this was sent.");
    }
  }

  #putBack(id: number, notice: string): void {
    const entry = this.#remove(id);
    if (!entry) return;
    const key = keyOf(entry.cid);
    const draft = this.drafts.value[key] ?? "";
    // Texts that come back one after the other keep their order, before what was written since.
    const returned = this.#returned.get(key);
    const front = returned && `${draft}\n`.startsWith(`${returned}\n`) ? returned : "";
    const rest = front ? draft.slice(front.length + 1) : draft;
    this.#returned.set(key, joinLines(front, entry.text));
    this.setDraft(entry.cid, joinLines(front, entry.text, rest));
    this.#notice(entry.cid, notice);
  }

  #change(change: Partial<Outgoing>, which: (entry: Outgoing) => boolean): void {
    const changed = (entry: Outgoing) => (which(entry) ? { ...entry, ...change } : entry);
    this.outgoing.value = this.outgoing.value.map(changed);
    this.#save();
  }

  #remove(id: number): Outgoing | undefined {
    const entry = this.outgoing.value.find((other) => other.id === id);
    this.outgoing.value = this.outgoing.value.filter((other) => other.id !== id);
    this.#save();
    return entry;
  }

  #notice(cid: Peer, notice: string): void {
    if ((this.notices.value[keyOf(cid)] ?? "") === notice) return;
    this.notices.value = { ...this.notices.value, [keyOf(cid)]: notice };
  }

  #save(): void {
    const state = { drafts: this.drafts.value, outgoing: this.outgoing.value };
    try {
      this.#storage.setItem(this.#owner, JSON.stringify(state));
    } catch {
      // The tab's storage is full; the texts are still in this page.
    }
  }
}

function joinLines(...texts: string[]): string {
  return texts.filter(Boolean).join("\n");
}

/** Replaces halves of characters, as they would not come back as they are. */
function wellFormed(text: string): string {
  return new TextDecoder("utf-8", { ignoreBOM: true }).decode(new TextEncoder().encode(text));
}
