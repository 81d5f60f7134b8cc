// Contacts as people meet them in the demo: two windows of two accounts.
import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import type { Browser } from "playwright-core";
import { Host } from "./host.ts";
import { ChatPage, launch } from "./pages.ts";

const host = new Host();
let browser: Browser;

before(async () => {
  await host.start();
  browser = await launch();
});
after(async () => {
  await browser?.close();
  await host.remove();
});

async function atContacts(nick: string): Promise<ChatPage> {
  const chat = await ChatPage.signedIn(browser, host.url, nick);
  await chat.page.getByRole("tab", { name: "Contacts" }).click();
  await chat.page.locator("[data-contact]").first().waitFor();
  return chat;
}
const contact = ({ page }: ChatPage, nick: string) => page.locator(`[data-contact="${nick}"]`);
const button = ({ page }: ChatPage, name: string) =>
  page.getByRole("button", { name, exact: true }).click();

test("somebody is found, asked and added; both are seen, moved, written to and removed", async () => {
  const navigator = await atContacts("navigator");
  const mariner = await atContacts("mariner");
  const { page } = navigator;
  await button(navigator, "Add a contact");
  await page.keyboard.type("MAX");
  await page.getByRole("radio", { name: "Mariner Max mariner" }).check();
  await page.getByLabel("Words for them").fill("<b>ahoy</b>");
  await button(navigator, "Ask");
  await page.getByText("mariner was asked.").waitFor();

  await mariner.page.getByRole("tab", { name: "Contacts 1 waiting" }).waitFor();
  await mariner.page.locator(".chip", { hasText: "Requests" }).click();
  await mariner.page.getByText("navigator wants to add you", { exact: true }).waitFor();
  assert.equal(await mariner.page.locator(".request .dialog-quote").textContent(), "<b>ahoy</b>");
  await button(mariner, "Allow and add");
  await mariner.page.getByText("You and navigator added each other").waitFor();
  await mariner.page.keyboard.press("Escape");

  // Both hear of it, and see each other come and go.
  await contact(mariner, "navigator").locator(".presence.online").waitFor();
  await contact(navigator, "mariner").locator(".presence.online").waitFor();
  await page.getByText("Mariner Max and you are contacts now.").waitFor();

  await contact(navigator, "mariner").click({ button: "right" });
  await page.getByRole("menuitem", { name: "Move to a group" }).click();
  await page.getByLabel("Or a new group").fill("Afloat");
  await button(navigator, "Move");
  await page.locator(".contact-group", { hasText: "Afloat" }).waitFor();

  // By the keyboard alone: to the contact, and into a chat with it.
  await page.getByLabel("Find a contact").fill("max");
  const list = page.getByRole("listbox", { name: "Contacts" });
  await list.focus();
  await page.keyboard.press("End");
  await page.keyboard.press("Enter");
  await page.getByLabel("Find a contact").fill("");
  await page.locator("textarea").fill("hello");
  await page.keyboard.press("Enter");
  await contact(mariner, "navigator").locator(".badge", { hasText: "1" }).waitFor();

  await contact(mariner, "navigator").click({ button: "right" });
  await mariner.page.getByRole("menuitem", { name: "Remove and block" }).click();
  await button(mariner, "Remove and block");
  await contact(mariner, "navigator").waitFor({ state: "detached" });
  await contact(navigator, "mariner").locator(".presence:not(.online)").waitFor();
  for (const chat of [navigator, mariner]) {
    assert.deepEqual(chat.troubles, []);
    await chat.close();
  }
});
