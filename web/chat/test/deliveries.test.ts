import assert from "node:assert/strict";
import { test } from "node:test";
import { IMMsgStatus, type IMUserID } from "@imsdkbridge/client";
import { samePeer } from "../src/store/peers.ts";
import { chat, message, until, user } from "./rig.ts";

interface Sent {
  cids: IMUserID[];
  msgid?: string;
}
const [a, b, c] = [user("a"), user("b"), user("c")];

/** A chat on a host that stores what is forwarded or broadcast, unless `refused` names the receiver. */
async function sending(refused: Record<string, string> = {}) {
  let nextId = 100;
  const stored: { nick: string; msgid: string; of: string }[] = [];
  const take = ({ cids, msgid = "" }: Sent) => {
    const { nick } = cids[0]!;
    if (refused[nick]) return { code: -11, result: refused[nick] };
    const id = nextId++;
    stored.push({ nick, msgid: String(id), of: msgid });
    const body = msgid ? `text ${msgid}` : "all hands";
    const msgs = [message({ id, from: "me", cid: cids[0]!, body })];
    // Events may be there before the answer, and after it.
    if (id % 2) rig.socket().notify("onSendNewMsg", { msgs });
    else setTimeout(() => rig.socket().notify("onSendNewMsg", { msgs }), 1);
    return {};
  };
  const rig = await chat({
    ForwardChatMsg: take,
    SendBroadcastMsg: take,
    SearchMsgByID: ({ cid, msgid }: { cid: IMUserID; msgid: string }) => {
      const msgstatus = ({ a: 1, b: 2 } as const)[cid.nick] ?? 0;
      return { outofcache: 1, msgs: [message({ id: Number(msgid), cid, msgstatus })] };
    },
    ReSendChatMsg: ({ cid }: { cid: IMUserID }) =>
      refused[cid.nick] ? { code: -11, result: refused[cid.nick] } : {},
  });
  const status = async (nick: string, result = "") => {
    await until(() => stored.some((one) => one.nick === nick));
    // The message is announced before its status.
    await new Promise((resolve) => setTimeout(resolve, 5));
    for (const { msgid } of stored.filter((one) => one.nick === nick)) {
      const code = result ? -4 : 0;
      rig.socket().notify("onSendMsgStatus", { code, result, msgid, svrtime: "9" });
    }
  };
  const toast = () => rig.store.toasts.all.value.at(-1);
  return { ...rig, stored, status, toast, refused };
}

test("forwarding tells who was reached by the status events, names who was not, and tries again", async () => {
  const { store, socket, stored, status, toast, client } = await sending();
  const messages = [message({ id: 1 }), message({ id: 2 })];
  assert.equal(await store.deliveries.forward(messages, [a, b, c]), "");
  assert.deepEqual(
    stored.filter(({ nick }) => nick === "b").map(({ of }) => of),
    ["1", "2"],
    "each receiver gets them in order",
  );
  assert.equal(toast()?.text, "Forwarding to a, b, c…");
  await status("a");
  assert.equal(toast()?.text, "Forwarding to b, c…");
  await status("b", "no such user");
  assert.equal(toast()?.text, "Forwarding to c… Not forwarded to b: no such user.");
  await status("c");
  assert.equal(toast()?.text, "Forwarded to a, c. Not forwarded to b: no such user.");
  assert.deepEqual([toast()?.kind, toast()?.lasting], ["problem", true]);
  // The list tells it too, though that conversation was never opened.
  const line = store.conversations.sorted.value.find(({ cid }) => samePeer(cid, user("b")));
  assert.equal(line?.last?.msgstatus, IMMsgStatus.kMsgFailed);

  toast()!.action!.run();
  const again = stored.filter(({ nick }) => nick === "b").map(({ msgid }) => msgid);
  await until(() => socket().named("ReSendChatMsg").length === 2);
  assert.deepEqual(
    socket()
      .named("ReSendChatMsg")
      .map(({ request }) => (request as Sent).msgid),
    again,
    "the messages are there already: they are sent again, not doubled",
  );
  assert.equal(store.toasts.all.value.length, 1, "one toast tells how it stands");
  await status("b");
  assert.equal(toast()?.text, "Forwarded to a, b, c");
  assert.equal(toast()?.lasting, false);
  client.close();
});

test("what the host refuses for one is told, and sent anew by a retry; refused for all it stays", async () => {
  const { store, socket, status, toast, refused, client } = await sending({ b: "busy" });
  assert.equal(await store.deliveries.broadcast("all hands", [b]), "busy");
  assert.deepEqual(store.toasts.all.value, [], "the dialog tells it");

  assert.equal(await store.deliveries.broadcast("all hands", [a, b, c]), "");
  await status("a");
  await status("c");
  assert.equal(toast()?.text, "Sent to a, c. Not sent to b: busy.");
  delete refused["b"];
  const before = socket().named("SendBroadcastMsg").length;
  toast()!.action!.run();
  await status("b");
  assert.equal(toast()?.text, "Sent to a, b, c");
  assert.equal(socket().named("SendBroadcastMsg").length, before + 1);
  client.close();
});

test("after a lost connection the history tells what became of forwarded messages", async () => {
  const { store, toast, interrupt, stored, client } = await sending();
  assert.equal(await store.deliveries.forward([message({ id: 1 })], [a, b, c]), "");
  await new Promise((resolve) => setTimeout(resolve, 5));
  assert.equal(stored.length, 3);
  await interrupt();
  await until(() => /b: it was not sent/.test(toast()?.text ?? ""));
  assert.equal(toast()?.text, "Forwarding to c… Not forwarded to b: it was not sent.");
  client.close();
});
