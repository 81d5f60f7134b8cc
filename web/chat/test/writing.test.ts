import assert from "node:assert/strict";
import { test } from "node:test";
import { IMMsgStatus } from "@imsdkbridge/client";
import { Shaking } from "../src/store/shaking.ts";
import { Typing } from "../src/store/typing.ts";
import { keyOf } from "../src/store/peers.ts";
import { chat, message, peer, shown, until, user } from "./rig.ts";

test("withdraw and delete: requests, outcome, and the reason of a failure", async () => {
  const all = [
    message({ id: 1 }),
    message({ id: 2, from: "me", msgstatus: 1 }),
    message({ id: 3 }),
  ];
  let result = "";
  const outcome = () => (result ? { code: -11, result } : {});
  const { store, thread, ids, requests, socket, client } = await shown(all, {
    DoChatMsgWithdraw: outcome,
    DeleteLocalMsg: outcome,
  });
  const { actions, toasts } = store;
  const last = () => store.conversations.sorted.value[0]?.last;
  await until(() => last()?.msgid === "3");

  result = "too late";
  await actions.withdraw(all[1]!);
  assert.equal(await actions.remove(peer, ["1"]), false);
  assert.deepEqual(
    toasts.all.value.map(({ text }) => /too late/.test(text)),
    [true, true],
  );
  assert.deepEqual(ids(), [1, 2, 3]);

  result = "";
  const withdrawn = { cid: peer, fromid: peer, msgid: "3", msgtime: "1003", svrtime: "1" };
  socket().notify("onMsgWithdrawNty", { code: 0, withdraws: [withdrawn] });
  assert.equal(thread.value.messages[2]!.msgbody, "");
  assert.equal(last()?.msgstatus, IMMsgStatus.kMsgWithdrawn);

  all.splice(0, 1);
  assert.equal(await actions.remove(peer, ["1"]), true);
  assert.deepEqual(ids(), [2, 3]);
  assert.equal(await actions.remove(peer, "all"), true);
  assert.deepEqual(requests("DeleteLocalMsg").at(-1), { cid: peer, all: 1 });
  assert.deepEqual([ids(), store.conversations.sorted.value], [[], []]);
  client.close();
});

test("typing is told rarely and ends; the peer's ends by itself, by message or by word", async () => {
  const { client, store, socket } = await chat({});
  const typing = new Typing(client, { repeat: 60, rest: 120, expiry: 60 });
  const told = () =>
    socket()
      .named("SendNormalChatMsg")
      .map(
        ({ request }) =>
          (request as { msgbody: { type: number; value: string }[] }).msgbody[0]!.value,
      );
  for (let letter = 0; letter < 20; letter++) typing.typed(peer);
  assert.deepEqual(told(), ["1"]);
  await until(() => told().length === 2);
  typing.stopped();
  assert.deepEqual(told(), ["1", "0"]);
  typing.typed(peer);
  typing.typed(user("other"));
  assert.deepEqual(told(), ["1", "0", "1", "0", "1"]);
  typing.stopped();

  const input = (value: number) => socket().notify("onPeerInputNotify", { value, cid: peer });
  const types = (one: Typing) => one.peers.value.has(keyOf(peer));
  await until(() => socket().named("register").length > 0);
  input(1);
  await until(() => types(typing));
  await until(() => !types(typing));
  input(1);
  input(0);
  assert.equal(types(typing), false);
  input(1);
  socket().notify("onReceiveNewMsg", { msgs: [message({ id: 5 })] });
  assert.equal(types(store.typing), false);
  client.close();
});

test("shakes are limited both ways", async () => {
  const { client, store, socket } = await chat({});
  const shaken: string[] = [];
  const pauses = { send: 40, show: 1000 };
  const shaking = new Shaking(client, store.toasts, ({ nick }) => shaken.push(nick), pauses);
  for (let times = 0; times < 3; times++) void shaking.shake(peer);
  assert.equal(socket().named("SendNormalChatMsg").length, 1);
  await until(() => shaking.ready.value);
  for (let times = 0; times < 3; times++) socket().notify("onShakeMsgNotify", peer);
  assert.deepEqual([shaken, shaking.count.value], [["peer"], 1]);
  client.close();
});

test("files follow their text in order, each with its kind; what is refused stays", async () => {
  const bad = ["b.pdf", "bad text"];
  const { store, requests, client } = await shown([], {
    SendNormalChatMsg: ({ msgbody }: { msgbody: { filepath: string; value: string }[] }) =>
      bad.includes(msgbody[0]!.filepath || msgbody[0]!.value)
        ? { code: -10, result: "disk full" }
        : {},
  });
  const file = (name: string, type: string, size = 10) => ({ name, type, size });
  const large = file("large.png", "image/png", 33 * 1024 * 1024);
  store.attachments.add(peer, [
    file("a.png", "image/png"),
    file("b.pdf", "application/pdf"),
    large,
    file("c.jpg", "image/jpeg"),
  ]);
  assert.equal(store.attachments.refusals.value.get(keyOf(peer))?.length, 1);
  const sent = () => requests("SendNormalChatMsg").flatMap(({ msgbody }: never) => msgbody);
  const states = () =>
    store.attachments.of(peer).map(({ file: { name }, state, problem }) => [name, state, problem]);
  store.outbox.setDraft(peer, "bad text");
  await store.send();
  assert.equal(sent().length, 1, "no file without the text that goes before it");
  assert.deepEqual(
    states(),
    ["a.png", "b.pdf", "c.jpg"].map((name) => [name, "ready", ""]),
  );
  store.outbox.setDraft(peer, "the files");
  await store.send();
  const files = sent().slice(1);
  assert.deepEqual(
    files.map(({ type, filepath, filecontent }: never) => [type, filepath, filecontent]),
    [
      [0, "", ""],
      [1, "a.png", "content of a.png"],
      [3, "b.pdf", "content of b.pdf"],
      [1, "c.jpg", "content of c.jpg"],
    ],
  );
  assert.deepEqual(states(), [["b.pdf", "failed", "disk full"]]);
  client.close();
});

test("emotions: the text that the host converted is what is sent and what lands", async () => {
  const token = "pic:imemotion|ID?filepath=emotions%2Fsmile.svg&shortcut=%2F%3Asmile";
  let able = true;
  const { store, socket, requests, client } = await shown([], {
    ConvertMsgText2Emotion: ({ value }: { value: string }) =>
      able ? { value: value.replace("/:smile", token) } : { code: -1, result: "" },
    SendNormalChatMsg: () => ({}),
  });
  for (const text of ["hi /:smile", "plain /:smile |filepath="]) {
    store.outbox.setDraft(peer, text);
    await store.send();
    able = false;
  }
  const values = requests("SendNormalChatMsg").map(({ msgbody }: never) => msgbody[0]["value"]);
  assert.deepEqual(values, [`hi ${token}`, "plain /:smile |\u200bfilepath="]);
  socket().notify("onSendNewMsg", { msgs: [message({ id: 1, from: "me", body: `hi ${token}` })] });
  assert.deepEqual(
    store.outbox.outgoing.value.map(({ text }) => text),
    ["plain /:smile |filepath="],
  );
  client.close();
});

test("translation: off, failed, done; the switch shows what the host has", async () => {
  let enable = 0;
  let result = "no translation is set up";
  const { store, socket, client } = await shown([message({ id: 1 })], {
    GetTranslateSetting: () => ({ enable }),
    translateSetting: (request: { enable: number }) => ((enable = request.enable), {}),
    GetTranslateMsg: ({ msgid, msgcontent }: { msgid: string; msgcontent: string }) =>
      result ? { code: -1, result } : { msgid, msgcontent: msgcontent.toUpperCase() },
  });
  const { translations } = store;
  const one = message({ id: 1 });
  const state = () => translations.all.value.get("1");
  await translations.translate(one);
  assert.deepEqual(state(), { state: "off" });
  assert.equal(socket().named("GetTranslateMsg").length, 0);
  await translations.setEnabled(true);
  await translations.translate(one);
  assert.deepEqual(state(), { state: "failed", problem: result });
  result = "";
  await translations.translate({ ...one, msgbody: "" });
  assert.equal(state()?.state, "failed", "no text at all is no translation");
  await translations.translate(one);
  assert.deepEqual(state(), { state: "done", text: "TEXT 1" });
  socket().notify("onTranslateSettingNotify", { enable: 0 });
  assert.equal(translations.enabled.value, false);
  client.close();
});
