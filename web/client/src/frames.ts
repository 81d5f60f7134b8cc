/** Frames that the host sends, after reading; see the script channel in the project's design notes. */
export type HostFrame =
  | { kind: "hello"; browserId: string }
  | { kind: "answer"; seq: string; failed: boolean; payload: string }
  | NotifyFrame
  | { kind: "refused"; reason: string };

/** An event; `path` is the routing path that it comes from, empty when a page raised it. */
export interface NotifyFrame {
  kind: "notify";
  event: string;
  payload: string;
  path: string;
}

/** Writes one invocation. The view's own browser id is meant, so none is sent. */
export function encodeInvoke(method: string, seq: string, name: string, json: string): string {
  return JSON.stringify({ kind: "invoke", method, args: [seq, name, json] });
}

/** Reads one frame of the host; `undefined` when it is none of the known forms. */
export function decodeFrame(data: unknown): HostFrame | undefined {
  const frame = parseObject(data);
  if (!frame) return undefined;
  const text = (key: string) => (typeof frame[key] === "string" ? (frame[key] as string) : "");
  switch (frame["kind"]) {
    case "hello":
      return { kind: "hello", browserId: text("browserId") };
    case "answer":
      return {
        kind: "answer",
        seq: text("seq"),
        failed: frame["failed"] === true,
        payload: text("payload"),
      };
    case "notify":
      return { kind: "notify", event: text("event"), payload: text("payload"), path: text("path") };
    case "refused":
      return { kind: "refused", reason: text("reason") };
    default:
      return undefined;
  }
}

/** Parses JSON text that must hold an object; `undefined` for anything else. */
export function parseObject(data: unknown): Record<string, unknown> | undefined {
  if (typeof data !== "string") return undefined;
  try {
    const value: unknown = JSON.parse(data);
    return typeof value === "object" && value !== null && !Array.isArray(value)
      ? (value as Record<string, unknown>)
      : undefined;
  } catch {
    return undefined;
  }
}
