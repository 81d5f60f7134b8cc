import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import type { MsgsNotify, SendMsgRequest, SendMsgStatusNotify } from "@imsdkbridge/client";
import type { Browser } from "playwright-core";
import { Host } from "./host.ts";
import { ChatPage, eventually, launch } from "./pages.ts";

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

/** The received message with this body, once it is there. */
function receivedMessage(chat: ChatPage, body: string) {
  return eventually(
    () =>
      chat
        .notified<MsgsNotify>("onReceiveNewMsg")
        .flatMap(({ msgs }) => msgs)
        .find(({ msgbody }) => msgbody === body),
    `message ${body.slice(0, 40)}`,
  );
}

test("any text arrives unchanged in the other window and is shown as text", async () => {
  const harbor = await ChatPage.signedIn(browser, host.url, "harbor");
  const lighthouse = await ChatPage.signedIn(browser, host.url, "lighthouse");
  await harbor.openConversation("lighthouse");
  await lighthouse.openConversation("harbor");
  const texts = [
    "one\ntwo\n\n  four, indented\t\u00a0",
    "🚢 𝒜 👩‍👩‍👧‍👦 𠀀 é é",
    "مرحبا بالعالم 123 שלום \u202eabc\u202c",
    "<img src=x onerror=alert(1)><script>alert(2)</script>&lt;b&gt; \" ' ` \\ \u2028 </textarea>",
    `${"long 長い 🚢 ".repeat(6000)}`.slice(0, 100 * 1024) + "end",
  ];
  for (const text of texts) {
    await harbor.send("lighthouse", text);
    const { msgid } = await receivedMessage(lighthouse, text);
    const sent = harbor.requests<SendMsgRequest>("SendNormalChatMsg").at(-1)!;
    assert.equal(sent.msgbody![0]!.value, text);
    for (const chat of [harbor, lighthouse]) {
      const bubble = chat.message(msgid);
      await bubble.waitFor();
      if (text.length > 5000) await bubble.getByRole("button", { name: /Show all/ }).click();
      assert.equal(await bubble.locator(".text").textContent(), text);
      assert.equal(await bubble.locator(".body :not(.text):not(button)").count(), 0);
    }
    await harbor
      .message(msgid)
      .getByLabel(/Sent|Read/)
      .waitFor();
  }
  const right = lighthouse.page.locator(".body", { hasText: "مرحبا" }).last();
  assert.equal(await right.evaluate((body) => getComputedStyle(body).direction), "rtl");
  const wide = await lighthouse.page.evaluate(
    () => document.documentElement.scrollWidth > innerWidth,
  );
  assert.equal(wide, false, "a long text must not widen the page");

  await lighthouse.send("harbor", "answer");
  await receivedMessage(harbor, "answer");
  await harbor.page.locator(".message.theirs", { hasText: /^answer/ }).waitFor();
  assert.deepEqual([...harbor.troubles, ...lighthouse.troubles], []);
  await harbor.close();
  await lighthouse.close();
});

test("a text that is too large is refused with the reason and stays in the composer", async () => {
  const harbor = await ChatPage.signedIn(browser, host.url, "harbor");
  await harbor.openConversation("lighthouse");
  const text = "0123456789".repeat(120_000);
  await harbor.send("lighthouse", text);
  await harbor.page.getByRole("alert").getByText("too large").waitFor();
  assert.equal(await harbor.composer("lighthouse").inputValue(), text);
  await harbor.page.reload();
  await harbor.composer("lighthouse").waitFor();
  assert.equal(await harbor.composer("lighthouse").inputValue(), text, "drafts survive a reload");
  await harbor.close();
});

test("unread counts rise in a hidden window and fall when it is shown", async () => {
  const harbor = await ChatPage.signedIn(browser, host.url, "harbor");
  const lighthouse = await ChatPage.signedIn(browser, host.url, "lighthouse");
  await harbor.openConversation("lighthouse");
  await lighthouse.openConversation("harbor");
  await lighthouse.badge("harbor").waitFor({ state: "detached" });

  await lighthouse.setVisible(false);
  for (let count = 1; count <= 3; count++) {
    await harbor.send("lighthouse", `hidden ${count}`);
    await lighthouse.badge("harbor").getByText(String(count), { exact: true }).waitFor();
  }
  await eventually(async () => (await lighthouse.page.title()).startsWith("("), "unread in title");
  await lighthouse.setVisible(true);
  await lighthouse.badge("harbor").waitFor({ state: "detached" });

  // Visible, but with another conversation in front.
  await lighthouse.openConversation("mariner");
  await harbor.send("lighthouse", "beside");
  await lighthouse.badge("harbor").getByText("1", { exact: true }).waitFor();
  await lighthouse.page.reload();
  await lighthouse.badge("harbor").getByText("1", { exact: true }).waitFor();
  await lighthouse.row("harbor").click();
  await lighthouse.badge("harbor").waitFor({ state: "detached" });
  await lighthouse.page.reload();
  await lighthouse.row("harbor").waitFor();
  assert.equal(await lighthouse.badge("harbor").count(), 0, "read stays read");
  await harbor.close();
  await lighthouse.close();
});

test("after SIGKILL and a restart the pages come back with everything reported sent", async () => {
  const harbor = await ChatPage.signedIn(browser, host.url, "harbor");
  const lighthouse = await ChatPage.signedIn(browser, host.url, "lighthouse");
  await harbor.openConversation("lighthouse");
  await lighthouse.openConversation("harbor");
  const reported = () =>
    harbor
      .notified<SendMsgStatusNotify>("onSendMsgStatus")
      .filter(({ code }) => code === 0)
      .map(({ msgid }) => msgid);

  const texts = Array.from({ length: 60 }, (_, index) => `storm ${index} 🌊`);
  const sending = (async () => {
    for (const text of texts) await harbor.send("lighthouse", text);
  })();
  await eventually(() => reported().length >= 20, "twenty reports");
  await host.end("SIGKILL");
  await harbor.page.getByText("Reconnecting").waitFor();
  assert.ok(reported().length < texts.length, "the host was to die in the middle");
  await sending;
  await harbor.send("lighthouse", "written while the host was down");
  const sent = reported();
  await host.start();
  for (const chat of [harbor, lighthouse]) {
    await chat.page.getByText("Reconnecting").waitFor({ state: "detached" });
  }
  await harbor.page.locator(".message", { hasText: "written while" }).waitFor();
  await lighthouse.page.locator(".message", { hasText: "written while" }).waitFor();

  const kept = await harbor.allMessages();
  const identifiers = new Set(kept.map(({ msgid }) => msgid));
  for (const msgid of sent) assert.ok(identifiers.has(msgid), `lost ${msgid}`);
  const shown = kept.filter(({ mine }) => mine).map(({ text }) => text);
  const draft = (await harbor.composer("lighthouse").inputValue()).split("\n");
  for (const text of texts) assert.ok([...shown, ...draft].includes(text), `${text} is gone`);
  const arrived = (await lighthouse.allMessages()).map(({ text }) => text);
  const stormy = (list: string[]) => list.filter((text) => text.startsWith("storm"));
  assert.deepEqual(stormy(arrived), stormy(shown), "both sides hold the same messages in order");
  await harbor.close();
  await lighthouse.close();
});

test("history comes in page by page while the person scrolls up", async () => {
  const mariner = await ChatPage.signedIn(browser, host.url, "mariner");
  await mariner.sendEntries("mariner", "navigator", 130);
  await mariner.openConversation("navigator");
  await mariner.page.locator(".message", { hasText: "entry 129" }).waitFor();
  assert.ok((await mariner.page.locator(".row").count()) < 60, "only rows in sight exist");
  const texts = (await mariner.allMessages()).map(({ text }) => text);
  const entries = texts.filter((text) => text.startsWith("entry "));
  assert.deepEqual(
    entries,
    Array.from({ length: 130 }, (_, index) => `entry ${index}`),
  );
  await mariner.close();
});

test("the chat can be used with the keyboard alone", async () => {
  const { page, ...chat } = await ChatPage.open(browser, host.url);
  const { keyboard } = page;
  await page.getByLabel("Account").waitFor();
  await keyboard.type("lighthouse");
  await keyboard.press("Tab");
  await keyboard.type("wrong");
  await keyboard.press("Enter");
  await page
    .getByRole("alert")
    .getByText(/password/)
    .waitFor();
  await keyboard.type("demo");
  await keyboard.press("Enter");
  const options = page.getByRole("option");
  // The rows are in their places once each has its newest message.
  await eventually(async () => {
    const rows = await options.count();
    return rows > 1 && (await page.locator(".conversation-time").count()) === rows;
  }, "the conversations in order");
  while ((await page.locator(".conversation:focus").count()) === 0) await keyboard.press("Tab");
  await keyboard.press("ArrowDown");
  const second = await page.locator(".conversation:focus").getAttribute("data-nick");
  assert.equal(second, await options.nth(1).getAttribute("data-nick"));
  await keyboard.press("Enter");
  await page.getByLabel(`Message to ${second}`).and(page.locator(":focus")).waitFor();
  await keyboard.type("first");
  await keyboard.press("Shift+Enter");
  await keyboard.type("second");
  await keyboard.press("Enter");
  await page.locator(".message.mine .text").getByText("first\nsecond").waitFor();
  assert.deepEqual(chat.troubles, []);
  await page.context().close();
});
