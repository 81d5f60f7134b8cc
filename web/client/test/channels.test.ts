import assert from "node:assert/strict";
import { test } from "node:test";
import { BridgeError, connect, EngineCode, objectChannel } from "@imsdkbridge/client";
import { memoryHost } from "@imsdkbridge/client/memory";
import "./fake_socket.ts";

const user = (nick: string) => ({ appkey: "cnbazaro", nick });

test("a host in memory answers from its script, and notifies with the path", async () => {
  const host = memoryHost({
    "im.singlemsg": {
      GetUnreadCount: ({ cid }) => ({ count: cid?.nick === "mariner" ? 3 : 0 }),
      SetMsgRead: () => ({ code: -9, result: "no such conversation" }),
    },
  });
  const bridge = connect({ channel: host.channel });
  const heard: unknown[] = [];
  bridge.on("onReceiveSysMsg", (payload, path) => heard.push([payload, path]));
  const cid = user("mariner");
  const answer = await bridge.singlemsg.GetUnreadCount({ cid });
  assert.deepEqual(answer, { code: 0, subcode: 0, result: "", count: 3 });
  for (const [call, code, text] of [
    [bridge.singlemsg.SetMsgRead({ cid }), -9, "no such conversation"],
    [
      bridge.login.DoLogout({}),
      -2147467259,
      "failed without a reason; there may be no such method",
    ],
  ] as const) {
    await assert.rejects(call, (error) => {
      assert.ok(error instanceof BridgeError);
      assert.deepEqual([error.kind, error.code, error.text], ["failed", code, text]);
      return true;
    });
  }
  host.notify("onReceiveSysMsg", { msgs: [] }, "sysmsg");
  assert.deepEqual(heard, [[{ msgs: [] }, "sysmsg"]]);
  await bridge.raise("translateSetting", { enable: 1 });
  assert.deepEqual(
    host.calls.map(({ path, method }) => `${path} ${method}`),
    [
      "im.event_register register",
      "im.singlemsg GetUnreadCount",
      "im.singlemsg SetMsgRead",
      "im.login DoLogout",
      "im.event_notify translateSetting",
    ],
  );
  bridge.close();
});

test("a host that says it is gone fails what is open at once, and may come back", async () => {
  const host = memoryHost({ "im.singlemsg": { SetMsgRead: () => ({}) } });
  let connects = 0;
  const bridge = connect({
    channel: host.channel,
    timeout: 1000,
    onConnect: () => void connects++,
  });
  const states: string[] = [];
  bridge.onState((state) => states.push(state));
  await bridge.singlemsg.SetMsgRead({});
  const open = bridge.singlemsg.SetMsgRead({});
  host.restart();
  await assert.rejects(open, { kind: "disconnected" });
  await bridge.singlemsg.SetMsgRead({});
  assert.deepEqual(states, ["open", "reconnecting", "open"]);
  assert.equal(connects, 2);
  bridge.close();
});

test("a refusal says what its code means when the host says no more than that it failed", async () => {
  const { kEngineEmpty, kEngineBusy } = EngineCode;
  const answers = [
    [kEngineEmpty, "failed", /the message is empty/],
    [kEngineEmpty, "the note is empty", /^im.singlemsg SetMsgRead: the note is empty$/],
    [kEngineBusy, "", /too much is under way/],
    [-4711, "failed", /SetMsgRead: failed$/],
  ] as const;
  for (const [code, result, words] of answers) {
    const host = memoryHost({ "im.singlemsg": { SetMsgRead: () => ({ code, result }) } });
    const bridge = connect({ channel: host.channel });
    await assert.rejects(bridge.singlemsg.SetMsgRead({}), { code, message: words });
    bridge.close();
  }
});

test("an object of the host is opened, closed and opened again", async () => {
  const receivers: ((frame: string) => void)[] = [];
  let closed = 0;
  const hello = (view: number) => JSON.stringify({ kind: "hello", browserId: `view-${view}` });
  const bridge = connect({
    channel: objectChannel({
      open: (receive) => void receivers.push(receive),
      send: () => {},
      close: () => void closed++,
    }),
    timeout: 1000,
  });
  assert.equal(bridge.state, "connecting");
  receivers[0]!(hello(1));
  await Promise.resolve();
  assert.deepEqual([bridge.state, bridge.browserId], ["open", "view-1"]);
  bridge.close();
  bridge.close();
  assert.deepEqual([bridge.state, closed], ["closed", 1]);
  bridge.reconnect();
  receivers[0]!(hello(3)); // of what was closed
  assert.equal(bridge.state, "reconnecting");
  receivers[1]!(hello(2));
  await Promise.resolve();
  assert.deepEqual([bridge.state, bridge.browserId], ["open", "view-2"]);
  bridge.close();
});
