import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import type { Browser } from "playwright-core";
import { Host } from "./host.ts";
import { call, channelPage, endsAnsweredOnce, user } from "./channel_page.ts";
import { Conversation, type Good, text } from "./conversation.ts";
import { ChatPage, launch } from "./pages.ts";

const host = new Host();
let browser: Browser;

before(async () => {
  host.put("translation.json", '{"program":"tr","args":["a-z","A-Z"]}');
  host.put("dynamic/order/u-1.json", '{"state":"sent"}');
  await host.start();
  browser = await launch();
});
after(async () => {
  await browser?.close();
  await host.remove();
});

const cid = user("lighthouse");
// The good requests for what single chats alone have.
const single: Good[] = [
  ["SendBroadcastMsg", () => ({ cids: [cid, user("mariner")], msgbody: text })],
  ["SendAutoReplyMsg", () => ({ cid, msgbody: text, autosend: 1 })],
  ["GetFlagsMyMsgReaded", ({ msgid }) => ({ cid, msgids: [msgid] })],
  ["SetFlagsPeerMsgReaded", () => ({ cid })],
  ["ShieldAutoReply", () => ({ cid, setignore: 0 })],
  ["AddAudio2textSettingRemind", () => ({ cid })],
  ["GetTranslateSetting", () => ({})],
  ["GetTranslateMsg", ({ msgid }) => ({ msgid, msgcontent: "hello" })],
];

test("every method of single chat serves a good request", async () => {
  const chat = await channelPage(browser, host.url, "harbor");
  const conversation = new Conversation(chat, "im.singlemsg", { cid }, cid);
  for (const [method, request] of [...single, ...conversation.good()]) {
    const good = await conversation.ask(method, request(await conversation.send()));
    assert.equal(good["code"], 0, method);
  }
  const translated = await conversation.ask("GetTranslateMsg", { msgcontent: "hello" });
  assert.equal(translated["msgcontent"], "HELLO");
  const emotion = await conversation.ask("ConvertMsgText2Emotion", { value: "/:smile" });
  assert.match(String(emotion["value"]), /^pic:imemotion\|ID\?filepath=.*smile/);
  const edited = await conversation.editPictures();
  assert.deepEqual(edited, ["success", "EditImage failed!", "EditImage failed!"]);

  // Nobody has this name, so the message fails, each time.
  const nobody = user("nobody");
  const failing = new Conversation(chat, "im.singlemsg", { cid: nobody }, nobody);
  await failing.ask("SendNormalChatMsg", { cid: nobody, msgbody: text });
  for (const method of ["ReSendChatMsg", "FastReSendChatMsg"]) {
    const { msgid } = await failing.newestWith(({ msgstatus }) => msgstatus === 2);
    const resent = await failing.ask(method, { cid: nobody, msgid });
    assert.equal(resent["result"], "success", method);
    const unknown = await conversation.ask(method, { cid, msgid: "1" });
    assert.equal(unknown["result"], "failed", method);
  }
  endsAnsweredOnce(chat);
  await chat.close();
});

test("virtual conversations serve good requests", async () => {
  const chat = await channelPage(browser, host.url, "harbor");
  const all = await call(chat, "im.virtualmsg", "GetUnreadCountInBulk", {});
  const unreads = all.envelope["unreads"] as { cid: object; count: number }[];
  assert.ok(unreads.length > 0, "the demo set has virtual conversations");
  const virtual = unreads[0]!.cid;
  const methods = [
    "GetNewMsg",
    "PeekNewMsg",
    "GetLocalHisMsg",
    "GetUnreadCount",
    "SetMsgRead",
    "GetReadedBoundary",
    "DeleteLocalMsg",
  ];
  for (const method of methods) {
    const request =
      method === "DeleteLocalMsg" ? { cid: virtual, msgids: ["1"] } : { cid: virtual };
    const good = await call(chat, "im.virtualmsg", method, request);
    assert.equal(good.envelope["code"], 0, `${method}: ${good.payload}`);
  }
  endsAnsweredOnce(chat);
  await chat.close();
});

test("the owner of a tribe renames it, and nobody else", async () => {
  const chat = await channelPage(browser, host.url, "harbor");
  const classes = await call(chat, "im.tribemgr", "GetAllClass", {});
  assert.ok((classes.envelope["classlist"] as object[]).length > 1);
  const request = { tribeid: "10001", str: "Quay watch" };
  const renamed = await call(chat, "im.tribemgr", "SetTribeName", request);
  assert.equal(renamed.envelope["code"], 0, renamed.payload);
  const mariner = await channelPage(browser, host.url, "mariner");
  const refused = await call(mariner, "im.tribemgr", "SetTribeName", request);
  assert.equal(refused.envelope["code"], -11, refused.payload);
  for (const page of [chat, mariner]) {
    endsAnsweredOnce(page);
    await page.close();
  }
});

test("a page logs in, renews its link and logs out, and hears of it", async () => {
  const chat = await ChatPage.open(browser, host.url);
  const heard = await chat.page.evaluate(async () => {
    const { connect } = await import(`${location.origin}/client/index.js`);
    const client = connect();
    const heard: string[] = [];
    const hears = (event: string) =>
      new Promise<void>((resolve) => {
        client.on(event, (_: object, path: string) => {
          heard.push(`${path} ${event}`);
          resolve();
        });
      });
    const events = ["onIMLoginFailed", "onIMLoginOK", "onNetReConnectOK", "onIMLogouted"];
    const all = Promise.all(events.map(hears));
    const userid = { appkey: "cnbazaro", nick: "mariner" };
    const wrong = client.login.DoLoginByPassWord({ userid, password: "wrong" });
    await wrong.catch(() => {});
    const { token } = await client.login.DoLoginByPassWord({ userid, password: "demo" });
    await client.login.GetCurrentLoginID({});
    await client.login.DoNetReConnect({});
    await client.login.DoLogout({});
    await all;
    await client.login.DoLoginByToken({ userid, token });
    client.close();
    return heard;
  });
  assert.deepEqual(
    new Set(heard),
    new Set([
      "im.login onIMLoginFailed",
      "im.login onIMLoginOK",
      "im.login onNetReConnectOK",
      "im.login onIMLogouted",
    ]),
  );
  await chat.close();
});
