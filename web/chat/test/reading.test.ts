import assert from "node:assert/strict";
import { test } from "node:test";
import {
  IMMsgStatus,
  type IMPageRequest,
  type IMMessage,
  type IMMsgPicture,
} from "@imsdkbridge/client";
import { ConversationSearch } from "../src/store/conversation_search.ts";
import { GlobalSearch } from "../src/store/global_search.ts";
import { chat, history, message, peer, run, shown, until, user } from "./rig.ts";

test("a jump loads the message with its surroundings; what is newer comes without a gap", async () => {
  const all = run(1000, 1400);
  let overtaken = false;
  const { store, thread, ids, socket, client } = await shown(all, {
    GetLocalHisMsg: (request: IMPageRequest) => {
      const page = history(all)(request);
      if (request.gohistory || page.outofcache === 0 || overtaken) return page;
      // One more comes between the reading of the last page and its arrival.
      overtaken = true;
      all.push(message({ id: 1401 }));
      socket().notify("onReceiveNewMsg", { msgs: [all.at(-1)] });
      return page;
    },
    SearchMsgByID: ({ msgid }: IMMessage) => {
      const found = all.filter((entry) => entry.msgid === msgid);
      return found.length ? { outofcache: 1, msgs: found } : { code: -9, result: "not found" };
    },
  });
  await store.jumpTo(peer, "1200");
  assert.deepEqual(
    ids(),
    run(1160, 1241).map(({ msgid }) => Number(msgid)),
  );
  assert.deepEqual([thread.value.older, thread.value.newer], ["more", "more"]);
  assert.equal(store.target.value?.msgid, "1200");

  // A live message must not stand right behind the gap; it comes with its page.
  all.push(message({ id: 1400 }));
  socket().notify("onReceiveNewMsg", { msgs: [all.at(-1)] });
  assert.equal(ids().at(-1), 1240);
  while (thread.value.newer !== "none") await store.threads.load(peer, "newer");
  assert.deepEqual(
    ids(),
    run(1160, 1402).map(({ msgid }) => Number(msgid)),
  );

  await store.jumpTo(peer, "1020");
  await store.jumpTo(peer, "99");
  assert.match(store.toasts.all.value.at(-1)!.text, /not found/);
  assert.ok(ids().includes(1020) && !ids().includes(1160));
  store.outbox.setDraft(peer, "now");
  await store.send();
  assert.equal(thread.value.newer, "none", "whoever sends goes to the newest end");
  assert.deepEqual(
    ids(),
    run(1362, 1402).map(({ msgid }) => Number(msgid)),
  );
  client.close();
});

test("what was seen is reported once and in one request; what the peer reports is shown", async () => {
  const extinfo = { others: "", fixmsgread: 1, autochatmsg: 0, syschatmsg: 0 };
  const all = [
    message({ id: 10 }),
    message({ id: 11, from: "me", msgstatus: 1 }),
    message({ id: 12, extinfo }),
    message({ id: 13, msgstatus: IMMsgStatus.kMsgWithdrawn }),
    message({ id: 14 }),
  ];
  const { store, thread, requests, socket, client } = await shown(all, {
    SetFlagsPeerMsgReaded: () => ({}),
  });
  store.receipts.seen(peer, all.slice(0, 2));
  store.receipts.seen(peer, all);
  await until(() => requests("SetFlagsPeerMsgReaded").length > 0);
  store.receipts.seen(peer, all);
  assert.deepEqual(requests("SetFlagsPeerMsgReaded"), [{ cid: peer, msgids: ["10", "14"] }]);

  const flag = { cid: peer, msgid: "11", msgtime: "1011", readflag: 1 };
  socket().notify("onFlagMyMsgReaded", { items: [flag] });
  assert.equal(thread.value.messages[1]!.readflag, 1);
  // A page of history that was read before must not take the mark away.
  store.threads.markStale();
  await store.threads.open(peer);
  assert.equal(thread.value.messages[1]!.readflag, 1);
  client.close();
});

test("search walks over the pages, newest first, and drops what was typed meanwhile", async () => {
  const hits = run(100, 145).reverse();
  let open: (() => void) | undefined;
  const answer = ({ keywords, page, count }: never) => ({
    keywords,
    totalcount: hits.length,
    totalpage: Math.ceil(hits.length / count),
    msgs: hits.slice((page - 1) * count, page * count).reverse(),
  });
  const { client, socket } = await chat({
    SearchDBMsg: (request: { keywords: string[] }, call) => {
      if (request.keywords[0] !== "slow") return answer(request as never);
      open = () =>
        socket().answer(call, { code: 0, subcode: 0, result: "", ...answer(request as never) });
      return undefined;
    },
    SearchDBMsg2: answer,
    SearchDBMsgCid: (_, { method }) => ({
      cids: method.includes("tribemsg") ? [] : [peer, user("other")],
    }),
  });
  const visited: string[] = [];
  const finder = new ConversationSearch(client, ({ msgid }) => visited.push(msgid), 1);
  finder.open(peer);
  finder.setQuery("slow");
  await until(() => open !== undefined);
  finder.setQuery("rope");
  await until(() => finder.search.status.value === "ready");
  open!();
  for (let step = 0; step < 60; step++) await finder.step(1);
  await finder.step(-1);
  const expected = [...hits.map(({ msgid }) => msgid), "101"];
  assert.deepEqual(visited, expected);
  assert.equal(finder.search.total.value, 45);
  assert.deepEqual(
    socket()
      .named("SearchDBMsg")
      .map(({ request }) => (request as { page: number }).page),
    [1, 1, 2, 3],
  );

  const everywhere = new GlobalSearch(client, 1);
  everywhere.setQuery("rope");
  await until(() => everywhere.search.status.value === "ready");
  everywhere.narrow(peer);
  await until(() => everywhere.search.status.value === "ready");
  const asked = socket()
    .named("SearchDBMsg2")
    .filter(({ method }) => !method.includes("tribemsg"))
    .map(({ request }) => (request as IMMessage).cid);
  assert.deepEqual(asked, [undefined, peer]);
  assert.equal(everywhere.cids.value.length, 2, "the choice of conversations stays");
  client.close();
});

test("the picture viewer goes over all pictures of the conversation, both ways", async () => {
  const all = Array.from({ length: 50 }, (_, index) => ({
    pictureid: `${index}_0`,
    mgstime: String(index),
    url: `files%2F${index}.png`,
    msgid: String(index),
    fromid: peer,
  })) as IMMsgPicture[];
  const { store, client } = await chat({
    GetMsgPicture: ({ pictureid, gohistory, count }: never) => {
      const at = all.findIndex((one) => one.pictureid === pictureid);
      const pictures = gohistory
        ? all.slice(Math.max(0, at - count), at)
        : all.slice(at + 1, at + 1 + count);
      return { pictures };
    },
  });
  const { viewer } = store;
  await viewer.open(peer, all[25]!);
  const seen = async (by: 1 | -1, steps: number) => {
    for (let step = 0; step < steps; step++) await viewer.step(by);
    return viewer.front.value?.pictureid;
  };
  assert.equal(await seen(-1, 24), "1_0");
  assert.equal(await seen(-1, 5), "0_0");
  assert.equal(viewer.front.value?.url, "files/0.png", "a path, not as the token escapes it");
  assert.equal(await seen(1, 49), "49_0");
  assert.equal(await seen(1, 3), "49_0");
  viewer.close();
  assert.equal(viewer.place, -1);
  client.close();
});

test("virtual conversations use their own module", async () => {
  const news = user("news");
  const paper = message({ id: 9, cid: news, fromid: news });
  const { store, socket, client } = await chat({
    GetUnreadCountInBulk: (_, { method }) => ({
      unreads: method.includes("virtual") ? [{ cid: news, count: 2 }] : [{ cid: peer, count: 0 }],
    }),
    GetLocalHisMsg: (_, { method }) => ({
      outofcache: 1,
      msgs: method.includes("virtual") ? [paper] : [],
    }),
  });
  await until(() => store.conversations.status.value === "ready");
  store.open(news);
  await until(() => store.threads.of(news).value.messages.length === 1);
  assert.equal(store.faces.isVirtual(news), true);
  assert.equal(store.faces.isVirtual(peer), false);
  const other = message({ id: 10, cid: user("port"), fromid: user("port") });
  socket().notify("onReceiveSysMsg", { msgs: [other] });
  assert.equal(store.faces.isVirtual(user("port")), true);
  const single = socket().calls.filter(({ method }) => method.includes("singlemsg"));
  const cids = single.map(({ request }) => (request as IMMessage).cid?.nick);
  assert.equal(cids.includes("news") || cids.includes("port"), false);
  client.close();
});
