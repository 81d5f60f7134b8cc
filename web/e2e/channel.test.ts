import assert from "node:assert/strict";
import { request } from "node:http";
import { after, before, test } from "node:test";
import type { Browser } from "playwright-core";
import { Host } from "./host.ts";
import { ChatPage, eventually, launch } from "./pages.ts";

const host = new Host();
let browser: Browser;

before(async () => {
  await host.start();
  browser = await launch();
});
after(async () => {
  await browser?.close();
  await host.remove();
});

test("a reload in the middle of 1,000 open calls brings none of their answers to the new page", async () => {
  const chat = await ChatPage.signedIn(browser, host.url, "harbor");
  await chat.sendEntries("harbor", "lighthouse", 200);
  const first = chat.connections.length;
  await chat.page.evaluate(async () => {
    const { connect } = await import(`${location.origin}/client/index.js`);
    const user = (nick: string) => ({ appkey: "cnbazaro", nick });
    const client = connect();
    await client.login.DoLoginByPassWord({ userid: user("harbor"), password: "demo" });
    const request = { cid: user("lighthouse"), count: 200, gohistory: 1 };
    for (let index = 0; index < 1000; index++) {
      client.singlemsg.GetLocalHisMsg(request).catch(() => {});
    }
    location.reload();
  });
  await chat.row("lighthouse").waitFor();
  await eventually(() => chat.connections.length === first + 2, "the new page's connection");
  const [old, fresh] = chat.connections.slice(first);
  const open = old!.sent.filter(({ args }) => args?.[1] === "GetLocalHisMsg");
  assert.equal(open.length, 1000);
  const answered = old!.received.filter(({ kind }) => kind === "answer").length;
  assert.ok(answered < 1000, `all ${answered} calls were answered before the reload`);

  await chat.row("lighthouse").click();
  await chat.page.locator(".message").first().waitFor();
  const asked = new Set(fresh!.sent.map(({ args }) => args![0]));
  const answers = fresh!.received.filter(({ kind }) => kind === "answer");
  assert.ok(answers.length > 5, "the new page gets its own answers");
  for (const { seq } of answers) assert.ok(asked.has(seq!), `foreign answer ${seq}`);
  await chat.close();
});

test("bad frames are refused with a reason and the connection stays", async () => {
  const chat = await ChatPage.open(browser, host.url);
  chat.wild = true;
  const frames = [
    "{",
    "[]",
    "null",
    '{"kind":"other"}',
    '{"kind":"invoke"}',
    '{"kind":"invoke","method":5,"args":["s","m","{}"]}',
    '{"kind":"invoke","method":"workbench.im.login.invoke","args":{}}',
    "[".repeat(100_000),
  ];
  const good = '{"kind":"invoke","method":"workbench.im.login.invoke","args":["s","Nothing","{}"]}';
  const replies = await chat.page.evaluate(
    async ({ frames, good }) => {
      const socket = new WebSocket(`ws://${location.host}/channel${location.search}`);
      const replies: string[] = [];
      await new Promise<void>((resolve, reject) => {
        socket.onclose = reject;
        socket.onmessage = ({ data }) => {
          replies.push(data as string);
          if (replies.length === 1) for (const frame of [...frames, good]) socket.send(frame);
          if (replies.length === frames.length + 2) resolve();
        };
      });
      socket.onclose = null;
      socket.close();
      return replies;
    },
    { frames, good },
  );
  const [hello, ...rest] = replies.map((text) => JSON.parse(text) as Record<string, unknown>);
  assert.equal(hello!["kind"], "hello");
  frames.forEach((frame, index) => {
    assert.equal(rest[index]!["kind"], "refused", frame.slice(0, 80));
    assert.notEqual(rest[index]!["reason"] ?? "", "", frame.slice(0, 80));
  });
  assert.deepEqual([rest.at(-1)!["kind"], rest.at(-1)!["failed"]], ["answer", true]);
  await chat.close();
});

test("a wrong token shows its reason, and the right address works afterwards", async () => {
  const chat = await ChatPage.open(browser, host.address("/?token=wrong"));
  await chat.page.getByRole("alert").getByText("bad token").waitFor();
  await chat.page.goto(host.url);
  await chat.page.getByLabel("Account").waitFor();
  await chat.close();
});

/** Status of a plain HTTP request, sent as it stands: no client tidies up its path. */
function status(path: string, headers: Record<string, string>): Promise<number> {
  return new Promise((resolve, reject) => {
    const sent = request({ host: "127.0.0.1", port: host.port, path, headers }, (answer) => {
      answer.resume();
      resolve(answer.statusCode ?? 0);
    });
    sent.on("upgrade", (answer, socket) => {
      socket.destroy();
      resolve(answer.statusCode ?? 0);
    });
    sent.on("error", reject);
    sent.end();
  });
}

test("foreign origins, wrong tokens and paths out of the data folder are refused", async () => {
  const upgrade = {
    Connection: "Upgrade",
    Upgrade: "websocket",
    "Sec-WebSocket-Version": "13",
    "Sec-WebSocket-Key": "AAAAAAAAAAAAAAAAAAAAAA==",
  };
  const token = `token=${host.token}`;
  const own = { Origin: `http://127.0.0.1:${host.port}` };
  const cases: [path: string, headers: Record<string, string>, expected: number[]][] = [
    [`/channel?${token}`, { ...upgrade, ...own }, [101]],
    [`/channel?${token}`, { ...upgrade, Origin: "http://evil.example" }, [403]],
    [`/channel?${token}`, { ...upgrade, Origin: "null" }, [403]],
    ["/channel?token=wrong", { ...upgrade, ...own }, [401]],
    ["/channel", { ...upgrade, ...own }, [401]],
    [`/health?${token}`, {}, [200]],
    ["/health", {}, [401]],
    [`/file?path=../../../../etc/passwd&${token}`, {}, [403, 404]],
    [`/file?path=%2Fetc%2Fpasswd&${token}`, {}, [403, 404]],
    [`/file?path=files%2F..%2F..%2F..%2Fetc%2Fpasswd&${token}`, {}, [403, 404]],
    ["/file?path=x", {}, [401]],
    ["/../../../../etc/passwd", {}, [400, 403, 404]],
    ["/chat/..%2f..%2f..%2fpackage.json", {}, [400, 403, 404]],
  ];
  for (const [path, headers, expected] of cases) {
    const got = await status(path, headers);
    assert.ok(expected.includes(got), `${path} gave ${got}, not ${expected}`);
  }
});
