import assert from "node:assert/strict";
import { fileURLToPath } from "node:url";
import { after, before, test } from "node:test";
import type { Browser, Page } from "playwright-core";
import { eventually, launch } from "./pages.ts";
import { entry, history, PlayedHost, user } from "./played_host.ts";

const count = 100_000;
const picture = "pic:impicture|M?filepath=p.svg&fileMD5=M&filetype=png";
/** Rows of very different heights; every fiftieth is a picture that comes late. */
const bodies = ["short", "two\nlines", "words ".repeat(60), "a\nb\nc\nd\ne", "medium ".repeat(12)];
const messages = Array.from({ length: count }, (_, id) =>
  id % 50 === 7
    ? entry(id, { msgtype: 1, msgbody: picture })
    : entry(id, {
        msgbody: `#${id} ${bodies[id % bodies.length]}`,
        ...(id % 3 === 0 && { fromid: user("me"), toid: user("peer"), msgstatus: 1 }),
      }),
);
const drawing = `<svg xmlns="http://www.w3.org/2000/svg" width="300" height="180"><rect width="300" height="180"/></svg>`;

// The page is served from where the test runs: web/.
const folder = fileURLToPath(new URL(`file://${process.cwd()}/dist`));
const hosts: PlayedHost[] = [];
let browser: Browser;
before(async () => {
  browser = await launch();
});
after(async () => {
  await browser?.close();
  for (const host of hosts) host.stop();
});

async function openList(pageSize: number): Promise<{ page: Page; host: PlayedHost }> {
  const host = new PlayedHost(folder, {
    GetLocalHisMsg: history(messages, pageSize),
    SearchMsgByID: ({ msgid }: { msgid: string }) => ({
      outofcache: 1,
      msgs: messages.filter((message) => message.msgid === msgid),
    }),
    SearchDBMsg: () => ({ totalcount: 1, totalpage: 1, msgs: [messages[500]] }),
    ConvertMsgText2Emotion: (request) => request,
    SendNormalChatMsg: () => ({}),
  });
  hosts.push(host);
  const page = await (await browser.newContext()).newPage();
  await page.route(/\/file\?/, async (route) => {
    await new Promise((resolve) => setTimeout(resolve, 150));
    await route.fulfill({ body: drawing, contentType: "image/svg+xml" });
  });
  await host.play(page);
  await page.goto(await host.start());
  await page.locator('.conversation[data-nick="peer"]').click();
  await row(page, count - 1).waitFor();
  return { page, host };
}

const row = (page: Page, id: number) => page.locator(`[data-msgid="${messages[id]!.msgid}"]`);
const gapToEnd = (page: Page) =>
  page
    .locator(".messages")
    .evaluate((list) => list.scrollHeight - list.scrollTop - list.clientHeight);
const topOf = async (page: Page, id: number) => (await row(page, id).boundingBox())!.y;

test("100,000 messages scroll without stutter", async (context) => {
  const { page } = await openList(count);
  assert.ok((await page.locator(".row").count()) < 80, "only rows in sight exist");
  // Scrolls as fast as somebody spins a wheel, a frame at a time, and measures each frame.
  const frames = await page.locator(".messages").evaluate(async (list) => {
    const frame = () => new Promise<number>((resolve) => requestAnimationFrame(resolve));
    const times: number[] = [];
    let blank = 0;
    let before = await frame();
    for (let step = 0; step < 400; step++) {
      list.scrollTop -= step % 100 === 99 ? 50_000 : 120;
      const now = await frame();
      times.push(now - before);
      before = now;
      const box = list.getBoundingClientRect();
      const middle = document.elementFromPoint(box.x + box.width / 2, box.y + box.height / 2);
      if (!middle?.closest(".row")) blank++;
    }
    return { times: times.sort((a, b) => a - b), blank };
  });
  const at = (part: number) => frames.times[Math.floor(frames.times.length * part)]!;
  const [median, late, longest] = [at(0.5), at(0.95), frames.times.at(-1)!];
  const words = [median, late, longest].map((time) => `${time.toFixed(1)} ms`).join(", ");
  context.diagnostic(`frames: median, 95th part, longest: ${words}; blank: ${frames.blank}`);
  assert.ok(median < 34 && late < 67, `frames take ${words}`);
  assert.ok(frames.blank < 20, `${frames.blank} frames of 400 had nothing in the middle`);
  await page.context().close();
});

test("the list keeps the end, keeps its place, and jumps", async () => {
  const { page, host } = await openList(40);
  const list = page.locator(".messages");
  await eventually(async () => (await gapToEnd(page)) < 2, "the end, once late pictures are there");
  await page.locator("textarea").fill("1\n2\n3\n4\n5");
  await eventually(async () => (await gapToEnd(page)) < 2, "the end, above a taller composer");
  const live = entry(count, { msgbody: "live" });
  host.notify("onReceiveNewMsg", { msgs: [live] });
  await page.locator(".message", { hasText: /^live/ }).waitFor();
  await eventually(async () => (await gapToEnd(page)) < 2, "the end, after a live message");

  // Reading in the past, neither older nor newer messages move what is read.
  const asked = () => host.requests.filter(({ name }) => name === "GetLocalHisMsg").length;
  const known = asked();
  await list.evaluate((element) => (element.scrollTop = 400));
  await eventually(() => asked() > known, "an older page");
  await eventually(async () => (await page.locator(".spinner").count()) === 0, "the page is there");
  const id = await list.evaluate((element) => {
    const { top } = element.getBoundingClientRect();
    const rows = [...element.querySelectorAll<HTMLElement>("[data-msgid]")];
    const read = rows.find((one) => one.getBoundingClientRect().top > top + 100)!;
    return Number(read.dataset["msgid"]) - 1_000_000;
  });
  const before = await topOf(page, id);
  host.notify("onReceiveNewMsg", { msgs: [entry(count + 1, { msgbody: "later" })] });
  await list.evaluate((element) => (element.scrollTop -= 200));
  await eventually(async () => Math.abs((await topOf(page, id)) - before - 200) < 3, "its place");

  await page.keyboard.press("Control+f");
  await page.keyboard.type("short");
  const hit = row(page, 500);
  await hit.and(page.locator(".marked")).waitFor();
  const inSight = async () => {
    const [box, frame] = [await hit.boundingBox(), await list.boundingBox()];
    return box !== null && box.y > frame!.y && box.y + box.height < frame!.y + frame!.height;
  };
  await eventually(inSight, "the hit in sight");
  assert.equal(await hit.locator("mark").textContent(), "short");
  assert.equal(await page.locator(".message", { hasText: /^live/ }).count(), 0);
  await page.getByRole("button", { name: "To the newest message" }).click();
  await row(page, count - 1).waitFor();
  await eventually(async () => (await gapToEnd(page)) < 2, "back at the end");
  await page.context().close();
});
