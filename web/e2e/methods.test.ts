import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import type { Browser } from "playwright-core";
import { Host } from "./host.ts";
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

interface Answer {
  failed: boolean;
  payload: string;
}
type Call = (path: string, method: string, json: string) => Promise<Answer>;

declare global {
  interface Window {
    call: Call;
  }
}

// A page that is nothing but a script channel of `account`.
async function channelPage(account: string): Promise<ChatPage> {
  const chat = await ChatPage.open(browser, host.url);
  await chat.page.evaluate(async (nick) => {
    const socket = new WebSocket(`ws://${location.host}/channel${location.search}&account=${nick}`);
    const waiting = new Map<string, (answer: Answer) => void>();
    let seq = 0;
    socket.onmessage = ({ data }) => {
      const frame = JSON.parse(data as string);
      if (frame.kind === "answer") waiting.get(frame.seq)!(frame);
    };
    await new Promise((resolve) => (socket.onopen = resolve));
    window.call = (path, method, json) => {
      const args = [`s${++seq}`, method, json];
      const answered = new Promise<Answer>((resolve) => waiting.set(args[0]!, resolve));
      socket.send(JSON.stringify({ kind: "invoke", method: `workbench.${path}.invoke`, args }));
      return answered;
    };
  }, account);
  return chat;
}

function user(nick: string): { appkey: string; nick: string } {
  return { appkey: "cnbazaro", nick };
}

const cid = user("lighthouse");
const text = [{ type: 0, value: "from every method" }];
// A PNG of two by two pixels.
const redAndGreen =
  "iVBORw0KGgoAAAANSUhEUgAAAAIAAAACCAIAAAD91JpzAAAADklEQVR4nGP4z8DAAMcAG/ID/SpEOUgAAAAASUVORK5CYII=";
// The good requests; those with `sent` name a message that was sent just before.
const single: [method: string, request: (sent: Sent) => object, keys?: string[]][] = [
  ["GetNewMsg", () => ({ cid, count: 5 }), ["outofcache", "msgs"]],
  ["GetOfflineMsg", () => ({ cid }), ["outofcache", "msgs"]],
  ["PeekNewMsg", () => ({ cid }), ["outofcache", "msgs"]],
  ["PeekOfflineMsg", () => ({ cid }), ["outofcache", "msgs"]],
  ["GetRemoteHisMsg", () => ({ cid, count: 3, gohistory: 1 }), ["outofcache", "msgs"]],
  ["GetLocalHisMsg", () => ({ cid, count: 3, gohistory: 1 }), ["outofcache", "msgs"]],
  ["GetUnreadCount", () => ({ cid }), ["count"]],
  ["GetUnreadCountInBulk", () => ({}), ["unreads"]],
  ["SetMsgRead", () => ({ cid })],
  ["GetReadedBoundary", () => ({ cid }), ["msgtime", "msgid"]],
  ["ForwardChatMsg", ({ msgid }) => ({ cids: [cid], msgbody: [], msgid, msgtype: 0 })],
  ["SendBroadcastMsg", () => ({ cids: [cid, user("mariner")], msgbody: text })],
  ["SendNormalChatMsg", () => ({ cid, msgbody: text })],
  ["SendAutoReplyMsg", () => ({ cid, msgbody: text, autosend: 1 })],
  ["GetFlagsMyMsgReaded", ({ msgid }) => ({ cid, msgids: [msgid] }), ["items"]],
  ["SetFlagsPeerMsgReaded", () => ({ cid }), []],
  ["SearchMsgByID", ({ msgid }) => ({ cid, msgid }), ["outofcache", "msgs"]],
  [
    "SearchDBMsg",
    () => ({ cid, keywords: ["every"], needpage: 1, page: 1, count: 5 }),
    ["cid", "keywords", "msgtypes", "currentpage", "totalpage", "totalcount", "msgs"],
  ],
  [
    "SearchDBMsg2",
    () => ({ keywords: ["every"] }),
    ["cid", "keywords", "msgtypes", "currentpage", "totalpage", "totalcount", "msgs"],
  ],
  ["SearchDBMsgCid", () => ({ keywords: ["every"] }), ["msgtypes", "cids"]],
  ["GetMsgPicture", () => ({ cid, count: 5 }), ["pictures"]],
  ["RoamMsg", () => ({ cid, count: 5 }), ["roamedcount", "affectcount"]],
  ["ClearRoamedTime", () => ({ cid })],
  ["SetRoamStatus", () => ({ roamstatus: 1 })],
  ["GetRoamStatus", () => ({}), ["opentime", "roamstatus"]],
  ["ShieldAutoReply", () => ({ cid, setignore: 0 })],
  ["ConvertMsgText2Emotion", () => ({ type: 0, value: "hi /:smile" }), ["type", "value", "jvale"]],
  ["SetNewMsgMaxCache", () => ({ maxmsgcount: 100 })],
  ["GetDynamicMsg", () => ({ bizType: "order", bizUuid: "u-1" }), ["content"]],
  ["AddAudio2textSettingRemind", () => ({ cid })],
  ["GetTranslateSetting", () => ({}), ["enable"]],
  ["GetTranslateMsg", ({ msgid }) => ({ msgid, msgcontent: "hello" }), ["msgid", "msgcontent"]],
  ["DoChatMsgWithdraw", ({ msgid, msgtime }) => ({ cid, msgid, msgtime, svrtime: "" })],
  ["DeleteLocalMsg", ({ msgid }) => ({ cid, msgids: [msgid] }), ["count"]],
];
interface Sent {
  msgid: string;
  msgtime: string;
  msgstatus: number;
}

/** A request with an object under every key that any request has. */
function wrongTypes(): string {
  const keys =
    "cid cids msgid msgids msgtime svrtime btime etime count gohistory ignoreboundary autoroam " +
    "keywords msgtypes needpage page pictureid autosend msgbody msgtype fileMD5 filepath type " +
    "msgcontent bizType bizUuid maxmsgcount roamstatus setignore value jvale all";
  return JSON.stringify(Object.fromEntries(keys.split(" ").map((key) => [key, { appkey: 7 }])));
}

async function call(chat: ChatPage, path: string, method: string, request: unknown) {
  const json = typeof request === "string" ? request : JSON.stringify(request);
  const answer = await chat.page.evaluate(
    ([path, method, json]) => window.call(path!, method!, json!),
    [path, method, json],
  );
  const envelope = JSON.parse(answer.payload) as Record<string, unknown>;
  assert.deepEqual(Object.keys(envelope).slice(0, 3), ["code", "subcode", "result"], method);
  return { ...answer, envelope };
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

function endsAnsweredOnce(chat: ChatPage): void {
  const channel = chat.connections.at(-1)!;
  const answered = channel.received.filter(({ kind }) => kind === "answer").map(({ seq }) => seq);
  assert.equal(new Set(answered).size, answered.length);
  assert.equal(answered.length, channel.sent.length);
}

test("every method of single chat answers good requests with its keys, and bad ones once", async () => {
  const chat = await channelPage("harbor");
  const send = async (msgbody: object[]): Promise<Sent> => {
    const before = await newest(chat, cid);
    await call(chat, "im.singlemsg", "SendNormalChatMsg", { cid, msgbody });
    return newestWith(
      chat,
      cid,
      ({ msgid, msgstatus }) => msgid !== before?.msgid && msgstatus === 1,
    );
  };
  for (const [method, request, keys = []] of single) {
    const good = await call(chat, "im.singlemsg", method, request(await send(text)));
    assert.equal(good.envelope["code"], 0, `${method}: ${good.payload}`);
    assert.deepEqual(Object.keys(good.envelope).slice(3), keys, method);
    for (const bad of ["{}", wrongTypes(), "{oops", "[]", ""]) {
      await call(chat, "im.singlemsg", method, bad);
    }
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

test("virtual conversations answer good requests with their keys, and bad ones once", async () => {
  const chat = await channelPage("harbor");
  const all = await call(chat, "im.virtualmsg", "GetUnreadCountInBulk", {});
  const unreads = all.envelope["unreads"] as { cid: object; count: number }[];
  assert.ok(unreads.length > 0, "the demo set has virtual conversations");
  const virtual = unreads[0]!.cid;
  const keys: [string, string[]][] = [
    ["GetNewMsg", ["outofcache", "msgs"]],
    ["PeekNewMsg", ["outofcache", "msgs"]],
    ["GetLocalHisMsg", ["outofcache", "msgs"]],
    ["GetUnreadCount", ["count"]],
    ["SetMsgRead", []],
    ["GetReadedBoundary", ["msgtime", "msgid"]],
    ["DeleteLocalMsg", ["count"]],
  ];
  for (const [method, expected] of keys) {
    const good = await call(chat, "im.virtualmsg", method, { cid: virtual, msgids: ["1"] });
    assert.equal(good.envelope["code"], 0, `${method}: ${good.payload}`);
    assert.deepEqual(Object.keys(good.envelope).slice(3), expected, method);
    for (const bad of ["{}", wrongTypes(), "{oops"]) {
      const refused = await call(chat, "im.virtualmsg", method, bad);
      assert.equal(refused.failed, true, method);
    }
  }
  endsAnsweredOnce(chat);
  await chat.close();
});
