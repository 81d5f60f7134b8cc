import type { BridgeClient, ChatWindowState } from "@imsdkbridge/client";
import { signal } from "@preact/signals";
import { samePeer, type Peer, isTribe } from "./peers.ts";

/** Whether the page can be seen and has the focus. */
export interface PageFocus {
  visible(): boolean;
  activated(): boolean;
  /** Calls back after each change. */
  onChange(changed: () => void): void;
}

/** The focus of a browser page. */
export function documentFocus(page: Document): PageFocus {
  return {
    visible: () => page.visibilityState === "visible",
    activated: () => page.visibilityState === "visible" && page.hasFocus(),
    onChange(changed) {
      page.addEventListener("visibilitychange", changed);
      page.defaultView?.addEventListener("focus", changed);
      page.defaultView?.addEventListener("blur", changed);
    },
  };
}

/** Tells the host which conversation is in front of the person, as it decides what counts as read. */
export class ChatWindow {
  /** Whether somebody sits in front of the page: it can be seen and has the focus. */
  readonly attentive = signal(false);

  readonly #client: BridgeClient;
  readonly #focus: PageFocus;
  readonly #shown: (cid: Peer) => void;
  #told: ChatWindowState | undefined;
  #cid: Peer | undefined;

  /** `shown` is called when a conversation comes in front of the person. */
  constructor(client: BridgeClient, focus: PageFocus, shown: (cid: Peer) => void) {
    this.#client = client;
    this.#focus = focus;
    this.#shown = shown;
    this.attentive.value = focus.activated();
    focus.onChange(() => {
      this.attentive.value = focus.activated();
      this.#tell();
    });
  }

  /** Whether the person can see this conversation now. */
  shows(cid: Peer): boolean {
    return samePeer(cid, this.#cid) && this.#focus.visible();
  }

  /** Shows another conversation, or none. */
  show(cid: Peer | undefined): void {
    const told = this.#told;
    if (told && !samePeer(told.cid, cid)) {
      this.#raise({ cid: told.cid, visible: 0, activated: 0 });
      this.#told = undefined;
    }
    this.#cid = cid;
    this.#tell();
  }

  /** A fresh login: the host knows nothing yet. */
  tellAgain(): void {
    this.#told = undefined;
    this.#tell();
  }

  #tell(): void {
    const cid = this.#cid;
    if (!cid) return;
    // The host asks after windows of single chats alone.
    if (isTribe(cid)) return void (this.#focus.visible() && this.#shown(cid));
    const visible = Number(this.#focus.visible());
    const activated = Number(this.#focus.activated());
    const told = this.#told;
    if (told && told.visible === visible && told.activated === activated) return;
    this.#told = { cid, visible, activated };
    this.#raise(this.#told);
    if (visible || activated) this.#shown(cid);
  }

  #raise(state: ChatWindowState): void {
    // If it does not get through, the next login tells the host again.
    this.#client.raise("chatWindowState", state).catch(() => {});
  }
}
