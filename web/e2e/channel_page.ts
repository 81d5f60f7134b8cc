import type { Browser } from "playwright-core";
import { ChatPage } from "./pages.ts";

export interface Answer {
  failed: boolean;
  payload: string;
}
export type Call = (path: string, method: string, json: string) => Promise<Answer>;

declare global {
  interface Window {
    call: Call;
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
    window.call = (path, method, json) => {
      const args = [`s${++seq}`, method, json];
      const answered = new Promise<Answer>((resolve) => waiting.set(args[0]!, resolve));
      socket.send(JSON.stringify({ kind: "invoke", method: `workbench.${path}.invoke`, args }));
      return answered;
    };
  }, account);
  return chat;
}
