// Contacts over the channel: asked for, decided on, put in order, seen coming and going.
import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import type { Browser } from "playwright-core";
import { call, channelPage, endsAnsweredOnce, invoke, user } from "./channel_page.ts";
import { Host } from "./host.ts";
import { type ChatPage, eventually, launch } from "./pages.ts";

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

type Json = Record<string, unknown>;
interface Verify {
  fromid: { nick: string; display: string };
  msgid: string;
  authinfo: string;
  type: number;
}

async function open(nick: string): Promise<ChatPage> {
  const chat = await channelPage(browser, host.url, nick);
  await invoke(chat, "workbench.im.event_register", "register_all", {});
  return chat;
}
async function ask(chat: ChatPage, name: string, request: unknown = {}): Promise<Json> {
  const { envelope, payload } = await call(chat, "im.contact", name, request);
  assert.equal(envelope["code"], 0, `${name}: ${payload}`);
  return envelope;
}
async function own(chat: ChatPage, name: string, request: Json = {}): Promise<Json> {
  const answer = await invoke(chat, "bridgehost.contacts.invoke", name, request);
  assert.equal(answer.envelope["code"], 0, `${name}: ${answer.payload}`);
  return answer.envelope;
}
/** Waits for a notification whose payload has the text. */
const hears = (chat: ChatPage, name: string, text: string) =>
  eventually(
    async () =>
      chat.connections
        .at(-1)!
        .received.find(({ event, payload }) => event === name && payload!.includes(text)),
    `${name} with ${text}`,
  );
async function request(chat: ChatPage): Promise<Verify> {
  const { result } = await ask(chat, "GetContactVerifyMsgs", { count: 20, msgid: "0" });
  return (result as Verify[]).at(-1)!;
}
const subset = ({ fromid, msgid }: Verify) => ({
  fromid: user(fromid.nick),
  gidinpeergroup: "0",
  authinfo: "so be it",
  msgid,
});

test("a request is made, decided on and seen from both sides", async () => {
  const navigator = await open("navigator");
  const mariner = await open("mariner");
  const asks = async () => {
    await own(navigator, "AskContact", { userid: user("mariner"), authinfo: "it is me" });
    await eventually(async () => (await request(mariner))?.type === 1, "a request");
    return request(mariner);
  };
  const first = await asks();
  assert.equal(first.fromid.nick, "navigator");
  assert.equal(first.authinfo, "it is me");
  await hears(mariner, "onContactVerifyMsg", "it is me");

  // Put aside, it can still be decided on; refused, it can be asked anew.
  await ask(mariner, "IgnoreAddContact", subset(first));
  await ask(mariner, "ReportAddContact", subset(first));
  await ask(mariner, "RefuseAddContact", subset(first));
  await hears(navigator, "onContactVerifyMsg", "so be it");
  await ask(mariner, "AgreeAddContact", subset(await asks()));
  await hears(navigator, "onContactChanged", '"nick":"mariner"');
  await hears(navigator, "onContactStatus", '"nick":"mariner","status":1');
  const late = await call(mariner, "im.contact", "AgreeAddContact", subset(first));
  assert.deepEqual([late.envelope["code"], late.envelope["subcode"]], [-11, 105]);

  await own(navigator, "RemoveContact", { userid: user("mariner") });
  await ask(mariner, "AgreeAndAddContact", subset(await asks()));
  const listed = await own(mariner, "GetContactList");
  assert.match(JSON.stringify(listed["contacts"]), /"nick":"navigator"/);

  // Whoever is on the black list neither writes nor asks, and sees nobody come.
  await own(navigator, "RemoveContact", { userid: user("mariner") });
  await ask(mariner, "AddToBlack", subset(await asks()));
  const asked = await invoke(navigator, "bridgehost.contacts.invoke", "AskContact", {
    userid: user("mariner"),
  });
  assert.deepEqual([asked.envelope["code"], asked.envelope["subcode"]], [-11, 101]);
  const { contacts: black } = await own(mariner, "GetBlackList");
  assert.equal((black as Verify["fromid"][])[0]!.nick, "navigator");
  await own(mariner, "SetBlack", { userid: user("navigator"), on: 0 });

  await ask(mariner, "DeleteContactVerifyMsgs", [subset(first)]);
  for (const chat of [navigator, mariner]) {
    endsAnsweredOnce(chat);
    await chat.close();
  }
});

test("the list has groups, marks and names, and contacts come and go", async () => {
  const harbor = await open("harbor");
  const { groups, contacts } = await own(harbor, "GetContactList");
  const crew = (groups as { groupid: string; name: string }[])[0]!;
  assert.equal(crew.name, "Crew");
  assert.equal((contacts as unknown[]).length, 3);
  const deck = await own(harbor, "SetGroup", { parentid: crew.groupid, name: "Deck" });
  await hears(harbor, "onContactGroupsChanged", "");
  const groupid = deck["groupid"];
  await own(harbor, "MoveContact", { userid: user("lighthouse"), groupid });
  const info = await ask(harbor, "GetGroupInfo", { groupid: crew.groupid });
  assert.deepEqual(info["uids"], [user("mariner")]);
  assert.deepEqual(info["subgroups"], [{ groupid, parentid: crew.groupid, name: "Deck" }]);

  await own(harbor, "SetAsterisk", { userid: user("lighthouse"), on: 1 });
  const { result: marked } = await ask(harbor, "GetAsteriskUserList");
  assert.equal((marked as { nick: string }[])[0]!.nick, "lighthouse");

  const infos = async () => {
    const asked = [{ userid: user("lighthouse") }, { userid: user("nobody") }];
    const { result } = await ask(harbor, "GetContactBaseInfo", asked);
    return result as { display: string; status: number }[];
  };
  assert.deepEqual(
    (await infos()).map(({ display, status }) => [display, status]),
    [["Lighthouse Keeper", 0]],
  );
  const lighthouse = await open("lighthouse");
  await hears(harbor, "onContactStatus", '"nick":"lighthouse","status":1');
  await own(lighthouse, "SetProfile", { display: "Keeper <b>", portrait: "" });
  await hears(harbor, "onContactChanged", "Keeper <b>");
  assert.deepEqual(
    (await infos()).map(({ display, status }) => [display, status]),
    [["Keeper <b>", 1]],
  );
  const { contacts: found } = await own(harbor, "SearchUsers", { key: "KEEPER" });
  assert.equal((found as { nick: string }[])[0]!.nick, "lighthouse");
  const names = await ask(harbor, "GetContactDisplayName", { userids: [user("lighthouse")] });
  assert.deepEqual(names["result"], [{ ...user("lighthouse"), display: "Keeper <b>" }]);
  const nicks = await ask(harbor, "GetUserDisplayNick", ["cnmirololighthouse", "cnbazaroghost"]);
  assert.deepEqual(nicks["result"], [
    { uid: "cnmirololighthouse", snick: "Keeper <b>", is_valid: 1 },
    { uid: "cnbazaroghost", snick: "", is_valid: 0 },
  ]);
  await call(lighthouse, "im.login", "DoLogout", {});
  await hears(harbor, "onContactStatus", '"nick":"lighthouse","status":0');
  for (const chat of [harbor, lighthouse]) {
    endsAnsweredOnce(chat);
    await chat.close();
  }
});
