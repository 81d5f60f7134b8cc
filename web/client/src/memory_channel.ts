import type { ChannelListener, OpenChannel } from "./channel.ts";
import { FailureCode } from "./errors.ts";
import type { Methods } from "./generated/methods.ts";
import type { Notifications } from "./generated/notifications.ts";
import type { ResultCode } from "./generated/records.ts";
import { objectChannel } from "./object_channel.ts";

type AnswerTo<M> = M extends { request: infer R; answer: infer A }
  ? (
      request: R,
    ) =>
      (Omit<A, keyof ResultCode> & Partial<ResultCode>) | (Partial<ResultCode> & { code: number })
  : never;

/**
 * The answers of a host that a test plays: by routing path and method, what is answered to a
 * request. The envelope may be left out, it is then that of a success. A method without an answer
 * fails as one that the module does not have.
 */
export type Script = {
  [P in keyof Methods]?: { [M in keyof Methods[P]]?: AnswerTo<Methods[P][M]> };
};

/** A host in the page's own memory; see `memoryHost`. */
export interface MemoryHost {
  /** For `connect`: `connect({ channel: host.channel })`. */
  readonly channel: OpenChannel;
  /** What the page called, oldest first; events that it raised too, under "im.event_notify". */
  readonly calls: { path: string; method: string; request: unknown }[];
  /** Goes away without answering what is open, and is back at once. */
  restart(): void;
  /** Sends a notification to the page. */
  notify<E extends keyof Notifications>(event: E, ...what: Notifications[E]): void;
}

/** A host with scripted answers, for tests of pages. Nothing is asynchronous but the answers. */
export function memoryHost(script: Script): MemoryHost {
  const calls: MemoryHost["calls"] = [];
  const answers = script as Record<string, Record<string, (request: never) => object>>;
  let toPage: ((frame: string) => void) | undefined;
  let endPage: (() => void) | undefined;
  const send = (frame: object) => toPage?.(JSON.stringify(frame));

  const hello = () => send({ kind: "hello", browserId: "memory" });
  const answer = (path: string, method: string, request: unknown): object | undefined => {
    if (path.startsWith("im.event_")) return {};
    return answers[path]?.[method]?.(request as never);
  };
  const host = {
    open(receive: (frame: string) => void, gone: () => void): void {
      toPage = receive;
      endPage = gone;
      queueMicrotask(hello);
    },
    send(text: string): void {
      const { method: route, args } = JSON.parse(text) as { method: string; args: string[] };
      const [seq, method, json] = args as [string, string, string];
      const path = route.replace(/^workbench\.|\.invoke$/g, "");
      const request: unknown = JSON.parse(json);
      calls.push({ path, method, request });
      const own = answer(path, method, request);
      const body = { code: own ? 0 : FailureCode.notImplemented, subcode: 0, result: "", ...own };
      const payload = own ? JSON.stringify(body) : "";
      const frame = { kind: "answer", browserId: "memory", seq, failed: body.code !== 0, payload };
      queueMicrotask(() => send(frame));
    },
    close(): void {
      toPage = endPage = undefined;
    },
  };
  return {
    channel: (listener: ChannelListener) => objectChannel(host)(listener),
    calls,
    restart() {
      endPage?.();
      queueMicrotask(hello);
    },
    notify: (event, ...[payload, path]) =>
      send({ kind: "notify", event, payload: JSON.stringify(payload), path }),
  };
}
