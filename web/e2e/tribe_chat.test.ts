// A tribe's conversation as three people use it.
import assert from "node:assert/strict";
import { after, afterEach, before, test } from "node:test";
import type { Browser, Locator } from "playwright-core";
import { Host } from "./host.ts";
import { ChatPage, eventually, launch } from "./pages.ts";

const host = new Host();
const tribe = "Regatta";
let browser: Browser;
let windows: ChatPage[] = [];

before(async () => {
  await host.start();
  browser = await launch();
});
after(async () => {
  await browser?.close();
  await host.remove();
});
afterEach(async () => {
  assert.deepEqual(
    windows.flatMap(({ troubles }) => troubles),
    [],
  );
  for (const chat of windows) await chat.close();
});

const bubble = (chat: ChatPage, text: string | RegExp): Locator =>
  chat.page.locator(".message", { hasText: text }).last();

test("three members mention, read, jump, withdraw, send a picture and search", async () => {
  windows = await Promise.all(
    ["harbor", "lighthouse", "mariner"].map((nick) => ChatPage.signedIn(browser, host.url, nick)),
  );
  const [harbor, lighthouse, mariner] = windows as [ChatPage, ChatPage, ChatPage];
  for (const chat of [harbor, mariner]) await chat.row(tribe).click();

  // The picker follows what is typed; Enter takes the member and does not send.
  const field = harbor.composer(tribe);
  await field.pressSequentially("look out @light");
  await harbor.page.locator(".mention-choice", { hasText: "lighthouse" }).waitFor();
  await field.press("Enter");
  await eventually(
    async () => (await field.inputValue()) === "look out @lighthouse ",
    "the name in the field",
  );
  await field.pressSequentially("please");
  await harbor.page.reload();
  await field.press("Enter");
  const mention = bubble(harbor, "look out @lighthouse please");
  await mention.getByText("Read by 0 of 1").waitFor();
  await bubble(mariner, "look out").locator(".mention:not(.me)").waitFor();

  // Whoever was meant finds it again behind newer messages, and reads it by jumping there.
  for (let line = 1; line <= 30; line++) await mariner.send(tribe, `buoy ${line} is out`);
  await lighthouse.badge(tribe).waitFor();
  await lighthouse.row(tribe).getByText("mariner: buoy 30 is out").waitFor();
  await lighthouse.row(tribe).click();
  await bubble(lighthouse, "buoy 30").waitFor();
  const chip = lighthouse.page.getByRole("button", { name: "You were mentioned" });
  await chip.click();
  const found = bubble(lighthouse, "look out");
  await found.locator(".mention.me").waitFor();
  await found.locator(".sender", { hasText: "harbor" }).waitFor();
  await chip.waitFor({ state: "detached" });
  const readBy = harbor.page.getByRole("button", { name: "Read by 1 of 1" });
  await eventually(async () => {
    await harbor.page.locator(".messages").evaluate((rows) => (rows.scrollTop -= 300));
    return (await readBy.count()) > 0;
  }, "the mention in harbor's window");
  await readBy.click();
  const list = harbor.page.getByRole("dialog", { name: "Who has read it" });
  await list.getByLabel("Has read it").getByText("lighthouse").waitFor();
  await harbor.page.keyboard.press("Escape");

  await mariner.choose("buoy 30", "Withdraw");
  for (const chat of [harbor, lighthouse]) {
    await chat.row(tribe).getByText("mariner withdrew a message").waitFor();
  }
  await mariner.composer(tribe).evaluate(async (area) => {
    const blob = await new OffscreenCanvas(40, 30).getContext("2d")!.canvas.convertToBlob();
    const clipboardData = new DataTransfer();
    clipboardData.items.add(new File([blob], "chart.png", { type: "image/png" }));
    area.dispatchEvent(new ClipboardEvent("paste", { clipboardData, bubbles: true }));
  });
  await mariner.send(tribe, "the chart");
  await harbor.page.getByRole("button", { name: "To the newest message" }).click();
  const picture = harbor.page.locator(".message.theirs .picture").last();
  await eventually(
    () => picture.evaluate((image) => (image as HTMLImageElement).naturalWidth === 40),
    "the picture",
  );

  await lighthouse.page.reload();
  await lighthouse.composer(tribe).waitFor();
  await lighthouse.page.keyboard.press("Control+f");
  await lighthouse.page
    .getByRole("textbox", { name: "Search in this conversation" })
    .fill("buoy 7");
  await lighthouse.page.locator(".search-count", { hasText: "1 of 1" }).waitFor();
  await bubble(lighthouse, "buoy 7 is out").locator("mark").first().waitFor();

  // By sender, and what calls for the account.
  await lighthouse.page.getByRole("textbox", { name: "Search in this conversation" }).fill("");
  await lighthouse.page.getByLabel("From", { exact: true }).fill("mariner");
  const count = lighthouse.page.locator(".search-count");
  await eventually(
    async () => /of (3\d)$/.test((await count.textContent())!),
    "mariner's messages",
  );
  await lighthouse.page.getByLabel("From", { exact: true }).fill("");
  await lighthouse.page.getByRole("button", { name: "Mentions me" }).click();
  await lighthouse.page.locator(".search-count", { hasText: "1 of 1" }).waitFor();
  await bubble(lighthouse, "look out @lighthouse please").waitFor();
});
