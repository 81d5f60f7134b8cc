import { backoffDelay, type BackoffOptions } from "./backoff.ts";
import { decodeFrame, type HostFrame } from "./frames.ts";

/**
 * State of the connection.
 *
 * - `connecting`: the first attempt is under way.
 * - `open`: calls go through.
 * - `reconnecting`: the connection was lost or never came about; attempts go on by themselves.
 * - `refused`: the host refuses this page; nothing is tried until `reconnect()`.
 * - `closed`: closed by the page.
 */
export type ConnectionState = "connecting" | "open" | "reconnecting" | "refused" | "closed";

/** What the link needs from its surroundings. */
export interface LinkOptions {
  /** Full address of the channel, with its query. */
  channelUrl: string;
  /** Where a refused page can ask for the reason, with its query. */
  healthUrl: string;
  backoff: BackoffOptions;
  /** Milliseconds an attempt may take from start to the host's hello. */
  helloTimeout: number;
  WebSocket: typeof WebSocket;
  fetch: typeof fetch;
}

/** Receives what happens on the link. */
export interface LinkListener {
  /** The host said hello; frames may be sent. */
  linkUp(browserId: string): void;
  /** A connection that was up is gone. */
  linkDown(): void;
  linkFrame(frame: Exclude<HostFrame, { kind: "hello" }>): void;
  /** Something arrived that is no frame. */
  linkGarbage(): void;
  linkState(state: Exclude<ConnectionState, "open">, reason: string): void;
}

/** Keeps one WebSocket to the host alive: connects, reconnects, and learns why it was refused. */
export class Link {
  readonly #options: LinkOptions;
  readonly #listener: LinkListener;
  #socket: WebSocket | undefined;
  #up = false;
  #everUp = false;
  #attempt = 0;
  #timer: ReturnType<typeof setTimeout> | undefined;

  constructor(options: LinkOptions, listener: LinkListener) {
    this.#options = options;
    this.#listener = listener;
  }

  /** Starts connecting at once, cutting a wait short; a live connection is left alone. */
  start(): void {
    if (this.#socket) return;
    this.#listener.linkState(this.#everUp ? "reconnecting" : "connecting", "");
    this.#connect();
  }

  /** Sends one frame; only allowed while the link is up. */
  send(frame: string): void {
    this.#socket?.send(frame);
  }

  /** Bytes that were sent and that the network has not taken yet. */
  get unsentBytes(): number {
    return this.#socket?.bufferedAmount ?? 0;
  }

  /** Drops the connection and stays down until `start`. Reports nothing. */
  stop(): void {
    clearTimeout(this.#timer);
    const socket = this.#socket;
    this.#socket = undefined;
    this.#up = false;
    this.#attempt = 0;
    socket?.close(1000);
  }

  #connect(): void {
    clearTimeout(this.#timer);
    const socket = new this.#options.WebSocket(this.#options.channelUrl);
    this.#socket = socket;
    this.#timer = setTimeout(() => socket.close(), this.#options.helloTimeout);
    socket.addEventListener("message", ({ data }: MessageEvent) => {
      if (this.#socket === socket) this.#receive(data);
    });
    socket.addEventListener("close", () => {
      if (this.#socket === socket) void this.#lost();
    });
  }

  #receive(data: unknown): void {
    const frame = decodeFrame(data);
    if (!frame) {
      this.#listener.linkGarbage();
    } else if (frame.kind !== "hello") {
      this.#listener.linkFrame(frame);
    } else if (!this.#up) {
      clearTimeout(this.#timer);
      this.#up = this.#everUp = true;
      this.#attempt = 0;
      this.#listener.linkUp(frame.browserId);
    }
  }

  async #lost(): Promise<void> {
    const gone = this.#socket;
    const wasUp = this.#up;
    clearTimeout(this.#timer);
    this.#up = false;
    if (wasUp) this.#listener.linkDown();
    if (this.#socket === gone) this.#listener.linkState("reconnecting", "");
    // A browser hides why an upgrade was refused, so the reason is asked for separately.
    const reason = wasUp ? "" : await this.#askReason();
    if (this.#socket !== gone) return;
    this.#socket = undefined;
    if (reason) {
      this.#listener.linkState("refused", reason);
      return;
    }
    const delay = backoffDelay(this.#attempt++, this.#options.backoff);
    this.#timer = setTimeout(() => this.#connect(), delay);
  }

  /** Why the host refuses this page; empty when it does not, or cannot be asked. */
  async #askReason(): Promise<string> {
    const abort = new AbortController();
    const timer = setTimeout(() => abort.abort(), this.#options.helloTimeout);
    try {
      const answer = await this.#options.fetch(this.#options.healthUrl, {
        signal: abort.signal,
        cache: "no-store",
      });
      if (answer.status !== 401 && answer.status !== 403) return "";
      const body = (await answer.json().catch(() => undefined)) as { error?: unknown } | undefined;
      return typeof body?.error === "string" && body.error ? body.error : `HTTP ${answer.status}`;
    } catch {
      return "";
    } finally {
      clearTimeout(timer);
    }
  }
}
