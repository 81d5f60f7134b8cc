import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import type { Browser } from "playwright-core";
import { call, channelPage, endsAnsweredOnce, user } from "./channel_page.ts";
import { Host } from "./host.ts";
import { type ChatPage, launch } from "./pages.ts";

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

interface FileRecord {
  type: number;
  fileMeta: { id: string; nodeName: string; nodeSize: string; md5: string };
}

const register = (chat: ChatPage) =>
  chat.page.evaluate(() =>
    window.invoke("workbench.im.event_register", "register_all", JSON.stringify({})),
  );
const heard = (chat: ChatPage, name: string) =>
  chat.connections.at(-1)!.received.filter((frame) => JSON.stringify(frame).includes(`"${name}"`));

async function until<T>(read: () => Promise<T> | T, holds: (value: T) => boolean): Promise<T> {
  for (let tries = 0; tries < 200; ++tries) {
    const value = await read();
    if (holds(value)) return value;
    await new Promise((resolve) => setTimeout(resolve, 50));
  }
  throw new Error("this never came");
}

test("files of a conversation are listed, fetched, cancelled and deleted", async () => {
  const harbor = await channelPage(browser, host.url, "harbor");
  const mariner = await channelPage(browser, host.url, "mariner");
  for (const chat of [harbor, mariner]) await register(chat);
  const ask = async (chat: ChatPage, method: string, request: unknown = {}) => {
    const { envelope, payload } = await call(chat, "im.filetransfer", method, request);
    assert.equal(envelope["code"], 0, `${method}: ${payload}`);
    return envelope;
  };
  const send = async (name: string, bytes: number) => {
    host.put(`files/${name}`, name.repeat(Math.ceil(bytes / name.length)).slice(0, bytes));
    const item = { type: 3, filepath: `files/${name}` };
    const sent = await call(harbor, "im.singlemsg", "SendNormalChatMsg", {
      cid: user("mariner"),
      msgbody: [item],
    });
    assert.equal(sent.envelope["code"], 0, sent.payload);
  };
  const owner = { type: 0, ...user("harbor") };
  const find = async (searchKey: string, count = 1) => {
    const page = await until(
      () => ask(mariner, "SearchCloudFiles", { count: 5, searchKey, nextkey: "", ...owner }),
      ({ filesList }) => (filesList as unknown[]).length >= count,
    );
    assert.equal(page["searchMethod"], 0);
    return (page["filesList"] as FileRecord[])[0]!;
  };
  for (const name of ["tides one.txt", "tides two.txt"]) await send(name, 1000);
  const file = await find("TIDES", 2);
  assert.equal(file.fileMeta.nodeName, "tides two.txt");
  assert.equal(file.fileMeta.nodeSize, "1000");

  const first = await ask(mariner, "GetCloudFileList", { count: 1, nextkey: "", ...owner });
  const second = await ask(mariner, "GetCloudFileList", {
    count: 1,
    nextkey: first["nextkey"],
    ...owner,
  });
  assert.equal((second["filesList"] as FileRecord[])[0]!.fileMeta.nodeName, "tides one.txt");

  const life = await ask(mariner, "GetFileExpireTime");
  assert.ok(Number(life["expireTime"]) > 0);
  await ask(mariner, "DownloadCloudFile", file);
  const here = await until(
    () => ask(mariner, "GetFileTransferInfo", file.fileMeta),
    ({ transferInfo }) => (transferInfo as { status: number }).status === 3,
  );
  const { filePath } = here["transferInfo"] as { filePath: string };
  assert.match(filePath, new RegExp(`^files/mariner-.*/${file.fileMeta.md5}.txt$`));
  await ask(mariner, "OpenFolder", { filePath });
  const preview = await ask(mariner, "PreviewCloudFile", await find("tides one"));
  assert.match((preview["transferInfo"] as { filePath: string }).filePath, /^files\/mariner-/);
  await until(
    () => heard(mariner, "onUpdateTransferInfo").length,
    (count) => count > 0,
  );
  await until(
    () => heard(mariner, "onUpdateCloudFileMeta").length,
    (count) => count > 0,
  );

  // Somebody else's identifiers do not help.
  const lighthouse = await channelPage(browser, host.url, "lighthouse");
  for (const method of ["DownloadCloudFile", "PreviewCloudFile", "DeleteCloudFile"]) {
    for (const request of [file, { ...file, ...user("mariner") }]) {
      const refused = await call(lighthouse, "im.filetransfer", method, request);
      assert.notEqual(refused.envelope["code"], 0, method);
    }
  }
  endsAnsweredOnce(lighthouse);
  await lighthouse.close();

  // A large one is stopped on its way to the server, and another one on its way here.
  await cancel(harbor, "CancelUploadFile", "onUpdateCloudFileMeta", () => send("up.bin", 2e8));
  await send("down.bin", 2e8);
  const large = await find("down.bin");
  const stopped = mariner.page.evaluate(
    ([down, meta]) =>
      Promise.all([
        window.call("im.filetransfer", "DownloadCloudFile", down!),
        new Promise((resolve) => setTimeout(resolve, 10)).then(() =>
          window.call("im.filetransfer", "CancelDownloadCloudFile", meta!),
        ),
      ]),
    [JSON.stringify(large), JSON.stringify(large.fileMeta)],
  );
  assert.equal(JSON.parse((await stopped)[1].payload).code, 0);

  const mine = { ...file, ...user("mariner") };
  await ask(harbor, "DeleteCloudFile", mine);
  await until(
    () => find("tides"),
    ({ fileMeta }) => fileMeta.nodeName === "tides one.txt",
  );
  for (const chat of [harbor, mariner]) {
    endsAnsweredOnce(chat);
    await chat.close();
  }
});

/** Cancels the upload that is told first while `send` runs. */
async function cancel(chat: ChatPage, method: string, event: string, send: () => Promise<void>) {
  const before = heard(chat, event).length;
  const sending = send();
  const told = await until(
    () => heard(chat, event)[before],
    (frame) => frame !== undefined,
  );
  const id = /\\?"id\\?":\\?"(-\d+)/.exec(JSON.stringify(told))![1];
  const { envelope, payload } = await call(chat, "im.filetransfer", method, { id });
  assert.equal(envelope["code"], 0, payload);
  await sending;
}
