import assert from "node:assert/strict";
import { after, afterEach, before, beforeEach } from "node:test";
import type { Browser, Locator } from "playwright-core";
import { Host } from "./host.ts";
import { ChatPage, launch } from "./pages.ts";

/**
 * Two accounts in two windows, each with the other in front: anew for each test of the file that
 * makes one of these, on one host and in one browser. After each test no page may have had trouble.
 */
export class TwoWindows {
  readonly host = new Host();
  browser!: Browser;
  harbor!: ChatPage;
  lighthouse!: ChatPage;

  /** `prepare` runs before the host starts. */
  constructor(prepare: (host: Host) => void = () => {}) {
    before(async () => {
      prepare(this.host);
      await this.host.start();
      this.browser = await launch();
    });
    after(async () => {
      await this.browser?.close();
      await this.host.remove();
    });
    beforeEach(async () => {
      const { browser, host } = this;
      this.harbor = await ChatPage.signedIn(browser, host.url, "harbor");
      this.lighthouse = await ChatPage.signedIn(browser, host.url, "lighthouse");
      await this.harbor.openConversation("lighthouse");
      await this.lighthouse.openConversation("harbor");
    });
    afterEach(async () => {
      assert.deepEqual([...this.harbor.troubles, ...this.lighthouse.troubles], []);
      await this.harbor.close();
      await this.lighthouse.close();
    });
  }
}

/** The newest message that is just this text. */
export function bubble({ page }: ChatPage, text: string): Locator {
  return page.locator(".message", { has: page.locator(`.text:text-is("${text}")`) }).last();
}
