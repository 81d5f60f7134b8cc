// Pages of one's own: the README's page as it stands there, served by the host; and a page of another
// origin, let in, refused, and left alone by its host.
import assert from "node:assert/strict";
import { once } from "node:events";
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { createServer, type Server } from "node:http";
import type { AddressInfo } from "node:net";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { after, before, test } from "node:test";
import type { Browser } from "playwright-core";
import type { BridgeClient } from "@imsdkbridge/client";
import { Host } from "./host.ts";
import { eventually, launch } from "./pages.ts";

declare global {
  interface Window {
    bridge: BridgeClient;
    said: string[];
  }
}

const folder = mkdtempSync(join(tmpdir(), "imsdkbridge-own-"));
let browser: Browser;
let elsewhere: Server;
let origin = "";

before(async () => {
  browser = await launch();
  // A development server: it has the client among its own files.
  elsewhere = createServer(({ url = "" }, answer) => {
    const script = /^\/client\/([\w-]+\.js)$/.exec(url)?.[1];
    answer.setHeader("Content-Type", script ? "text/javascript" : "text/html");
    answer.end(script ? readFileSync(join("client/dist", script)) : "<!doctype html>");
  });
  elsewhere.listen(0, "127.0.0.1");
  await once(elsewhere, "listening");
  origin = `http://127.0.0.1:${(elsewhere.address() as AddressInfo).port}`;
});
after(async () => {
  await browser?.close();
  elsewhere.close();
  rmSync(folder, { recursive: true, force: true });
});

/** The code blocks of one language in the README, in order. */
function blocks(language: string): string[] {
  const readme = readFileSync(join(process.cwd(), "../README.md"), "utf8");
  const fence = new RegExp("^```" + language + "\\n(.*?)^```", "gms");
  return [...readme.matchAll(fence)].map(([, code]) => code!);
}

test("the README's page chats, shows pictures, and comes back after its host", async () => {
  writeFileSync(join(folder, "index.html"), blocks("html")[0]!);
  writeFileSync(join(folder, "page.js"), blocks("js")[0]!);
  const host = new Host(["--pages", folder]);
  await host.start();
  try {
    const page = await browser.newPage();
    const troubles: string[] = [];
    page.on("pageerror", (error) => troubles.push(error.message));
    await page.goto(host.url);
    await page.locator("li").first().waitFor();
    const shown = await page.locator("li").count();
    const pictures = page.locator("img");
    assert.ok((await pictures.count()) > 0, "the demo set has pictures");
    await eventually(
      () =>
        pictures.evaluateAll((all) =>
          all.every((one) => (one as HTMLImageElement).naturalWidth > 0),
        ),
      "the pictures",
    );
    const file = await page.request.get((await page.locator("a").first().getAttribute("href"))!);
    assert.equal(file.status(), 200, "the demo set has a file");

    await page.locator("input").fill("Ahoy/:smile!");
    await page.getByRole("button").click();
    await page.locator("li", { hasText: "Ahoy" }).waitFor();
    assert.equal(await page.locator("li").count(), shown + 1);
    await page.locator("input").fill("");
    await page.getByRole("button").click();
    await page.locator("output", { hasText: "the message is empty" }).waitFor();

    await host.end("SIGKILL");
    await page.locator("output", { hasText: "reconnecting" }).waitFor();
    await host.start();
    await page.locator("output", { hasText: "open" }).waitFor();
    await page.locator("li", { hasText: "Ahoy" }).waitFor();
    assert.deepEqual(troubles, []);
    await page.close();
  } finally {
    await host.remove();
  }
});

test("a page of the named origin comes in, with modules, calls and pictures", async () => {
  const host = new Host(["--origin", origin]);
  await host.start();
  try {
    const page = await browser.newPage();
    await page.goto(origin);
    const width = await page.evaluate(async (address) => {
      const { connect } = await import(new URL("/client/index.js", address).href);
      const bridge: BridgeClient = connect({ url: address });
      const userid = { appkey: "cnbazaro", nick: "harbor" };
      await bridge.login.DoLoginByPassWord({ userid, password: "demo" });
      const cid = { ...userid, nick: "lighthouse" };
      const { pictures } = await bridge.singlemsg.GetMsgPicture({ cid, count: 1 });
      const picture = new Image();
      picture.src = bridge.fileUrl(decodeURIComponent(pictures[0]!.url));
      await picture.decode();
      bridge.close();
      return picture.naturalWidth;
    }, host.url);
    assert.ok(width > 0);
    await page.close();
  } finally {
    await host.remove();
  }
});

test("a page of another origin learns why it is refused; one whose host goes fails at once", async () => {
  const host = new Host();
  const program = { program: "sleep", args: ["30"], enable: 1 };
  host.put("translation.json", JSON.stringify(program));
  await host.start();
  try {
    const refused = await browser.newPage();
    await refused.goto(origin);
    const reason = await refused.evaluate(async (address) => {
      const { connect } = await import(`${location.origin}/client/index.js`);
      const bridge: BridgeClient = connect({ url: address });
      const state = () => (bridge.state === "refused" ? bridge.reason : undefined);
      return (
        state() ?? new Promise<string>((done) => bridge.onState(() => state() && done(state()!)))
      );
    }, host.url);
    assert.match(reason, new RegExp(`^origin not allowed: ${origin} .*--origin`));
    await refused.close();

    const page = await browser.newPage();
    await page.goto(host.url);
    await page.evaluate(async () => {
      const { connect } = await import(`${location.origin}/client/index.js`);
      const bridge: BridgeClient = (window.bridge = connect());
      window.said = [];
      const userid = { appkey: "cnbazaro", nick: "harbor" };
      await bridge.login.DoLoginByPassWord({ userid, password: "demo" });
      const cid = { ...userid, nick: "lighthouse" };
      const { msgs } = await bridge.singlemsg.GetLocalHisMsg({ cid, count: 20, gohistory: 1 });
      const { msgid } = msgs.find(({ msgtype }) => msgtype === 0)!;
      bridge.singlemsg
        .GetTranslateMsg({ msgid, msgcontent: "wind" })
        .catch(({ kind }) => window.said.push(kind));
    });
    const killed = Date.now();
    await host.end("SIGKILL");
    await eventually(() => page.evaluate(() => window.said.length > 0), "the open call's end");
    assert.ok(Date.now() - killed < 3000);
    assert.deepEqual(await page.evaluate(() => window.said), ["disconnected"]);
    await page.close();
  } finally {
    await host.remove();
  }
});
