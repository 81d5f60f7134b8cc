import { readFile } from "node:fs/promises";
import { createServer, type Server } from "node:http";
import { extname, join } from "node:path";
import type { IMPageRequest, IMMessage } from "@imsdkbridge/client";
import type { Page } from "playwright-core";

const types: Record<string, string> = {
  ".html": "text/html; charset=utf-8",
  ".js": "text/javascript; charset=utf-8",
  ".css": "text/css; charset=utf-8",
  ".json": "application/json",
  ".svg": "image/svg+xml",
};

export const user = (nick: string) => ({ appkey: "cnbazaro", nick });

/** A received message in the conversation with "peer". */
export function entry(id: number, fields: Partial<IMMessage> = {}): IMMessage {
  return {
    msgid: String(1_000_000 + id),
    msgtime: String(1_700_000_000_000 + id * 30_000),
    cid: user("peer"),
    fromid: user("peer"),
    toid: user("me"),
    msgtype: 0,
    msgstatus: 3,
    msgbody: `entry ${id}`,
    svrtime: "",
    readflag: 1,
    extinfo: { others: "", fixmsgread: 1, autochatmsg: 0, syschatmsg: 0 },
    ...fields,
  };
}

interface Invoke {
  method: string;
  args: [seq: string, name: string, json: string];
}

type Answers = Record<string, (request: never) => object>;

/**
 * A host that the test plays: it serves the built pages and answers by method name, for what a real
 * one could not show in a test's time. "me" is signed in; the rest comes from `answers`, where the
 * methods of virtual conversations stand as "virtual NAME".
 */
export class PlayedHost {
  readonly requests: { name: string; request: unknown }[] = [];
  #server: Server | undefined;
  #send: (frame: object) => void = () => {};

  constructor(
    readonly folder: string,
    readonly answers: Answers,
  ) {}

  /** Serves the pages; gives the chat's address. */
  async start(): Promise<string> {
    this.#server = createServer(async ({ url }, response) => {
      const path = new URL(url!, "http://x").pathname;
      const file = join(this.folder, path === "/" ? "index.html" : path);
      try {
        const content = await readFile(file);
        response.setHeader("Content-Type", types[extname(file)] ?? "application/octet-stream");
        response.end(content);
      } catch {
        response.writeHead(404).end();
      }
    });
    await new Promise<void>((resolve) => this.#server!.listen(0, "127.0.0.1", resolve));
    const { port } = this.#server.address() as { port: number };
    return `http://127.0.0.1:${port}/?token=t`;
  }

  stop(): void {
    this.#server?.close();
    this.#server?.closeAllConnections();
  }

  /** Answers the script channel of a page that is not opened yet. */
  async play(page: Page): Promise<void> {
    await page.routeWebSocket(/\/channel/, (socket) => {
      this.#send = (frame) => socket.send(JSON.stringify(frame));
      socket.onMessage((text) => {
        const { method, args } = JSON.parse(String(text)) as Invoke;
        const [seq, plain, json] = args;
        const name = method.includes("virtualmsg") ? `virtual ${plain}` : plain;
        const request = JSON.parse(json) as never;
        this.requests.push({ name, request });
        const answer = (this.answers[name] ?? defaults[name] ?? refuse)(request);
        const payload = JSON.stringify({ code: 0, subcode: 0, result: "", ...answer });
        const failed = "code" in answer && answer.code !== 0;
        this.#send({ kind: "answer", browserId: "view-1", seq, failed, payload });
      });
      this.#send({ kind: "hello", browserId: "view-1" });
    });
  }

  notify(event: string, payload: object): void {
    this.#send({ kind: "notify", event, payload: JSON.stringify(payload) });
  }
}

const refuse = () => ({ code: -2147467263, result: "not implemented" });
const defaults: Answers = {
  register: () => ({}),
  unregister: () => ({}),
  chatWindowState: () => ({}),
  GetCurrentLoginID: () => ({ userid: user("me") }),
  GetUnreadCountInBulk: () => ({ unreads: [{ cid: user("peer"), count: 0 }] }),
  GetUnreadCount: () => ({ count: 0 }),
  GetNewMsg: () => ({ outofcache: 1, msgs: [] }),
  GetTranslateSetting: () => ({ enable: 0 }),
};

/** Answers GetLocalHisMsg from `messages`, oldest first, with pages of `most`. */
export function history(messages: readonly IMMessage[], most: number) {
  const places = new Map(messages.map(({ msgid }, index) => [msgid, index]));
  return ({ msgid, gohistory, count }: IMPageRequest) => {
    const size = count === 1 ? 1 : most;
    const at = msgid ? places.get(msgid)! : messages.length;
    const start = gohistory ? Math.max(0, at - size) : at + 1;
    const end = gohistory ? at : Math.min(messages.length, at + 1 + size);
    const last = gohistory ? start === 0 : end === messages.length;
    return { outofcache: Number(last), msgs: messages.slice(start, end) };
  };
}
