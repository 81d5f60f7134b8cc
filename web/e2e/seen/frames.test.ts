// After all other end-to-end tests: what their frames showed, held against the description.
import assert from "node:assert/strict";
import { readdirSync, readFileSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import { test } from "node:test";
import jsonSchema from "@json-schema-tools/meta-schema";
import openRpc from "@open-rpc/meta-schema";
import Ajv from "ajv";
import { describe, FrameCheck, keepBetter, type Seen } from "../frames.ts";

const folder = process.env["IMSDK_FRAMES"]!;
const examplesFile = process.env["IMSDK_EXAMPLES"]!;
const description = describe();
const check = new FrameCheck(description);
const all = readdirSync(folder).map(
  (name) => JSON.parse(readFileSync(join(folder, name), "utf8")) as Seen,
);
const among = (list: "problems" | "reached" | "working" | "notified") =>
  new Set(all.flatMap((seen) => seen[list]));

test("the description is an OpenRPC document", () => {
  const ajv = new Ajv({ strict: false, validateFormats: false });
  const $id = "https://meta.json-schema.tools";
  ajv.addSchema({ ...jsonSchema, $id, $schema: undefined });
  const validate = ajv.compile({ ...openRpc, $schema: undefined });
  assert.ok(validate(description), ajv.errorsText(validate.errors));
});

test("every frame is as described", () => {
  assert.ok(all.length > 1, "the tests left what they saw");
  assert.deepEqual([...among("problems")], []);
});

test("every method that works was reached", () => {
  const reached = among("reached");
  const working = among("working");
  const methods = [...description.methods, ...description["x-host-methods"]];
  const missed = methods.map(({ name }) => name).filter((name) => !reached.has(name));
  const notified = among("notified");
  const silent = description["x-notifications"]
    .map(({ name }) => name)
    .filter((name) => !notified.has(name));
  const total = methods.length;
  console.log(`methods reached: ${total - missed.length} of ${total}`);
  for (const name of missed) console.log(`  not reached: ${name}`);
  const heard = description["x-notifications"].length;
  console.log(`notifications reached: ${heard - silent.length} of ${heard}`);
  for (const name of silent) console.log(`  not reached: ${name}`);
  assert.deepEqual(
    missed.filter((name) => working.has(name)),
    [],
  );
});

test("the examples of the reference are as described", () => {
  if (process.env["IMSDK_REFRESH"]) {
    const fresh: Seen["examples"] = { methods: {}, notifications: {} };
    for (const { examples } of all) {
      for (const [name, one] of Object.entries(examples.methods)) {
        keepBetter(fresh.methods, name, one);
      }
      for (const [name, one] of Object.entries(examples.notifications)) {
        keepBetter(fresh.notifications, name, one);
      }
    }
    const sorted = {
      methods: Object.fromEntries(Object.entries(fresh.methods).sort()),
      notifications: Object.fromEntries(Object.entries(fresh.notifications).sort()),
    };
    writeFileSync(examplesFile, `${JSON.stringify(sorted, null, 2)}\n`);
  }
  const kept = JSON.parse(readFileSync(examplesFile, "utf8")) as Seen["examples"];
  assert.deepEqual(check.seeExamples(kept), []);
  const without = [...among("reached")].filter((name) => !kept.methods[name]);
  assert.deepEqual(without, [], "take new ones with: ./dev generate --examples");
});
