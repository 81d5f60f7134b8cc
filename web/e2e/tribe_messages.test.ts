import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import type { Browser } from "playwright-core";
import { endsAnsweredOnce, user } from "./channel_page.ts";
import { Conversation, type Good, type Sent, text } from "./conversation.ts";
import { Host } from "./host.ts";
import { eventually, launch } from "./pages.ts";
import { type Nick, TribeView } from "./tribe_views.ts";

const host = new Host();
let browser: Browser;
let views: Record<Nick, TribeView>;

before(async () => {
  host.put("dynamic/order/u-1.json", '{"state":"sent"}');
  await host.start();
  browser = await launch();
  views = await TribeView.all(browser, host.url);
  for (const nick of ["harbor", "lighthouse", "mariner"] as const) {
    await views[nick].ask("InitTribe");
  }
});
after(async () => {
  for (const view of Object.values(views)) endsAnsweredOnce(view.chat);
  await browser?.close();
  await host.remove();
});

const tribeid = "10001";
const inTribe = (nick: Nick, id = tribeid) =>
  new Conversation(views[nick].chat, "im.tribemsg", { tribeid: id }, { tribeid: id, type: 3 });

test("every method of tribe messages serves a good request", async () => {
  const tribe = inTribe("harbor");
  const cid = tribe.cid;
  // What tribes alone have.
  const own: Good[] = [
    ["SendNormalTribeMsg", () => ({ tribeid, msgbody: text, tribeat: { atmsgtype: 2 } })],
    ["SearchAttentionMsg", () => ({ cid, fromids: [user("lighthouse")], count: 5 })],
    ["RoamTribeAtMsgs", () => ({ tribeid, count: 5, gohistory: 1 })],
    ["GetSendMsgTribeAtInfo", ({ msgid }) => ({ tribeid, msgid, msgbody: text })],
    ["RoamTribeAtMsgContext", ({ msgid }) => ({ tribeid, msgid, count: 5 })],
    ["SetTribeAtMsgsReaded", () => ({ tribeid })],
    ["GetTribeAtMsgUnreadCount", ({ msgid }) => ({ tribeid, msgids: [msgid] })],
    ["AtTribeMember", () => ({ tribeid, userid: user("mariner") })],
  ];
  for (const [method, request] of [...own, ...tribe.good()]) {
    const good = await tribe.ask(method, request(await tribe.send()));
    assert.equal(good["code"], 0, `${method}: ${JSON.stringify(good)}`);
  }
  const edited = await tribe.editPictures();
  assert.deepEqual(edited, ["success", "EditImage failed!", "EditImage failed!"]);
});

test("members hear of a mention, and its sender of who has read it", async () => {
  const [harbor, lighthouse, mariner] = [
    inTribe("harbor"),
    inTribe("lighthouse"),
    inTribe("mariner"),
  ];
  // Who is no member is named, and nobody waits for that one's reading.
  const atmembers = [user("lighthouse"), user("navigator")];
  const tribeat = { atmsgtype: 1, atmembers };
  const { msgid } = await harbor.send([{ type: 0, value: "@lighthouse fog tonight" }], { tribeat });
  const info = await harbor.ask("GetSendMsgTribeAtInfo", { tribeid, msgid });
  assert.deepEqual([info["atmsgtype"], info["relation2me"]], [1, 3]);

  const mentionOf = async (view: Conversation): Promise<Record<string, unknown>> => {
    const sent = await view.newestWith((message) => message.msgid === msgid);
    return (sent as Sent & { tribeat: Record<string, unknown> }).tribeat;
  };
  const expected = { msgreaded: 0, atmsgtype: 1, atmembers };
  assert.deepEqual(await mentionOf(lighthouse), { ...expected, relation2me: 1 });
  assert.deepEqual(await mentionOf(mariner), { ...expected, relation2me: 0 });

  const readers = () => harbor.ask("GetTribeAtMsgUnreadUsers", { tribeid, msgid });
  const before = await readers();
  assert.deepEqual(before["unreadusers"], [user("lighthouse")]);
  assert.deepEqual(before["readedusers"], []);
  const unread = await lighthouse.ask("GetTribeAtMsgUnreadCount", { tribeid });
  assert.ok(Number(unread["count"]) >= 1);
  await lighthouse.ask("SetTribeAtMsgsReaded", { tribeid, msgids: [msgid] });
  await eventually(
    async () => ((await readers())["readedusers"] as unknown[]).length === 1 || undefined,
    "the sender knows of the reading",
  );
  const counts = await harbor.ask("GetTribeAtMsgUnreadCount", { tribeid, msgids: [msgid] });
  assert.deepEqual(counts["counts"], [{ msgid, readedcount: 1, unreadcount: 0 }]);
  assert.equal((await mentionOf(lighthouse))["msgreaded"], 1);
});

test("a message to a closed tribe fails and is sent again when it is open", async () => {
  const { harbor } = views;
  const closed = await harbor.create("Anchorage", ["lighthouse"]);
  const chat = inTribe("harbor", closed);
  await harbor.ask("CloseTribe", { tribeid: closed });
  await chat.ask("SendNormalTribeMsg", { tribeid: closed, msgbody: text });
  for (const method of ["ReSendChatMsg", "FastReSendChatMsg"]) {
    const { msgid } = await chat.newestWith(({ msgstatus }) => msgstatus === 2);
    if (method === "FastReSendChatMsg") await harbor.host("EnableTribe", { tribe: closed });
    const resent = await chat.ask(method, { tribeid: closed, msgid });
    assert.equal(resent["result"], "success", method);
  }
  await chat.newestWith(({ msgstatus }) => msgstatus === 1);
});
