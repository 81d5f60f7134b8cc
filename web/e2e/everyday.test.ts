// What a person meets who uses the chat all day.
import assert from "node:assert/strict";
import { beforeEach, test } from "node:test";
import { ChatPage, eventually } from "./pages.ts";
import { bubble, TwoWindows } from "./two_windows.ts";

const two = new TwoWindows();
const { host } = two;
let harbor: ChatPage;
let lighthouse: ChatPage;
beforeEach(() => void ({ harbor, lighthouse } = two));
const gapToEnd = ({ page }: ChatPage) =>
  page
    .locator(".messages")
    .evaluate((list) => list.scrollHeight - list.scrollTop - list.clientHeight);
const scrollUp = ({ page }: ChatPage) =>
  page.locator(".messages").evaluate((list) => (list.scrollTop -= 600));

test("who was not reached is named, and a retry is offered", async () => {
  await harbor.send("lighthouse", "pass it on");
  await bubble(harbor, "pass it on")
    .getByLabel(/Sent|Read/)
    .waitFor();
  await harbor.choose("pass it on", "Forward…");
  const { page } = harbor;
  for (const nick of ["mariner", "nobody.there"]) {
    await page.getByLabel("Find or name somebody").fill(nick);
    await page.keyboard.press("Enter");
  }
  await page.getByRole("button", { name: "Forward to 2" }).click();
  const toast = page.locator(".toast.problem");
  await toast.getByText(/^Forwarded to mariner\. Not forwarded to nobody\.there: ./).waitFor();
  const told = harbor.notified("onSendMsgStatus").length;
  await toast.getByRole("button", { name: "Retry" }).click();
  await eventually(() => harbor.notified("onSendMsgStatus").length > told, "another attempt");
  await toast.getByText(/Not forwarded to nobody\.there/).waitFor();
  await toast.getByRole("button", { name: "Dismiss" }).click();
  await toast.waitFor({ state: "detached" });
});

test("two tabs of one account agree on what was read and deleted", async () => {
  const tab = await lighthouse.tab(host.url, "lighthouse");
  await lighthouse.openConversation("mariner");
  await tab.openConversation("mariner");
  await harbor.send("lighthouse", "read me once");
  for (const one of [lighthouse, tab]) await one.badge("harbor").waitFor();
  await tab.row("harbor").click();
  for (const one of [lighthouse, tab]) await one.badge("harbor").waitFor({ state: "detached" });
  await lighthouse.row("harbor").click();
  // A tab in the background draws nothing new.
  await tab.page.bringToFront();
  await bubble(tab, "read me once").waitFor();
  await lighthouse.page.bringToFront();
  await lighthouse.choose("read me once", "Delete…");
  await lighthouse.page.getByRole("dialog").getByRole("button", { name: "Delete" }).click();
  for (const one of [lighthouse, tab]) {
    await one.page.bringToFront();
    await bubble(one, "read me once").waitFor({ state: "detached" });
    assert.doesNotMatch((await one.row("harbor").textContent())!, /read me once/);
  }
  assert.deepEqual(tab.troubles, []);
});

test("an own message brings the list to its end: text, file and shake", async () => {
  await harbor.sendEntries("harbor", "lighthouse", 60);
  await bubble(harbor, "entry 59").waitFor();
  const { page } = harbor;
  const away = async () => {
    await scrollUp(harbor);
    await page.getByRole("button", { name: "To the newest message" }).waitFor();
  };
  await away();
  await harbor.send("lighthouse", "a text");
  await bubble(harbor, "a text").waitFor();
  await eventually(async () => (await gapToEnd(harbor)) < 2, "the end after a text");
  await away();
  const note = { name: "note.txt", mimeType: "text/plain", buffer: Buffer.from("x") };
  await page.getByLabel("Files to send").setInputFiles([note]);
  await page.getByRole("button", { name: "Send", exact: true }).click();
  await page.locator(".file", { hasText: "note.txt" }).waitFor();
  await eventually(async () => (await gapToEnd(harbor)) < 2, "the end after a file");
  await away();
  await page.getByRole("button", { name: "Shake the window" }).click();
  await page.locator(".note").getByText("You shook the window").waitFor();
  await eventually(async () => (await gapToEnd(harbor)) < 2, "the end after a shake");

  // The shake is a notice: it can be chosen, but not be sent on.
  await harbor.choose("a text", "Select");
  const bar = page.getByRole("toolbar");
  await page.locator(".note-message").last().getByLabel("Select").check();
  await bar.getByText("2 chosen").waitFor();
  await bar.getByRole("button", { name: "Forward 1" }).waitFor();
  await bubble(harbor, "a text").getByLabel("Select").uncheck();
  assert.ok(await bar.getByRole("button", { name: "Forward" }).isDisabled());
  await page.keyboard.press("Escape");
});

test("the browser asks before a reload loses chosen files", async () => {
  const { page } = harbor;
  const note = { name: "note.txt", mimeType: "text/plain", buffer: Buffer.from("x") };
  await page.getByLabel("Files to send").setInputFiles([note]);
  await page.getByTitle("Remove note.txt").waitFor();
  await harbor.composer("lighthouse").click();
  await page.evaluate(() => location.reload());
  await eventually(() => harbor.troubles.length > 0, "the question");
  assert.match(harbor.troubles.pop()!, /^dialog/);
  await page.getByTitle("Remove note.txt").click();
  await page.getByTitle("Remove note.txt").waitFor({ state: "detached" });
  await page.reload();
  await harbor.composer("lighthouse").waitFor();
});

test("a search opens its first hit by Enter; a hit in a folded text is unfolded and in sight", async () => {
  const filler = "a line of the log\n".repeat(120);
  await harbor.send("lighthouse", `${filler}the sextant is in the locker\n${filler}`);
  await lighthouse.page.locator(".message", { hasText: "a line of the log" }).last().waitFor();
  const { page } = lighthouse;
  const inSight = () =>
    page.locator(".message mark").evaluateAll((marks) => {
      const view = document.querySelector(".messages")!.getBoundingClientRect();
      const places = marks.map((mark) => mark.getBoundingClientRect());
      return places.some(({ top, bottom }) => top >= view.top && bottom <= view.bottom);
    });
  await page.keyboard.press("Control+f");
  await page.keyboard.type("sextant");
  await page.locator("mark").getByText("sextant").waitFor();
  await eventually(inSight, "the hit in sight");
  await page.keyboard.press("Escape");

  await harbor.sendEntries("harbor", "lighthouse", 60);
  await lighthouse.openConversation("mariner");
  await page.keyboard.press("Control+k");
  await page.keyboard.type("sextant");
  await page.keyboard.press("Enter");
  await page.getByRole("dialog").waitFor({ state: "detached" });
  await page.locator(".message mark").getByText("sextant").waitFor();
  await eventually(inSight, "the hit in sight, from everywhere");
  assert.equal(await page.locator(".bar h2").textContent(), "harbor");
});

test("previews and copies read like the message; automatic replies are marked", async () => {
  const { page } = lighthouse;
  await harbor.send("lighthouse", "fair winds /:smile captain");
  const text = page.locator(".message .body", { hasText: "fair winds" }).last();
  await text.getByAltText("/:smile").waitFor();
  await lighthouse.row("harbor").locator(".conversation-preview img.emotion").waitFor();
  const preview = lighthouse.row("harbor").locator(".conversation-preview");
  assert.equal(
    (await preview.textContent())!.replace(/\s+/g, " "),
    (await text.textContent())!.replace(/\s+/g, " "),
  );
  const copied = await text.evaluate((body) => {
    getSelection()!.selectAllChildren(body.closest(".message")!);
    const clipboardData = new DataTransfer();
    const copy = new ClipboardEvent("copy", { clipboardData, bubbles: true, cancelable: true });
    body.dispatchEvent(copy);
    getSelection()!.empty();
    return clipboardData.getData("text/plain");
  });
  assert.equal(copied.replace(/\s+/g, " "), "fair winds /:smile captain");

  await harbor.page.evaluate(async () => {
    const { connect } = await import(`${location.origin}/client/index.js`);
    const user = (nick: string) => ({ appkey: "cnbazaro", nick });
    const client = connect();
    await client.login.DoLoginByPassWord({ userid: user("harbor"), password: "demo" });
    const msgbody = [{ type: 0, value: "out at sea" }];
    await client.singlemsg.SendAutoReplyMsg({ cid: user("lighthouse"), autosend: 1, msgbody });
    client.close();
  });
  for (const chat of [harbor, lighthouse]) {
    await bubble(chat, "out at sea").getByText("Automatic reply").waitFor();
  }
  await lighthouse.row("harbor").getByText("Automatic reply: out at sea").waitFor();
});

test("after a wrong password the field is selected: what is typed takes its place", async () => {
  const { page } = await ChatPage.open(two.browser, host.url);
  await page.getByLabel("Account").fill("harbor");
  await page.getByLabel("Password").fill("wrong");
  await page.keyboard.press("Enter");
  await page.getByRole("alert").getByText("Sign-in failed").waitFor();
  await page.keyboard.type("demo");
  await page.keyboard.press("Enter");
  await page.getByRole("heading", { name: "harbor" }).waitFor();
  await page.context().close();
});

test("nothing is a pixel too tall or too wide, at any size", async () => {
  const page = await (await two.browser.newContext()).newPage();
  const overflow = () =>
    page.evaluate(() =>
      [document.documentElement, document.body, document.querySelector("#app")!]
        .map(({ scrollHeight, scrollWidth }) => [scrollHeight, scrollWidth].join())
        .filter((size) => size !== [innerHeight, innerWidth].join()),
    );
  const check = async () => {
    for (const size of [
      { width: 1280, height: 720 },
      { width: 801, height: 601 },
      { width: 380, height: 841 },
    ]) {
      await page.setViewportSize(size);
      assert.deepEqual(await overflow(), [], JSON.stringify(size));
    }
  };
  await page.goto(host.url);
  await page.getByLabel("Account").waitFor();
  await check();
  await page.getByRole("button", { name: "harbor" }).click();
  await page.getByRole("option").first().waitFor();
  await check();
  await page.getByRole("option").first().click();
  await page.locator(".message").last().waitFor();
  await check();
  await page.context().close();
});
