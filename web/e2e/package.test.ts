// The page client as others get it: packed, installed in an empty folder, type-checked and used.
import assert from "node:assert/strict";
import { execFileSync, spawnSync } from "node:child_process";
import { mkdtempSync, readdirSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { createRequire } from "node:module";
import { tmpdir } from "node:os";
import { dirname, join } from "node:path";
import { after, test } from "node:test";
import { gzipSync } from "node:zlib";

const folder = mkdtempSync(join(tmpdir(), "imsdkbridge-package-"));
after(() => rmSync(folder, { recursive: true, force: true }));
const client = join(process.cwd(), "client");

const page = `
import { connect } from "@imsdkbridge/client";
import { memoryHost } from "@imsdkbridge/client/memory";
const host = memoryHost({ "im.singlemsg": { GetUnreadCount: () => ({ count: 3 }) } });
const bridge = connect({ channel: host.channel });
const cid = { appkey: "cnbazaro", nick: "lighthouse" };
bridge.on("onReceiveNewMsg", ({ msgs }) => console.log(msgs.length));
const { count } = await bridge.singlemsg.GetUnreadCount({ cid });
console.log(count);
bridge.close();
`;

test("the packed client installs, checks types and works without anything else", () => {
  const npm = (...args: string[]) =>
    execFileSync("npm", [...args, "--offline", "--no-audit", "--no-fund"], {
      cwd: folder,
      encoding: "utf8",
      stdio: ["ignore", "pipe", "ignore"],
    });
  const packed = npm("pack", client).trim().split("\n").at(-1)!;
  writeFileSync(join(folder, "package.json"), '{"type":"module","private":true}');
  npm("install", `./${packed}`);
  const installed = join(folder, "node_modules/@imsdkbridge/client");
  const about = JSON.parse(readFileSync(join(installed, "package.json"), "utf8")) as {
    license?: string;
    dependencies?: object;
  };
  assert.ok(about.license);
  assert.equal(about.dependencies, undefined);
  assert.ok(readdirSync(installed).includes("README.md"));
  const scripts = readdirSync(join(installed, "dist")).filter((name) => name.endsWith(".js"));
  const code = scripts.map((name) => readFileSync(join(installed, "dist", name)));
  const compressed = gzipSync(Buffer.concat(code)).length;
  assert.ok(compressed < 7000, `${compressed} bytes of code`);

  const run = spawnSync(process.execPath, ["--input-type=module", "--eval", polyfill + page], {
    cwd: folder,
    encoding: "utf8",
  });
  assert.equal(run.stdout.trim(), "3", run.stderr);

  const wrong = [
    ["{ cid }", "{ cdi: cid }"],
    ["{ msgs }", "{ msgz }"],
    ["{ count }", "{ counts }"],
    ["count: 3", 'count: "3"'],
  ] as const;
  assert.deepEqual(typeErrors(page), []);
  for (const [good, bad] of wrong) {
    assert.notDeepEqual(typeErrors(page.replace(good, bad)), [], bad);
  }
});

// Browsers have this everywhere; Node has it from version 19 on.
const polyfill = 'globalThis.crypto ??= (await import("node:crypto")).webcrypto;';

function typeErrors(source: string): string[] {
  writeFileSync(join(folder, "page.ts"), source);
  const typescript = createRequire(join(client, "x.js")).resolve("typescript/package.json");
  const flags = ["--noEmit", "--strict", "--target", "es2022", "--module", "nodenext"];
  const lib = ["--lib", "es2022,dom", "--types", ""];
  const tsc = join(dirname(typescript), "bin/tsc");
  const checked = spawnSync(process.execPath, [tsc, ...flags, ...lib, "page.ts"], {
    cwd: folder,
    encoding: "utf8",
  });
  return checked.stdout.split("\n").filter((line) => line.includes("error"));
}
