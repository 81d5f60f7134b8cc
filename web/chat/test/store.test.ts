import assert from "node:assert/strict";
import { test } from "node:test";
import { IMMsgStatus } from "@imsdkbridge/client";
import { keyOf } from "../src/store/peers.ts";
import { chat, history, message, until, user } from "./rig.ts";

const peer = user("peer");
const key = keyOf(peer);

test("history: pages join in order without gaps or doubles, up to the beginning", async () => {
  // Identifiers of different length and equal times: neither text order nor time alone will do.
  const all = Array.from({ length: 95 }, (_, id) =>
    message({ id: id + 6, time: 1000 + (id >> 2) }),
  );
  const { store, socket, client } = await chat({ GetLocalHisMsg: history(all) });
  store.open(peer);
  const thread = store.threads.of(peer);
  await until(() => thread.value.status === "ready");
  assert.deepEqual(thread.value.messages, all.slice(-40));

  socket().notify("onReceiveNewMsg", { msgs: [message({ id: 101 }), message({ id: 101 })] });
  socket().notify("onReceiveOfflineMsg", { msgs: [all[10]] });
  for (let page = 0; page < 4; page++) await store.threads.load(peer, "older");
  assert.deepEqual(thread.value.messages, [...all, message({ id: 101 })]);
  assert.equal(thread.value.older, "none");
  client.close();
});

test("after a gap the thread starts anew from the newest page", async () => {
  const all = [message({ id: 1 }), message({ id: 2 })];
  const { store, socket, interrupt, client } = await chat({
    GetLocalHisMsg: (request) => {
      // What comes live before the page does not close the gap behind it.
      if (all.length > 2) socket().notify("onReceiveNewMsg", { msgs: [all.at(-1)] });
      return history(all)(request);
    },
  });
  store.open(peer);
  const thread = store.threads.of(peer);
  await until(() => thread.value.messages.length === 2);
  await interrupt(() => {
    for (let id = 3; id < 200; id++) all.push(message({ id }));
  });
  await until(() => thread.value.messages.length === 40);
  assert.deepEqual(thread.value.messages, all.slice(-40));
  assert.equal(thread.value.older, "more");
  client.close();
});

test("what is sent: waiting, stored, settled, failed and sent again", async () => {
  const own = message({ from: "me", id: 7, body: "hello" });
  const all = [message({ id: 6 })];
  const { store, socket, client } = await chat({
    SendNormalChatMsg: () => undefined,
    GetLocalHisMsg: (request) => history(all)(request),
  });
  store.open(peer);
  await until(() => store.threads.of(peer).value.status === "ready");
  store.outbox.setDraft(peer, "hello");
  void store.send();
  assert.equal(store.outbox.drafts.value[key], "");
  assert.equal(store.outbox.outgoing.value[0]?.text, "hello");

  socket().notify("onSendNewMsg", { msgs: [own] });
  assert.deepEqual(store.outbox.outgoing.value, []);
  const status = () => store.threads.of(peer).value.messages.at(-1)!.msgstatus;
  assert.equal(status(), IMMsgStatus.kMsgSending);
  const event = { code: -4, subcode: 0, msgtype: 0, msgid: "7", svrtime: "", result: "busy" };
  socket().notify("onSendMsgStatus", event);
  assert.equal(status(), IMMsgStatus.kMsgFailed);
  assert.equal(store.threads.failures.value.get("7"), "busy");

  void store.actions.resend(own);
  assert.equal(status(), IMMsgStatus.kMsgSending);
  assert.deepEqual(socket().named("ReSendChatMsg")[0]!.request, { cid: peer, msgid: "7" });
  socket().notify("onSendMsgStatus", { ...event, code: 0, svrtime: "5" });
  assert.equal(status(), IMMsgStatus.kMsgSent);
  assert.equal(store.conversations.sorted.value[0]!.last!.msgstatus, IMMsgStatus.kMsgSent);

  // A page of history that was read before the report must not undo it.
  all.push(own);
  store.threads.markStale();
  await store.threads.open(peer);
  assert.equal(status(), IMMsgStatus.kMsgSent);
  client.close();
});

test("refused texts come back in order before what was written since, with the reason", async () => {
  const refuse: (() => void)[] = [];
  const { store, socket, client } = await chat({
    SendNormalChatMsg: (_, call) => {
      const answer = { code: -3, subcode: 0, result: "too large" };
      refuse.push(() => socket().answer(call, answer, true));
      return undefined;
    },
  });
  store.open(peer);
  for (const text of ["first\nline", "second \ud83d"]) {
    store.outbox.setDraft(peer, text);
    void store.send();
  }
  store.outbox.setDraft(peer, "next");
  await until(() => refuse.length === 2);
  for (const answer of refuse) answer();
  await until(() => store.outbox.outgoing.value.length === 0);
  assert.equal(store.outbox.drafts.value[key], "first\nline\nsecond \ufffd\nnext");
  assert.match(store.outbox.notices.value[key]!, /too large/);
  store.outbox.setDraft(peer, "next");
  assert.equal(store.outbox.notices.value[key], "");
  client.close();
});

test("texts cut off by a lost connection come back unless history has them", async () => {
  const all = [message({ from: "me", id: 1, body: "same" })];
  const { store, socket, interrupt, stored, client } = await chat({
    // Accepting a text does not store it yet.
    SendNormalChatMsg: (request) => (JSON.stringify(request).includes("accepted") ? {} : undefined),
    GetLocalHisMsg: (request) => history(all)(request),
  });
  store.open(peer);
  await until(() => store.threads.of(peer).value.status === "ready");
  for (const text of ["same", "same", "accepted", "other"]) {
    store.outbox.setDraft(peer, text);
    void store.send();
  }
  await until(() => store.outbox.outgoing.value.some(({ state }) => state === "accepted"));
  assert.match(stored.get(`written ${keyOf(user("me"))}`)!, /other/);
  // One of the two equal texts was stored; the equal message from before stands for neither.
  all.push(message({ from: "me", id: 2, body: "same" }));
  socket().notify("onSendNewMsg", { msgs: [all[1]] });
  await interrupt();
  await until(() => store.outbox.outgoing.value.length === 0);
  assert.equal(store.outbox.drafts.value[key], "same\naccepted\nother");
  assert.match(store.outbox.notices.value[key]!, /connection was lost/);
  client.close();
});

test("unread counts are asked for while hidden, and fall when the conversation is shown", async () => {
  let unread = 0;
  const { store, socket, show, client } = await chat({
    GetUnreadCount: () => ({ count: unread }),
    GetNewMsg: () => {
      const states = socket().named("chatWindowState");
      if ((states.at(-1)?.request as { visible?: number })?.visible) unread = 0;
      return { outofcache: 1, msgs: [] };
    },
  });
  store.open(peer);
  show(false);
  for (unread = 1; unread <= 3; unread++) {
    socket().notify("onReceiveNewMsg", { msgs: [message({ id: 10 + unread })] });
  }
  unread = 3;
  await until(() => store.conversations.totalUnread.value === 3);
  assert.match(store.announcement.value, /^peer: text 13$/);
  show(true);
  await until(() => store.conversations.totalUnread.value === 0);
  store.closeConversation();
  const states = socket().named("chatWindowState");
  assert.deepEqual(
    states.map(({ request }) => (request as { visible: number }).visible),
    [1, 0, 1, 0],
  );
  client.close();
});

test("a token that no longer works leads to the sign-in form with the reason", async () => {
  let expired = false;
  const { store, interrupt, stored, client } = await chat({
    DoLoginByToken: () =>
      expired ? { code: -1, result: "expired" } : { userid: user("me"), token: "t2", expires: "" },
    DoLoginByPassWord: () => ({ userid: user("me"), token: "t3", expires: "" }),
  });
  assert.equal(store.session.status.value, "signedin");
  assert.match(stored.get("session")!, /t2/);
  await interrupt(() => (expired = true));
  assert.equal(store.session.status.value, "signedout");
  assert.match(store.session.problem.value, /expired/);
  assert.equal(stored.has("session"), false);
  await store.session.signIn("me", "demo");
  assert.equal(store.session.status.value, "signedin");
  client.close();
});

test("coming back to the page shows what was read in another window meanwhile", async () => {
  const { store, show, client } = await chat({
    GetUnreadCountInBulk: () => ({ unreads: [{ cid: peer, count: 2 }] }),
  });
  await until(() => store.conversations.totalUnread.value === 2);
  show(false);
  show(true);
  await until(() => store.conversations.totalUnread.value === 0);
  client.close();
});
