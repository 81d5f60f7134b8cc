import assert from "node:assert/strict";
import { readFile } from "node:fs/promises";
import { beforeEach, test } from "node:test";
import { ChatPage, eventually } from "./pages.ts";
import { bubble, TwoWindows } from "./two_windows.ts";

const two = new TwoWindows((host) => {
  const program = { program: "tr", args: ["a-z", "A-Z"], enable: 0 };
  host.put("translation.json", JSON.stringify(program));
});
let harbor: ChatPage;
let lighthouse: ChatPage;
beforeEach(() => void ({ harbor, lighthouse } = two));

test("a message is marked read when the peer has seen it, not before", async () => {
  await lighthouse.setVisible(false);
  await harbor.send("lighthouse", "seen?");
  const mark = bubble(harbor, "seen?");
  await mark.getByLabel("Sent", { exact: true }).waitFor();
  await lighthouse.badge("harbor").waitFor();
  assert.equal(await mark.getByLabel("Read").count(), 0);
  await lighthouse.setVisible(true);
  await mark.getByLabel("Read").waitFor();
  await harbor.page.reload();
  await harbor.row("lighthouse").click();
  await bubble(harbor, "seen?").getByLabel("Read").waitFor();
});

test("a message is withdrawn by keyboard, on both sides", async () => {
  await harbor.send("lighthouse", "slip of the tongue");
  await bubble(harbor, "slip of the tongue")
    .getByLabel(/Sent|Read/)
    .waitFor();
  await bubble(lighthouse, "slip of the tongue").waitFor();
  await harbor.page.locator(".messages").focus();
  const { keyboard } = harbor.page;
  await keyboard.press("ArrowUp");
  await keyboard.press("Shift+F10");
  const chosen = harbor.page.locator("[role=menuitem]:focus");
  while ((await chosen.textContent()) !== "Withdraw") await keyboard.press("ArrowDown");
  await keyboard.press("Enter");
  await harbor.page.locator(".note").getByText("You withdrew a message").last().waitFor();
  await lighthouse.page.locator(".note").getByText("harbor withdrew a message").last().waitFor();
  assert.equal(await bubble(lighthouse, "slip of the tongue").count(), 0);
});

test("forwarded and broadcast messages reach everybody who was chosen", async () => {
  await lighthouse.send("harbor", "tide table");
  await bubble(harbor, "tide table").waitFor();
  await harbor.choose("tide table", "Forward…");
  const { page } = harbor;
  for (const nick of ["mariner", "navigator"]) {
    await page.getByLabel("Find or name somebody").fill(nick);
    await page.keyboard.press("Enter");
  }
  await page.getByRole("button", { name: "Forward to 2" }).click();
  await page.getByRole("button", { name: "Write to several people" }).click();
  for (const nick of ["lighthouse", "mariner"]) {
    await page.getByLabel("Find or name somebody").fill(nick);
    await page.keyboard.press("Enter");
  }
  await page.getByLabel("Text to everybody chosen").fill("all hands");
  await page.getByRole("button", { name: "Send to 2" }).click();
  await bubble(lighthouse, "all hands").waitFor();
  await harbor.openConversation("navigator");
  await bubble(harbor, "tide table").waitFor();
  await harbor.openConversation("mariner");
  await bubble(harbor, "tide table").waitFor();
  await bubble(harbor, "all hands").waitFor();
});

test("deleted messages are gone here for good and stay on the other side", async () => {
  for (const text of ["first to go", "second to go", "to stay"]) {
    await harbor.send("lighthouse", text);
    await bubble(lighthouse, text).waitFor();
  }
  const { page } = lighthouse;
  await lighthouse.choose("first to go", "Select");
  await bubble(lighthouse, "second to go").getByLabel("Select").check();
  await page.getByRole("toolbar").getByRole("button", { name: "Delete" }).click();
  await page.getByRole("dialog").getByRole("button", { name: "Delete" }).click();
  await bubble(lighthouse, "first to go").waitFor({ state: "detached" });
  await page.reload();
  await lighthouse.row("harbor").click();
  await bubble(lighthouse, "to stay").waitFor();
  const left = (await lighthouse.allMessages()).map(({ text }) => text);
  assert.ok(left.includes("to stay") && !left.some((text) => text.endsWith("to go")));
  await bubble(harbor, "second to go").waitFor();
});

test("search finds in the conversation and everywhere, and jumps to the message", async () => {
  await harbor.send("lighthouse", "the needle in the hay");
  await bubble(lighthouse, "the needle in the hay").waitFor();
  await harbor.sendEntries("harbor", "lighthouse", 120);
  await bubble(lighthouse, "entry 119").waitFor();
  const { page } = lighthouse;
  await page.reload();
  await lighthouse.row("harbor").click();
  await bubble(lighthouse, "entry 119").waitFor();
  await page.keyboard.press("Control+f");
  await page.keyboard.type("NEEDL");
  await page.getByText("1 of 1", { exact: true }).waitFor();
  const hit = lighthouse.page.locator(".message.marked", { hasText: "the needle in the hay" });
  await hit.waitFor();
  assert.equal(await hit.locator("mark").textContent(), "needl");
  await page.keyboard.press("Escape");
  await page.getByRole("button", { name: "To the newest message" }).click();
  await bubble(lighthouse, "entry 119").waitFor();

  await lighthouse.openConversation("mariner");
  await page.keyboard.press("Control+k");
  await page.keyboard.type("needle hay");
  await page.getByText("1 found").waitFor();
  await page.locator(".result").click();
  await hit.waitFor();
  assert.equal(await page.locator(".bar h2").textContent(), "harbor");
});

test("typing and shaking are seen in the other window", async () => {
  await harbor.composer("lighthouse").pressSequentially("half a sen");
  await lighthouse.page.locator(".bar").getByText("harbor is typing…").waitFor();
  await harbor.send("lighthouse", "half a sentence");
  await lighthouse.page.getByText("harbor is typing…").waitFor({ state: "detached" });
  await harbor.page.getByRole("button", { name: "Shake the window" }).click();
  await lighthouse.page.locator(".chat.shaking").waitFor();
  await lighthouse.page.locator(".note").getByText("harbor shook your window").last().waitFor();
  await harbor.page.locator(".note").getByText("You shook the window").last().waitFor();
  assert.equal(await harbor.page.locator(".chat.shaking").count(), 0);
  assert.ok(await harbor.page.getByRole("button", { name: "Shake the window" }).isDisabled());
});

test("a pasted picture is previewed, sent, shown and opened; emotions become pictures", async () => {
  await harbor.composer("lighthouse").evaluate(async (field) => {
    const canvas = new OffscreenCanvas(40, 30);
    canvas.getContext("2d")!.fillRect(0, 0, 20, 20);
    const clipboardData = new DataTransfer();
    const blob = await canvas.convertToBlob();
    clipboardData.items.add(new File([blob], "drawing.png", { type: "image/png" }));
    field.dispatchEvent(new ClipboardEvent("paste", { clipboardData, bubbles: true }));
  });
  await harbor.page.getByAltText("Preview of drawing.png").waitFor();
  await harbor.send("lighthouse", "look /:smile there");
  await harbor.page.locator(".attachment").waitFor({ state: "detached" });
  const picture = lighthouse.page.locator(".message.theirs .picture").last();
  const width = () => picture.evaluate((image) => (image as HTMLImageElement).naturalWidth);
  await picture.waitFor();
  await eventually(async () => (await width()) === 40, "the picture itself");
  await picture.click();
  const viewer = lighthouse.page.getByRole("dialog", { name: "Picture" });
  await viewer.getByAltText(/^Picture from harbor/).waitFor();
  await lighthouse.page.keyboard.press("Escape");
  await viewer.waitFor({ state: "detached" });
  await lighthouse.page.locator(".picture-button:focus").waitFor();
  const smile = lighthouse.page.getByAltText("/:smile").last();
  await smile.waitFor();
  await eventually(
    () => smile.evaluate((image) => (image as HTMLImageElement).naturalWidth > 0),
    "the emotion's drawing",
  );
});

test("texts with emotions arrive as they were typed, and what is no picture can be saved", async () => {
  const theirs = lighthouse.page.locator(".message.theirs .body");
  const typed = [
    "Thanks/:heart!!!",
    "(all good /:smile)",
    "/:smile/:grin",
    "pic:impicture|M?filepath=a.png&fileMD5=M file:b|filepath=c",
    "好的/:smile明天见面吧",
  ];
  for (const text of typed) await harbor.send("lighthouse", text);
  await theirs.getByText("明天见面吧").last().waitFor();
  const shown = await theirs.evaluateAll((bodies) =>
    bodies.slice(-5).map((body) => {
      for (const image of body.querySelectorAll("img")) image.replaceWith(image.alt);
      return body.textContent;
    }),
  );
  assert.deepEqual(shown, typed);

  await harbor.composer("lighthouse").evaluate((field) => {
    const clipboardData = new DataTransfer();
    clipboardData.items.add(new File(["no picture"], "broken.png", { type: "image/png" }));
    field.dispatchEvent(new ClipboardEvent("paste", { clipboardData, bubbles: true }));
  });
  await harbor.send("lighthouse", "see");
  const file = theirs.last().locator(".file");
  await file.getByText(/^[0-9a-f]{32}\.png$/).waitFor();
  const saved = lighthouse.page.waitForEvent("download");
  await file.click();
  assert.match((await saved).suggestedFilename(), /^[0-9a-f]{32}\.png$/);
});

test("files follow their text, however large they are, and are saved under their names", async () => {
  const { page } = harbor;
  const large = { name: "large.bin", mimeType: "application/octet-stream" };
  const small = { name: "tide table.txt", mimeType: "text/plain", buffer: Buffer.from("high") };
  const chooser = page.getByLabel("Files to send");
  await chooser.setInputFiles([{ ...large, buffer: Buffer.alloc(8_000_000, 1) }, small]);
  await harbor.send("lighthouse", "what you asked for");
  await lighthouse.page.locator(".file", { hasText: "tide table.txt" }).waitFor();
  const last = lighthouse.page.locator(".message .body");
  const texts = (await last.allTextContents()).slice(-3);
  assert.deepEqual(texts, ["what you asked for", "large.bin", "tide table.txt"]);
  const saved = lighthouse.page.waitForEvent("download");
  await lighthouse.page.locator(".file").last().click();
  assert.equal((await saved).suggestedFilename(), "tide table.txt");
  assert.equal(await readFile(await (await saved).path(), "utf8"), "high");
});

test("a translation stands under its message, once translation is switched on", async () => {
  await harbor.send("lighthouse", "how deep is it");
  await bubble(lighthouse, "how deep is it").waitFor();
  const { page } = lighthouse;
  await lighthouse.choose("how deep is it", "Translate");
  const line = page.locator(".message", { hasText: "how deep is it" }).locator(".translation");
  await line.getByText("Translation is off").waitFor();
  await page.getByRole("button", { name: "Settings" }).click();
  await page.getByRole("switch", { name: "Translate messages" }).click();
  await page.getByRole("switch", { name: "Translate messages", checked: true }).waitFor();
  await page.keyboard.press("Escape");
  await lighthouse.choose("how deep is it", "Translate");
  await line.getByText("HOW DEEP IS IT").waitFor();
});
