import assert from "node:assert/strict";
import { test } from "node:test";
import { BridgeError, FailureCode, type BridgeErrorKind } from "@imsdkbridge/client";
import { rig, until } from "./fake_socket.ts";

const ok = { code: 0, subcode: 0, result: "success" };

/** Expects a rejection of this kind and code. */
async function rejects(call: Promise<unknown>, kind: BridgeErrorKind, code: number, text: RegExp) {
  await assert.rejects(call, (error: unknown) => {
    assert.ok(error instanceof BridgeError);
    assert.equal(error.kind, kind);
    assert.equal(error.code, code);
    assert.match(error.text, text);
    return true;
  });
}

test("a call waits for the hello, carries its three texts, and resolves with its own answer", async () => {
  const { client, socket } = rig();
  const one = client.singlemsg.GetUnreadCount({ cid: { appkey: "k", nick: "n" } });
  const two = client.invoke("im.tribemsg", "Anything", { x: 1 });
  assert.equal(new URL(socket().url).searchParams.get("token"), "a&b");
  assert.equal(socket().calls.length, 0);
  socket().hello();
  await until(() => socket().calls.length === 2);

  const [first, second] = socket().calls;
  assert.equal(first!.method, "workbench.im.singlemsg.invoke");
  assert.equal(first!.name, "GetUnreadCount");
  assert.deepEqual(first!.request, { cid: { appkey: "k", nick: "n" } });
  assert.equal(second!.method, "workbench.im.tribemsg.invoke");
  assert.notEqual(first!.seq, second!.seq);

  socket().answer(second!, { ...ok, y: 2 });
  socket().answer(second!, { ...ok, y: 3 });
  socket().answer(first!, { ...ok, count: 7 });
  socket().answer({ ...first!, seq: "other-page" }, ok);
  assert.deepEqual(await two, { ...ok, y: 2 });
  assert.equal((await one).count, 7);
  client.close();
});

test("failures keep code, sub-code and text; unreadable answers are told apart", async () => {
  const { client, socket } = rig();
  socket().hello();
  await until(() => client.state === "open");
  const answers: [object | string, boolean, BridgeErrorKind, number, RegExp][] = [
    [{ code: -5, subcode: 9, result: "wrong password" }, true, "failed", -5, /^wrong password$/],
    ["", true, "failed", FailureCode.failed, /no such method/],
    ["[1]", false, "unreadable", 0, /not JSON/],
    ["{", false, "unreadable", 0, /not JSON/],
  ];
  for (const [body, failed, kind, code, text] of answers) {
    const call = client.login.DoLogout({});
    socket().answer(socket().calls.at(-1)!, body, failed);
    await rejects(call, kind, code, text);
  }
  assert.equal(FailureCode.failed, -2147467259);
  client.close();
});

test("timeout and abort settle a call at once; its late answer is dropped", async () => {
  const { client, socket, problems } = rig();
  socket().hello();
  await until(() => client.state === "open");

  const slow = client.login.DoLogout({}, { timeout: 10 });
  await rejects(slow, "timeout", FailureCode.timeout, /within 10 ms/);
  const abort = new AbortController();
  const given = client.login.DoLogout({}, { signal: abort.signal });
  abort.abort();
  await rejects(given, "aborted", FailureCode.aborted, /given up/);
  for (const call of socket().calls) socket().answer(call, ok);

  const sent = socket().calls.length;
  const early = client.login.DoLogout({}, { signal: AbortSignal.abort() });
  await rejects(early, "aborted", FailureCode.aborted, /given up/);
  assert.equal(socket().calls.length, sent, "a call given up beforehand is not sent");
  assert.deepEqual(problems, []);
  client.close();
});

test("a call that times out while it waits for a connection is never sent", async () => {
  const { client, socket } = rig();
  await rejects(
    client.login.DoLogout({}, { timeout: 5 }),
    "timeout",
    FailureCode.timeout,
    /no connection within 5 ms/,
  );
  socket().hello();
  await until(() => client.state === "open");
  assert.equal(socket().calls.length, 0);
  client.close();
});

test("closing rejects sent and waiting calls, and later ones", async () => {
  const { client, socket, sockets } = rig();
  socket().hello();
  await until(() => client.state === "open");
  const sent = client.login.DoLogout({});
  client.close();
  await rejects(sent, "closed", FailureCode.connectionLost, /closed/);
  await rejects(client.login.DoLogout({}), "closed", FailureCode.connectionLost, /closed/);
  assert.equal(client.state, "closed");
  await new Promise((resolve) => setTimeout(resolve, 30));
  assert.equal(sockets.length, 1, "a closed client does not come back by itself");
});
