import type { BridgeClient } from "@imsdkbridge/client";
import { signal } from "@preact/signals";
import { plainText } from "../text/body.ts";
import { textOf } from "../text/reasons.ts";
import type { ChatMessage } from "./peers.ts";

/** What became of the wish to translate a message. */
export type Translated =
  | { state: "loading" | "off" }
  | { state: "done"; text: string }
  | { state: "failed"; problem: string };

/** Translations of messages, and the host's setting for them. */
export class Translations {
  readonly enabled = signal(false);
  /** By message identifier. */
  readonly all = signal<ReadonlyMap<string, Translated>>(new Map());
  readonly problem = signal("");

  readonly #client: BridgeClient;

  constructor(client: BridgeClient) {
    this.#client = client;
    client.on("onTranslateSettingNotify", ({ enable }) => (this.enabled.value = enable === 1));
    client.on("onTranslateMsgNotify", ({ msgid, msgcontent }) => {
      if (this.all.value.has(msgid)) this.#came(msgid, msgcontent);
    });
  }

  /** Learns the setting; a host without translation counts as off. */
  async load(): Promise<void> {
    try {
      const { enable } = await this.#client.singlemsg.GetTranslateSetting({});
      this.enabled.value = enable === 1;
    } catch {
      this.enabled.value = false;
    }
  }

  /** Switches translation on or off for the whole host. */
  async setEnabled(enable: boolean): Promise<void> {
    this.problem.value = "";
    try {
      await this.#client.raise("translateSetting", { enable: Number(enable) });
      await this.load();
      if (this.enabled.value !== enable)
        this.problem.value =
          "The host did not take the setting; it may have no translation program.";
    } catch (error) {
      this.problem.value = `The setting was not changed: ${textOf(error)}.`;
    }
  }

  /** Translates a message; the outcome stands under its text. */
  async translate(message: ChatMessage): Promise<void> {
    const { msgid } = message;
    if (!this.enabled.value) return this.#set(msgid, { state: "off" });
    this.#set(msgid, { state: "loading" });
    try {
      const request = { msgid, msgcontent: plainText(message) };
      const { msgcontent } = await this.#client.singlemsg.GetTranslateMsg(request);
      this.#came(msgid, msgcontent);
    } catch (error) {
      this.#set(msgid, { state: "failed", problem: textOf(error) });
    }
  }

  /** Takes a translation away again. */
  hide(msgid: string): void {
    const all = new Map(this.all.value);
    all.delete(msgid);
    this.all.value = all;
  }

  #came(msgid: string, text: string): void {
    // An empty line would look as if nothing had happened.
    const empty = { state: "failed", problem: "the translation program gave no text" } as const;
    this.#set(msgid, text.trim() ? { state: "done", text } : empty);
  }

  #set(msgid: string, translated: Translated): void {
    this.all.value = new Map(this.all.value).set(msgid, translated);
  }
}
