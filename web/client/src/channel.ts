import { decodeFrame, type HostFrame } from "./frames.ts";

/**
 * State of the connection.
 *
 * - `connecting`: the first attempt is under way.
 * - `open`: calls go through.
 * - `reconnecting`: the connection was lost or never came about; attempts go on by themselves. The
 *   reason, if there is one, is what the host said.
 * - `refused`: the host refuses this page; nothing is tried until `reconnect()`.
 * - `closed`: closed by the page.
 */
export type ConnectionState = "connecting" | "open" | "reconnecting" | "refused" | "closed";

/** A way to a host: frames out, frames in. Made by an `OpenChannel`. */
export interface Channel {
  /** Starts connecting at once, cutting a wait short; a live connection is left alone. */
  start(): void;
  /** Sends one frame; only called between `up` and `down`. */
  send(frame: string): void;
  /** Drops the connection and stays down until `start`. Reports nothing. */
  stop(): void;
  /** Where the page finds a file of a message; undefined when the channel cannot tell. */
  fileUrl?(path: string): string;
  /** Bytes that were sent and that the network has not taken yet. */
  readonly unsentBytes: number;
}

/** Receives what happens on a channel. */
export interface ChannelListener {
  /** The host said hello; frames may be sent. */
  up(browserId: string): void;
  /** A connection that was up is gone. */
  down(): void;
  frame(frame: Exclude<HostFrame, { kind: "hello" }>): void;
  /** Something arrived that is no frame. */
  garbage(): void;
  state(state: Exclude<ConnectionState, "open">, reason: string): void;
}

/** Makes the channel of one client. It does nothing before `start`. */
export type OpenChannel = (listener: ChannelListener) => Channel;

/** Hands on what arrived; `hello` is told the browser id of a hello frame. */
export function receive(
  data: unknown,
  listener: ChannelListener,
  hello: (browserId: string) => void,
): void {
  const frame = decodeFrame(data);
  if (!frame) listener.garbage();
  else if (frame.kind === "hello") hello(frame.browserId);
  else listener.frame(frame);
}
