// What no page should send, made from the description: to every method, from a real page.
import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import type { Browser } from "playwright-core";
import { channelPage, type Answer } from "./channel_page.ts";
import { describe, resolved, type Method, type Schema } from "./frames.ts";
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
    { head: nested(200), readable: true },
    { head: nested(201), readable: false },
  ];
  for (const json of wrongTypes(record)) bad.push({ head: json, readable: true });
  for (const key of Object.keys(record.properties ?? {})) {
    bad.push({ head: `{"${key}":${nested(199)}}`, readable: true });
  }
  return bad;
}

function nested(levels: number): string {
  return "[".repeat(levels) + "]".repeat(levels);
}

/** Objects with one value of a wrong type each, at every key of a record and of those inside it. */
function wrongTypes(record: Schema): string[] {
  return Object.entries(record.properties ?? {}).flatMap(([key, of]) => {
    const schema = resolved(of, description);
    const type = schema.type ?? "";
    const wrong = values.filter((value) => !right[type]?.includes(value));
    const inside = schema.items
      ? wrongTypes(resolved(schema.items, description)).map((json) => `[${json}]`)
      : wrongTypes(schema);
    return [...wrong, ...inside].map((json) => `{"${key}":${json}}`);
  });
}

test("every method answers every bad request once, in the envelope", async () => {
  // Logging out comes last: it ends what the others need.
  const all = [...description.methods, ...description["x-host-methods"]];
  const methods = all.sort(
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
