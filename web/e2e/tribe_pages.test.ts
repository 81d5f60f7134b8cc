// Tribes as people meet them in the demo: three windows of three accounts.
import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import type { Browser, Locator } from "playwright-core";
import { Host } from "./host.ts";
import { ChatPage, eventually, launch } from "./pages.ts";

const host = new Host();
let browser: Browser;
let harbor: ChatPage;
let lighthouse: ChatPage;
let mariner: ChatPage;

before(async () => {
  await host.start();
  browser = await launch();
  [harbor, lighthouse, mariner] = (await Promise.all(
    ["harbor", "lighthouse", "mariner"].map((nick) => atTribes(nick)),
  )) as [ChatPage, ChatPage, ChatPage];
});
after(async () => {
  assert.deepEqual(
    [harbor, lighthouse, mariner].flatMap(({ troubles }) => troubles),
    [],
  );
  await browser?.close();
  await host.remove();
});

/** A window of an account that lists its tribes. */
async function atTribes(nick: string): Promise<ChatPage> {
  const chat = await ChatPage.signedIn(browser, host.url, nick);
  await chat.page.getByRole("tab", { name: "Tribes" }).click();
  await chat.page.locator(".conversation[data-tribe]").first().waitFor();
  return chat;
}

const tribe = ({ page }: ChatPage, name: string) =>
  page.locator(".conversation[data-tribe]", { hasText: name });
const tab = ({ page }: ChatPage, name: string) =>
  page.getByRole("tablist", { name: "The tribe" }).getByRole("tab", { name }).click();
const member = ({ page }: ChatPage, nick: string): Locator =>
  page.locator(`.member[data-nick="${nick}"]`);
const button = ({ page }: ChatPage, name: string) =>
  page.getByRole("button", { name, exact: true }).click();
const counts = ({ page }: ChatPage) => page.locator(".pane .bar-line").textContent();

/** Chooses from the menu of a member. */
async function withMember(chat: ChatPage, nick: string, item: string): Promise<void> {
  await member(chat, nick).click();
  await chat.page.getByRole("menuitem", { name: item }).click();
}

/** Chooses from the menu of the tribe. */
async function withTribe(chat: ChatPage, item: string): Promise<void> {
  await button(chat, "Tribe menu");
  await chat.page.getByRole("menuitem", { name: item }).click();
}

/** Sets one of the choices in the settings. */
async function choose(chat: ChatPage, label: string, value: string): Promise<void> {
  const field = chat.page.getByLabel(label);
  await field.selectOption({ label: value });
  await eventually(
    async () => (await field.locator("option:checked").textContent()) === value,
    `${label}: ${value}`,
  );
}

/** Asks to be let in, or joins at once. */
async function join(chat: ChatPage, tribeid: string, words = ""): Promise<void> {
  await button(chat, "Join a tribe");
  await chat.page.getByLabel("Number of the tribe").fill(tribeid);
  if (words) await chat.page.getByLabel("Words for its managers").fill(words);
  await button(chat, "Join");
}

test("a tribe is made, people are invited and come in", async () => {
  await button(harbor, "New tribe");
  await harbor.page.getByLabel("Name of the tribe").fill("Night watch");
  await button(harbor, "Make it");
  await harbor.page.getByRole("heading", { name: "Night watch" }).waitFor();
  await member(harbor, "harbor").getByText("Owner").waitFor();

  await withTribe(harbor, "Invite people…");
  await harbor.page.getByLabel("lighthouse").check();
  await harbor.page.getByLabel("mariner").check();
  await harbor.page.getByLabel("Words for them").fill("the second half of the night");
  await button(harbor, "Invite");

  await lighthouse.page.getByRole("tab", { name: "Tribes 1 waiting" }).waitFor();
  await button(lighthouse, "Requests 1");
  const dialog = lighthouse.page.getByRole("dialog");
  await dialog.getByText("the second half of the night").waitFor();
  await dialog.getByRole("button", { name: "Accept" }).click();
  await dialog
    .getByText("Nothing waits for you")
    .or(dialog.getByText("accepted"))
    .first()
    .waitFor();
  await button(lighthouse, "Close");
  await tribe(lighthouse, "Night watch").click();
  await eventually(async () => (await counts(lighthouse)) === "2 members, 2 online", "counts");
  await member(harbor, "lighthouse").waitFor();
});

test("approval: two administrators, of whom one is faster", async () => {
  const { page } = harbor;
  await withMember(harbor, "lighthouse", "Make an administrator");
  await member(lighthouse, "lighthouse").getByText("Administrator").waitFor();
  await tab(harbor, "Settings");
  await choose(harbor, "Who may join", "Whoever a manager allows");

  const tribeid = (await tribe(harbor, "Night watch").getAttribute("data-tribe"))!;
  await button(mariner, "Requests 1");
  await mariner.page.getByRole("dialog").getByRole("button", { name: "Decline" }).click();
  await button(mariner, "Close");
  await join(mariner, tribeid, "I can cook");
  await mariner.page.getByText("Waiting for approval").waitFor();
  await button(mariner, "All right");

  for (const chat of [harbor, lighthouse]) {
    await chat.page.getByRole("button", { name: /^Requests 1/ }).click();
    await chat.page.getByRole("dialog").getByText("I can cook").waitFor();
  }
  const letIn = ({ page }: ChatPage) =>
    page.getByRole("dialog").getByRole("button", { name: "Let in" });
  await letIn(lighthouse).click();
  await letIn(harbor).waitFor({ state: "detached" });
  await page.getByRole("dialog").getByText("lighthouse let mariner join").waitFor();
  await button(harbor, "Close");
  await button(lighthouse, "Close");
  await tribe(mariner, "Night watch").click();
  await tab(harbor, "Members");
  await member(harbor, "mariner").waitFor();
});

test("changes show in the other windows at once", async () => {
  await tab(harbor, "About");
  await button(harbor, "Change the bulletin");
  await harbor.page.getByLabel("Bulletin").fill("<b>Fog</b> until noon");
  await button(harbor, "Save");
  await tab(mariner, "About");
  await mariner.page.getByText("<b>Fog</b> until noon").waitFor();
  await button(harbor, "Change the name");
  await harbor.page.getByLabel("Name", { exact: true }).fill("Dawn watch");
  await harbor.page.keyboard.press("Enter");
  for (const chat of [harbor, lighthouse, mariner]) await tribe(chat, "Dawn watch").waitFor();
  // A member may read, and is not offered what only managers may do.
  assert.equal(await mariner.page.getByRole("button", { name: /^Change the/ }).count(), 0);

  await tab(mariner, "Members");
  await withMember(mariner, "mariner", "Name in this tribe…");
  await mariner.page.getByLabel("Name in this tribe").fill("Cook");
  await button(mariner, "Save");
  await member(lighthouse, "mariner").getByText("Cook").waitFor();
  await lighthouse.page.getByLabel("Find a member").fill("coo");
  await eventually(async () => (await lighthouse.page.locator(".member").count()) === 1, "one");
  await lighthouse.page.keyboard.press("Escape");

  // A reload keeps the place.
  await lighthouse.page.reload();
  await lighthouse.page.getByRole("heading", { name: "Dawn watch" }).waitFor();
  await tribe(lighthouse, "Dawn watch").waitFor();

  // Whoever closes the window is offline.
  await lighthouse.page.getByRole("button", { name: "Sign out" }).click();
  await tab(harbor, "Members");
  await member(harbor, "lighthouse").getByText("offline").waitFor();
  await eventually(async () => (await counts(harbor)) === "3 members, 2 online", "counts");
  await lighthouse.signIn("lighthouse");
  await member(harbor, "lighthouse").getByText("online", { exact: true }).waitFor();
  await lighthouse.page.getByRole("tab", { name: "Tribes" }).click();
  await tribe(lighthouse, "Dawn watch").click();
});

test("removed, kept out, let in again; closed and opened", async () => {
  await member(mariner, "harbor").waitFor();
  await withMember(lighthouse, "mariner", "Remove and block…");
  await button(lighthouse, "Remove and block");
  await mariner.page.getByText("You are not a member of this tribe any more").waitFor();
  await mariner.page.getByText("lighthouse removed you from Dawn watch.").waitFor();
  await tribe(mariner, "Dawn watch").waitFor({ state: "detached" });

  const tribeid = (await tribe(harbor, "Dawn watch").getAttribute("data-tribe"))!;
  await join(mariner, tribeid);
  await mariner.page.getByText(/You did not get in: .*black list/).waitFor();
  await button(mariner, "Cancel");
  await tab(lighthouse, "Black list");
  await lighthouse.page
    .getByRole("list", { name: "Black list" })
    .getByText("Cook")
    .or(lighthouse.page.getByRole("list", { name: "Black list" }).getByText("mariner"))
    .first()
    .waitFor();
  await button(lighthouse, "Take off");
  await lighthouse.page.getByText("Nobody is on the black list").waitFor();

  await tab(harbor, "Settings");
  await choose(harbor, "Who may join", "Whoever knows the password");
  await button(harbor, "Change the password to join by");
  await harbor.page.getByLabel("Password to join by").fill("kettle");
  await button(harbor, "Save");
  await harbor.page.getByText("kettle").waitFor();
  await join(mariner, tribeid);
  await mariner.page.getByText("This tribe asks for a password.").waitFor();
  await mariner.page.getByLabel("Password of the tribe").fill("kettle");
  await button(mariner, "Join");
  await mariner.page.getByRole("heading", { name: "Dawn watch" }).waitFor();

  await withTribe(harbor, "Close the tribe…");
  await button(harbor, "Close the tribe");
  for (const chat of [harbor, lighthouse, mariner]) {
    await chat.page.getByText("This tribe is closed").waitFor();
  }
  await button(harbor, "Open it again");
  await mariner.page.getByText("This tribe is closed").waitFor({ state: "detached" });
  await withTribe(mariner, "Leave the tribe…");
  await button(mariner, "Leave");
  await tribe(mariner, "Dawn watch").waitFor({ state: "detached" });
  await mariner.page.getByText("No conversation open").waitFor();
});
