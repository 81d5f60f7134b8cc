import assert from "node:assert/strict";
import type { Browser } from "playwright-core";
import { ChatPage } from "./pages.ts";

export interface Answer {
  failed: boolean;
  payload: string;
}
export type Call = (path: string, method: string, json: string) => Promise<Answer>;
/** What one logs in or writes to. */
export interface User {
  appkey: string;
  nick: string;
}

declare global {
  interface Window {
    /** Calls a method of a module; for what is no module's: what a frame names as its method. */
    call: Call;
    invoke: Call;
  }
}

/** A page that is nothing but a script channel of `account`, or of nobody. */
export async function channelPage(
  browser: Browser,
  address: string,
  account: string,
  wild = false,
): Promise<ChatPage> {
  const chat = await ChatPage.open(browser, address);
  chat.wild = wild;
  await chat.page.evaluate(async (nick) => {
    const socket = new WebSocket(`ws://${location.host}/channel${location.search}&account=${nick}`);
    const waiting = new Map<string, (answer: Answer) => void>();
    let seq = 0;
    socket.onmessage = ({ data }) => {
      const frame = JSON.parse(data as string);
      if (frame.kind === "answer") waiting.get(frame.seq)!(frame);
    };
    await new Promise((resolve) => (socket.onopen = resolve));
    window.invoke = (method, name, json) => {
      const args = [`s${++seq}`, name, json];
      const answered = new Promise<Answer>((resolve) => waiting.set(args[0]!, resolve));
      socket.send(JSON.stringify({ kind: "invoke", method, args }));
      return answered;
    };
    window.call = (path, method, json) =>
      window.invoke(`${path.startsWith("im.") ? "workbench." : ""}${path}.invoke`, method, json);
  }, account);
  return chat;
}

export function user(nick: string): User {
  return { appkey: "cnbazaro", nick };
}

/** What was answered to a frame with this method; `envelope` is the payload that was read. */
export async function invoke(chat: ChatPage, method: string, name: string, request: unknown) {
  const answer = await chat.page.evaluate(
    ([method, name, json]) => window.invoke(method!, name!, json!),
    [method, name, JSON.stringify(request)],
  );
  const envelope = JSON.parse(answer.payload) as Record<string, unknown>;
  assert.deepEqual(Object.keys(envelope).slice(0, 3), ["code", "subcode", "result"], name);
  return { ...answer, envelope };
}

/** The same for a method of a module. */
export function call(chat: ChatPage, path: string, name: string, request: unknown) {
  return invoke(chat, `workbench.${path}.invoke`, name, request);
}

/** Every call that was sent on the page's last connection has its one answer. */
export function endsAnsweredOnce(chat: ChatPage): void {
  const channel = chat.connections.at(-1)!;
  const answered = channel.received.filter(({ kind }) => kind === "answer").map(({ seq }) => seq);
  assert.equal(new Set(answered).size, answered.length);
  assert.equal(answered.length, channel.sent.length);
}
