import assert from "node:assert/strict";
import { test } from "node:test";
import type { IMMessage, IMUserID } from "@imsdkbridge/client";
import { keyOf } from "../src/store/peers.ts";
import { chat, history, message, peer, SharedTabs, shown, until, user, type Host } from "./rig.ts";

/** Two tabs of one account, both with the conversation in front, on one host. */
async function twoTabs(all: IMMessage[], host: Host = {}) {
  const shared = new SharedTabs();
  const gone = ({ msgids, all: whole }: { msgids?: string[]; all?: number }) => {
    const left = whole ? [] : all.filter(({ msgid }) => !msgids!.includes(msgid));
    all.splice(0, all.length, ...left);
    return {};
  };
  const answers = { DeleteLocalMsg: gone, ...host };
  const tabs = [await shown(all, answers, shared), await shown(all, answers, shared)] as const;
  for (const { store } of tabs) await until(() => store.conversations.status.value === "ready");
  const close = () => tabs.forEach(({ client }) => client.close());
  return { tabs, shared, close };
}

test("what one tab deletes is gone in the other, and with the last message the conversation", async () => {
  const all = [message({ id: 1 }), message({ id: 2 }), message({ id: 3 })];
  const { tabs, close } = await twoTabs(all);
  const [one, other] = tabs;
  const last = () => other.store.conversations.sorted.value[0]?.last?.msgid;
  assert.equal(last(), "3");
  other.store.selection.start(all[2]!);
  await one.store.actions.remove(peer, ["3"]);
  await until(() => other.ids().length === 2);
  assert.deepEqual(other.ids(), [1, 2]);
  await until(() => last() === "2");
  assert.equal(other.store.selection.active.value, false, "nothing is chosen that is gone");

  // A text that is being written there keeps its place.
  other.store.outbox.setDraft(peer, "half a sentence");
  await one.store.actions.remove(peer, "all");
  await until(() => other.ids().length === 0);
  assert.deepEqual(other.store.active.value, peer);
  assert.equal(one.store.active.value, undefined);
  assert.deepEqual(one.store.conversations.sorted.value, []);
  other.store.outbox.setDraft(peer, "");
  other.store.closeConversation();
  await until(() => other.store.conversations.sorted.value.length === 0);
  close();
});

test("what one tab reads is read in the other, and settings changed in one hold in both", async () => {
  let count = 2;
  let roamstatus = 1;
  const shared = new SharedTabs();
  const host: Host = {
    GetUnreadCountInBulk: () => ({ unreads: [{ cid: peer, count }] }),
    GetUnreadCount: () => ({ count }),
    GetNewMsg: () => ((count = 0), { outofcache: 1, msgs: [] }),
    GetLocalHisMsg: history([message({ id: 1 })]),
    ShieldAutoReply: () => ({}),
    GetRoamStatus: () => ({ roamstatus, opentime: "0" }),
    SetRoamStatus: (request: { roamstatus: number }) => ((roamstatus = request.roamstatus), {}),
  };
  const one = await chat(host, shared);
  const other = await chat(host, shared);
  const stranger = await chat(host, shared, user("stranger"));
  const unread = () => other.store.conversations.totalUnread.value;
  await until(() => unread() === 2);
  one.store.open(peer);
  await until(() => unread() === 0);

  await one.store.autoReplies.setIgnored(peer, true);
  await one.store.roaming.load();
  await one.store.roaming.setEnabled(true);
  await until(() => other.store.roaming.enabled.value);
  assert.deepEqual([...other.store.autoReplies.ignored.value], [keyOf(peer)]);
  await other.store.roaming.setEnabled(false);
  await until(() => !one.store.roaming.enabled.value);
  const asked = stranger.socket().named("GetUnreadCount").length;
  assert.deepEqual([asked, stranger.store.autoReplies.ignored.value.size], [0, 0]);
  for (const { client } of [one, other, stranger]) client.close();
});

test("the list is in the order that a reload would show, and keeps no chat with nobody in it", async () => {
  const old = message({ id: 5, cid: user("port"), fromid: user("port"), time: 500 });
  const roamed = message({ id: 9, cid: user("port"), fromid: user("port"), time: 900 });
  const mine = message({ id: 7, time: 700 });
  const empty: IMUserID[] = [];
  const { store, client } = await chat({
    GetUnreadCountInBulk: () => ({
      unreads: [peer, user("port")].map((cid) => ({ cid, count: 0 })),
    }),
    // Opening a conversation fetches from the server what this device does not have.
    GetLocalHisMsg: ({ cid, count }: { cid: IMUserID; count: number }) => {
      const here = cid.nick === "peer" ? [mine] : cid.nick === "port" ? [old] : [];
      return { outofcache: 1, msgs: count > 1 && cid.nick === "port" ? [old, roamed] : here };
    },
    DeleteLocalMsg: ({ cid }: { cid: IMUserID }) => (empty.push(cid), {}),
  });
  const order = () => store.conversations.sorted.value.map(({ cid }) => store.names.of(cid));
  await until(() => store.conversations.status.value === "ready");
  assert.deepEqual(order(), ["peer", "port"]);
  store.open(user("port"));
  await until(() => order()[0] === "port");

  store.startChat(user("nobody"));
  await until(() => store.threads.of(user("nobody")).value.status === "ready");
  assert.deepEqual(order(), ["nobody", "port", "peer"]);
  store.open(peer);
  assert.deepEqual(order(), ["port", "peer"]);
  store.startChat(user("later"));
  store.outbox.setDraft(user("later"), "to be continued");
  store.open(peer);
  assert.deepEqual(order(), ["later", "port", "peer"]);
  store.open(user("later"));
  store.outbox.setDraft(user("later"), "");
  store.closeConversation();
  assert.deepEqual(order(), ["port", "peer"]);
  client.close();
});
