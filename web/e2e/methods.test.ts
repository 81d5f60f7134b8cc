import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import type { Browser } from "playwright-core";
import { Host } from "./host.ts";
import { call, channelPage, endsAnsweredOnce, user } from "./channel_page.ts";
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
const text = [{ type: 0, value: "from every method" }];
// A PNG of two by two pixels.
const redAndGreen =
  "iVBORw0KGgoAAAANSUhEUgAAAAIAAAACCAIAAAD91JpzAAAADklEQVR4nGP4z8DAAMcAG/ID/SpEOUgAAAAASUVORK5CYII=";
// The good requests; those with `sent` name a message that was sent just before.
const single: [method: string, request: (sent: Sent) => object][] = [
  ["GetNewMsg", () => ({ cid, count: 5 })],
  ["GetOfflineMsg", () => ({ cid })],
  ["PeekNewMsg", () => ({ cid })],
  ["PeekOfflineMsg", () => ({ cid })],
  ["GetRemoteHisMsg", () => ({ cid, count: 3, gohistory: 1 })],
  ["GetLocalHisMsg", () => ({ cid, count: 3, gohistory: 1 })],
  ["GetUnreadCount", () => ({ cid })],
  ["GetUnreadCountInBulk", () => ({})],
  ["SetMsgRead", () => ({ cid })],
  ["GetReadedBoundary", () => ({ cid })],
  ["ForwardChatMsg", ({ msgid }) => ({ cids: [cid], msgbody: [], msgid, msgtype: 0 })],
  ["SendBroadcastMsg", () => ({ cids: [cid, user("mariner")], msgbody: text })],
  ["SendNormalChatMsg", () => ({ cid, msgbody: text })],
  ["SendAutoReplyMsg", () => ({ cid, msgbody: text, autosend: 1 })],
  ["GetFlagsMyMsgReaded", ({ msgid }) => ({ cid, msgids: [msgid] })],
  ["SetFlagsPeerMsgReaded", () => ({ cid })],
  ["SearchMsgByID", ({ msgid }) => ({ cid, msgid })],
  ["SearchDBMsg", () => ({ cid, keywords: ["every"], needpage: 1, page: 1, count: 5 })],
  ["SearchDBMsg2", () => ({ keywords: ["every"] })],
  ["SearchDBMsgCid", () => ({ keywords: ["every"] })],
  ["GetMsgPicture", () => ({ cid, count: 5 })],
  ["RoamMsg", () => ({ cid, count: 5 })],
  ["ClearRoamedTime", () => ({ cid })],
  ["SetRoamStatus", () => ({ roamstatus: 1 })],
  ["GetRoamStatus", () => ({})],
  ["ShieldAutoReply", () => ({ cid, setignore: 0 })],
  ["ConvertMsgText2Emotion", () => ({ type: 0, value: "hi /:smile" })],
  ["SetNewMsgMaxCache", () => ({ maxmsgcount: 100 })],
  ["GetDynamicMsg", () => ({ bizType: "order", bizUuid: "u-1" })],
  ["AddAudio2textSettingRemind", () => ({ cid })],
  ["GetTranslateSetting", () => ({})],
  ["GetTranslateMsg", ({ msgid }) => ({ msgid, msgcontent: "hello" })],
  ["DoChatMsgWithdraw", ({ msgid, msgtime }) => ({ cid, msgid, msgtime, svrtime: "" })],
  ["DeleteLocalMsg", ({ msgid }) => ({ cid, msgids: [msgid] })],
];
interface Sent {
  msgid: string;
  msgtime: string;
  msgstatus: number;
}

async function newest(chat: ChatPage, cid: object): Promise<Sent | undefined> {
  const page = await call(chat, "im.singlemsg", "GetLocalHisMsg", { cid, count: 1 });
  return (page.envelope["msgs"] as Sent[])[0];
}

/** Waits until the newest message of a conversation is as wanted. */
async function newestWith(
  chat: ChatPage,
  cid: object,
  wanted: (message: Sent) => boolean,
): Promise<Sent> {
  const end = Date.now() + 20_000;
  while (Date.now() < end) {
    const message = await newest(chat, cid);
    if (message && wanted(message)) return message;
  }
  throw new Error("the newest message never became what was waited for");
}

test("every method of single chat serves a good request", async () => {
  const chat = await channelPage(browser, host.url, "harbor");
  const send = async (msgbody: object[]): Promise<Sent> => {
    const before = await newest(chat, cid);
    await call(chat, "im.singlemsg", "SendNormalChatMsg", { cid, msgbody });
    return newestWith(
      chat,
      cid,
      ({ msgid, msgstatus }) => msgid !== before?.msgid && msgstatus === 1,
    );
  };
  for (const [method, request] of single) {
    const good = await call(chat, "im.singlemsg", method, request(await send(text)));
    assert.equal(good.envelope["code"], 0, `${method}: ${good.payload}`);
  }
  const translated = await call(chat, "im.singlemsg", "GetTranslateMsg", { msgcontent: "hello" });
  assert.equal(translated.envelope["msgcontent"], "HELLO");
  const emotion = await call(chat, "im.singlemsg", "ConvertMsgText2Emotion", { value: "/:smile" });
  assert.match(String(emotion.envelope["value"]), /^pic:imemotion\|ID\?filepath=.*smile/);

  const picture = await send([{ type: 1, filecontent: redAndGreen }]);
  const found = await call(chat, "im.singlemsg", "SearchMsgByID", { cid, msgid: picture.msgid });
  const body = (found.envelope["msgs"] as { msgbody: string }[])[0]!.msgbody;
  const filepath = decodeURIComponent(/filepath=([^&]*)/.exec(body)![1]!);
  for (const [path, result] of [
    [filepath, "success"],
    ["files/none.png", "EditImage failed!"],
    ["server/server.db", "EditImage failed!"],
  ]) {
    const request = { cids: [cid], filepath: path, fileMD5: "" };
    const edited = await call(chat, "im.singlemsg", "EditPic2SendMsg", request);
    assert.equal(edited.envelope["result"], result);
  }

  // Nobody has this name, so the message fails, each time.
  const nobody = user("nobody");
  await call(chat, "im.singlemsg", "SendNormalChatMsg", { cid: nobody, msgbody: text });
  for (const method of ["ReSendChatMsg", "FastReSendChatMsg"]) {
    const failed = await newestWith(chat, nobody, ({ msgstatus }) => msgstatus === 2);
    const request = { cid: nobody, msgid: failed.msgid };
    const resent = await call(chat, "im.singlemsg", method, request);
    assert.equal(resent.envelope["result"], "success", method);
    const unknown = await call(chat, "im.singlemsg", method, { cid, msgid: "1" });
    assert.equal(unknown.envelope["result"], "failed", method);
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
