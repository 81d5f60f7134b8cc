import assert from "node:assert/strict";
import { test } from "node:test";
import { BridgeError, type Calls } from "@imsdkbridge/client";
import { backoffDelay } from "../src/backoff.ts";
import { rig, until } from "./fake_socket.ts";

const ok = { code: 0, subcode: 0, result: "success" };

test("events are registered by name, gathered, and dropped with the last handler", async () => {
  const { client, socket, problems } = rig();
  const seen: string[] = [];
  client.on("onReceiveNewMsg", () => seen.push("a"));
  socket().hello();
  await until(() => client.state === "open");
  assert.deepEqual(socket().calls[0]!.request, { events: ["onReceiveNewMsg"] });
  assert.equal(socket().calls[0]!.method, "workbench.im.event_register");

  const offBroken = client.on("onReceiveNewMsg", () => {
    throw new Error("handler trouble");
  });
  const offStatus = client.on("onSendMsgStatus", ({ msgid }) => seen.push(msgid));
  client.on("onMine", (payload) => seen.push(String(payload["x"])));
  await until(() => socket().named("register").length === 2);
  assert.deepEqual(socket().calls[1]!.request, { events: ["onSendMsgStatus", "onMine"] });

  socket().notify("onReceiveNewMsg", { msgs: [] });
  socket().notify("onSendMsgStatus", { msgid: "9" });
  socket().notify("onMine", { x: 1 });
  socket().notify("onNobody", {});
  assert.deepEqual(seen, ["a", "9", "1"]);
  assert.match(String(problems[0]), /handler trouble/);

  offBroken();
  offStatus();
  client.on("onIMLoginOK", () => {})();
  await until(() => socket().named("unregister").length === 1);
  assert.deepEqual(socket().named("unregister")[0]!.request, { events: ["onSendMsgStatus"] });
  assert.equal(socket().named("register").length, 2, "a handler that came and went costs no call");

  socket().notify("onSendMsgStatus", { msgid: "10" });
  assert.equal(seen.length, 3);
  client.close();
});

test("an event that the host does not know costs only itself", async () => {
  const { client, socket, problems } = rig();
  client.on("onSendNewMsg", () => {});
  client.on("onNonsense", () => {});
  socket().respond = ({ request }) => {
    const { events } = request as { events: string[] };
    return events.includes("onNonsense") ? { code: -1, result: "unknown event: onNonsense" } : {};
  };
  socket().hello();
  await until(() => socket().named("register").length === 3 && problems.length > 0);
  assert.deepEqual(
    socket()
      .named("register")
      .map(({ request }) => (request as { events: string[] }).events),
    [["onSendNewMsg", "onNonsense"], ["onSendNewMsg"], ["onNonsense"]],
  );
  assert.match(String(problems), /^[^,]*unknown event: onNonsense$/);
  client.close();
});

test("after a loss: sent calls reject, events register anew, the hook runs, then waiting calls go", async () => {
  let hook = async (direct: Calls) => void (await direct.login.DoLoginByToken({ token: "t" }));
  const { client, socket, sockets } = rig({ onConnect: (direct) => hook(direct) });
  const states: string[] = [];
  client.onState((state) => states.push(state));
  client.on("onSendNewMsg", () => {});
  socket().hello();
  socket().answer(socket().named("DoLoginByToken")[0]!, ok);
  await until(() => client.state === "open");

  const sent = client.login.DoLogout({});
  const rejected = assert.rejects(
    sent,
    (error) => error instanceof BridgeError && error.kind === "disconnected",
  );
  socket().close();
  await rejected;
  const waiting = client.singlemsg.SetMsgRead({});
  await until(() => sockets.length === 2);
  socket().hello();
  await until(() => socket().calls.length === 2);
  assert.deepEqual(
    socket().calls.map((call) => call.name),
    ["register", "DoLoginByToken"],
    "the waiting call is held back until the hook is done",
  );
  // A second loss in the middle of the hook starts over, and the old hook must not open the gate.
  socket().close();
  await until(() => sockets.length === 3);
  hook = () => Promise.reject(new Error("login refused"));
  socket().hello();
  await until(() => socket().named("SetMsgRead").length === 1);
  socket().answer(socket().named("SetMsgRead")[0]!, ok);
  await waiting;
  assert.deepEqual(states, ["open", "reconnecting", "open"]);
  client.close();
});

test("a host that is down is tried again; one that refuses the token is not", async () => {
  let refusal: Response | undefined;
  const { client, socket, sockets } = rig({}, () => refusal ?? new Response('{"ok":true}'));
  socket().close();
  await until(() => sockets.length === 2);
  assert.equal(client.state, "reconnecting");

  const waiting = client.login.DoLogout({});
  refusal = new Response('{"error":"bad token"}', { status: 401 });
  socket().close();
  await assert.rejects(
    waiting,
    (error) =>
      error instanceof BridgeError && error.kind === "refused" && error.text === "bad token",
  );
  assert.deepEqual([client.state, client.reason], ["refused", "bad token"]);
  await assert.rejects(client.login.DoLogout({}), { kind: "refused" });
  await new Promise((resolve) => setTimeout(resolve, 50));
  assert.equal(sockets.length, 2);

  client.reconnect();
  assert.equal(client.state, "connecting");
  socket().hello();
  await until(() => client.state === "open");
  assert.equal(client.reason, "");
  client.close();
});

test("what the host says of a page it does not take in decides whether to try on", async () => {
  const json = (status: number, error: string) =>
    new Response(JSON.stringify({ error }), { status });
  const cases: [answer: () => Response, state: string, reason: string][] = [
    [() => json(403, "origin not allowed"), "refused", "origin not allowed"],
    [() => json(404, "unknown account"), "refused", "unknown account"],
    [() => json(503, "the account cannot be logged in"), "reconnecting", "the account cannot"],
    [() => json(426, "WebSocket only"), "reconnecting", ""],
    [() => new Response("<!doctype html>"), "reconnecting", "127.0.0.1:1 has no script channel"],
    [() => new Response("", { status: 404 }), "reconnecting", "127.0.0.1:1 has no script channel"],
  ];
  for (const [answer, state, reason] of cases) {
    let asked = "";
    const fetch = async (address: unknown) => ((asked = String(address)), answer());
    const { client, socket, sockets } = rig({ account: "harbor", fetch: fetch as never });
    socket().close();
    if (state === "refused") await until(() => client.state === "refused");
    else await until(() => sockets.length === 3 || (socket().close(), false));
    assert.deepEqual([client.state, client.reason.slice(0, reason.length)], [state, reason]);
    assert.equal(client.reason === "", reason === "");
    assert.equal(asked, "http://127.0.0.1:1/channel?token=a%26b&account=harbor");
    client.close();
  }
});

test("the printed address is enough, and says where files are", () => {
  const { client, socket } = rig({ url: "http://127.0.0.1:8787/?token=abc", token: undefined });
  assert.equal(socket().url, "ws://127.0.0.1:8787/channel?token=abc");
  for (const [path, address] of [
    ["files/a b/c&d.png", "/file?path=files%2Fa+b%2Fc%26d.png&token=abc"],
    ["emotions/smile.svg", "/emotions/smile.svg"],
    ["emotions/../index.html", "/file?path=emotions%2F..%2Findex.html&token=abc"],
  ] as const) {
    assert.equal(client.fileUrl(path), `http://127.0.0.1:8787${address}`);
  }
  client.close();
});

test("a client that is closed while it asks for the reason stays closed", async () => {
  let answer = (_: Response) => {};
  const asked = new Promise<Response>((resolve) => (answer = resolve));
  const { client, socket, sockets } = rig({ fetch: () => asked });
  socket().close();
  await until(() => client.state === "reconnecting");
  client.close();
  answer(new Response('{"error":"bad token"}', { status: 401 }));
  await new Promise((resolve) => setTimeout(resolve, 40));
  assert.deepEqual([client.state, sockets.length], ["closed", 1]);
});

test("an attempt without a hello ends; frames that are none are reported and do no harm", async () => {
  const { client, socket, sockets, problems } = rig({ connectTimeout: 10 });
  await until(() => sockets.length === 2);
  socket().hello();
  await until(() => client.state === "open");
  socket().deliver("{");
  socket().deliver({ kind: "other" });
  socket().deliver({ kind: "refused", reason: "args is not an array" });
  assert.equal(problems.length, 3);
  assert.match(String(problems[2]), /args is not an array/);
  assert.equal(client.state, "open");
  client.close();
});

test("waits double up to the longest and stay in the upper half of their bound", () => {
  const options = { first: 250, longest: 8000 };
  for (const [attempt, bound] of [
    [0, 250],
    [1, 500],
    [4, 4000],
    [5, 8000],
    [5000, 8000],
  ] as const) {
    assert.equal(
      backoffDelay(attempt, options, () => 0),
      bound / 2,
    );
    assert.ok(backoffDelay(attempt, options, () => 0.999) < bound);
  }
});
