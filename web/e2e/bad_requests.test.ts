// What no page should send, made from the description: to every method, from a real page.
import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import type { Browser } from "playwright-core";
import { channelPage, type Answer } from "./channel_page.ts";
import { describe, resolved, type Method } from "./frames.ts";
import { Host } from "./host.ts";
import { launch } from "./pages.ts";

const host = new Host();
const description = describe();
let browser: Browser;

before(async () => {
  await host.start();
  browser = await launch();
});
after(async () => {
  await browser?.close();
  await host.remove();
});

/** A text of `count` times `repeat` between `head` and `tail`: it is made in the page. */
interface Bad {
  head: string;
  repeat?: string;
  count?: number;
  tail?: string;
  readable: boolean;
}

const values = ["null", "true", "7", "1.5", '"x"', "[]", "[[]]", "{}", '{"appkey":7}'];
/** Those of `values` that a key of this type may have. */
const right: Record<string, string[]> = {
  integer: ["7"],
  string: ['"x"'],
  array: ["[]"],
  object: ["{}"],
};

function badRequests({ params }: Method): Bad[] {
  const record = params[0] ? resolved(params[0].schema, description) : {};
  const bad: Bad[] = [
    { head: "{}", readable: record.type !== "array" },
    { head: "[]", readable: true },
    { head: "{oops", readable: false },
    { head: "", readable: false },
    { head: '"', repeat: "x", count: 1e6, tail: '"', readable: record.type !== "array" },
    { head: "x", repeat: "x", count: 1e6, readable: false },
    { head: "", repeat: "[", count: 200, readable: false },
  ];
  for (const [key, schema] of Object.entries(record.properties ?? {})) {
    const type = resolved(schema, description).type ?? "";
    for (const value of values) {
      if (right[type]?.includes(value)) continue;
      bad.push({ head: `{"${key}":${value}}`, readable: true });
    }
    const deep = { head: `{"${key}":${"[".repeat(200)}`, tail: `${"]".repeat(200)}}` };
    bad.push({ ...deep, readable: true });
  }
  return bad;
}

test("every method answers every bad request once, in the envelope", async () => {
  // Logging out comes last: it ends what the others need.
  const methods = [...description.methods].sort(
    (a, b) => Number(a.name.startsWith("im.login")) - Number(b.name.startsWith("im.login")),
  );
  const chat = await channelPage(browser, host.url, "harbor", true);
  let sent = 0;
  for (const method of methods) {
    const bad = badRequests(method);
    const dot = method.name.lastIndexOf(".");
    const answers: Answer[] = await chat.page.evaluate(
      ({ path, name, bad }) =>
        Promise.all(
          bad.map(({ head, repeat = "", count = 0, tail = "" }) =>
            window.call(path, name, head + repeat.repeat(count) + tail),
          ),
        ),
      { path: method.name.slice(0, dot), name: method.name.slice(dot + 1), bad },
    );
    sent += bad.length;
    for (const [index, { failed, payload }] of answers.entries()) {
      const what = `${method.name} ${bad[index]!.head.slice(0, 60)}: ${payload.slice(0, 200)}`;
      const envelope = JSON.parse(payload) as Record<string, unknown>;
      assert.deepEqual(Object.keys(envelope).slice(0, 3), ["code", "subcode", "result"], what);
      assert.equal(failed, envelope["code"] !== 0, what);
      const [refusal] = method.errors ?? [];
      if (bad[index]!.readable || !refusal) continue;
      assert.deepEqual(
        [envelope["code"], envelope["result"]],
        [refusal.code, refusal.message],
        what,
      );
    }
  }
  const channel = chat.connections.at(-1)!;
  const answered = channel.received.filter(({ kind }) => kind === "answer").map(({ seq }) => seq);
  assert.equal(new Set(answered).size, answered.length);
  assert.equal(answered.length, sent);
  await chat.close();
});
