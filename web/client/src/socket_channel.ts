import { backoffDelay, type BackoffOptions } from "./backoff.ts";
import { receive, type Channel, type ChannelListener, type OpenChannel } from "./channel.ts";

/** What the channel needs from its surroundings. */
export interface SocketOptions {
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

/** The channel over a WebSocket: `bridgehost`'s, and the one that `connect` uses by itself. */
export function socketChannel(options: SocketOptions): OpenChannel {
  return (listener) => new SocketChannel(options, listener);
}

/** Keeps one WebSocket to the host alive: connects, reconnects, and learns why it was refused. */
class SocketChannel implements Channel {
  readonly #options: SocketOptions;
  readonly #listener: ChannelListener;
  #socket: WebSocket | undefined;
  #up = false;
  #everUp = false;
  #attempt = 0;
  #timer: ReturnType<typeof setTimeout> | undefined;

  constructor(options: SocketOptions, listener: ChannelListener) {
    this.#options = options;
    this.#listener = listener;
  }

  start(): void {
    if (this.#socket) return;
    this.#listener.state(this.#everUp ? "reconnecting" : "connecting", "");
    this.#connect();
  }

  send(frame: string): void {
    this.#socket?.send(frame);
  }

  get unsentBytes(): number {
    return this.#socket?.bufferedAmount ?? 0;
  }

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
    receive(data, this.#listener, (browserId) => {
      if (this.#up) return;
      clearTimeout(this.#timer);
      this.#up = this.#everUp = true;
      this.#attempt = 0;
      this.#listener.up(browserId);
    });
  }

  async #lost(): Promise<void> {
    const gone = this.#socket;
    const wasUp = this.#up;
    clearTimeout(this.#timer);
    this.#up = false;
    if (wasUp) this.#listener.down();
    if (this.#socket === gone) this.#listener.state("reconnecting", "");
    // A browser hides why an upgrade was refused, so the reason is asked for separately.
    const reason = wasUp ? "" : await this.#askReason();
    if (this.#socket !== gone) return;
    this.#socket = undefined;
    if (reason) {
      this.#listener.state("refused", reason);
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
