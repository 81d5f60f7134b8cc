import { webcrypto } from "node:crypto";
import { connect, type BridgeClient, type ConnectOptions } from "@imsdkbridge/client";

// Browsers have this everywhere; Node has it from version 19 on.
globalThis.crypto ??= webcrypto as Crypto;

/** What a page sent: the invoke frame, taken apart. */
export interface SentCall {
  method: string;
  seq: string;
  name: string;
  request: unknown;
}

/** One connection in memory, played from the host's side by the test. */
export class FakeSocket extends EventTarget {
  readonly calls: SentCall[] = [];
  /** Answers calls by itself with what this gives; `undefined` leaves a call open. */
  respond: (call: SentCall) => object | undefined = () => undefined;
  closed = false;

  constructor(readonly url: string) {
    super();
  }

  send(text: string): void {
    const { method, args } = JSON.parse(text) as { method: string; args: [string, string, string] };
    const call = { method, seq: args[0], name: args[1], request: JSON.parse(args[2]) };
    this.calls.push(call);
    const body = this.respond(call);
    if (!body) return;
    const failed = "code" in body && body.code !== 0;
    queueMicrotask(() => this.answer(call, { code: 0, subcode: 0, result: "", ...body }, failed));
  }

  /** The page closes, or the host drops the connection. */
  close(): void {
    if (this.closed) return;
    this.closed = true;
    queueMicrotask(() => this.dispatchEvent(new Event("close")));
  }

  /** Delivers a frame, or raw text, to the page. */
  deliver(frame: object | string): void {
    const data = typeof frame === "string" ? frame : JSON.stringify(frame);
    this.dispatchEvent(Object.assign(new Event("message"), { data }));
  }

  hello(): void {
    this.deliver({ kind: "hello", browserId: "view-1" });
  }

  answer(call: SentCall, body: object | string, failed = false): void {
    const payload = typeof body === "string" ? body : JSON.stringify(body);
    this.deliver({ kind: "answer", browserId: "view-1", seq: call.seq, failed, payload });
  }

  notify(event: string, payload: object): void {
    this.deliver({ kind: "notify", event, payload: JSON.stringify(payload) });
  }

  /** Calls of one business method, oldest first. */
  named(name: string): SentCall[] {
    return this.calls.filter((call) => call.name === name);
  }
}

/** A client on fake sockets. */
export interface Rig {
  client: BridgeClient;
  sockets: FakeSocket[];
  problems: unknown[];
  /** The newest connection. */
  socket(): FakeSocket;
}

/** Connects a client to fake sockets; `health` answers its questions about a refusal. */
export function rig(options: ConnectOptions = {}, health?: () => Response): Rig {
  const sockets: FakeSocket[] = [];
  const problems: unknown[] = [];
  const WebSocket = function (url: string) {
    const socket = new FakeSocket(url);
    sockets.push(socket);
    return socket;
  } as unknown as typeof globalThis.WebSocket;
  const client = connect({
    url: "http://127.0.0.1:1/channel",
    token: "a&b",
    backoff: { first: 10, longest: 20 },
    onProblem: (error) => problems.push(error),
    fetch: async () => (health ? health() : Promise.reject(new TypeError("host is down"))),
    WebSocket,
    ...options,
  });
  return { client, sockets, problems, socket: () => sockets.at(-1)! };
}

/** Waits until `condition` holds. */
export async function until(condition: () => boolean, milliseconds = 2000): Promise<void> {
  const end = Date.now() + milliseconds;
  while (!condition()) {
    if (Date.now() > end) throw new Error(`not within ${milliseconds} ms: ${condition}`);
    await new Promise((resolve) => setTimeout(resolve, 2));
  }
}
