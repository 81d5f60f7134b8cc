import { backoffDelay, type BackoffOptions } from "./backoff.ts";
import { receive, type Channel, type ChannelListener, type OpenChannel } from "./channel.ts";

/** What the channel needs from its surroundings. */
export interface SocketOptions {
  /** Full address of the channel, with its query. */
  channelUrl: string;
  /** The token, for what is not the channel. */
  token: string;
  backoff: BackoffOptions;
  /** Milliseconds an attempt may take from start to the host's hello. */
  helloTimeout: number;
  WebSocket: typeof WebSocket;
  fetch: typeof fetch;
}

/** What a host says of a connection that did not come about. */
interface Refusal {
  /** Whether there is no sense in trying again. */
  final: boolean;
  reason: string;
}

const unknown: Refusal = { final: false, reason: "" };

/** What the host answers to a page that it would let in. */
const upgradeRequired = 426;

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

  fileUrl(path: string): string {
    const { channelUrl, token } = this.#options;
    const url = new URL(channelUrl.replace(/^ws/, "http"));
    const picture = /^emotions\/[\w-]+\.\w+$/.test(path);
    url.pathname = picture ? path : "/file";
    url.search = picture ? "" : `${new URLSearchParams({ path, token })}`;
    return url.href;
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
    const first = wasUp || this.#attempt === 0;
    if (first && this.#socket === gone) this.#listener.state("reconnecting", "");
    // A browser hides why an upgrade was refused, so the reason is asked for separately.
    const { final, reason } = wasUp ? unknown : await this.#askReason();
    if (this.#socket !== gone) return;
    this.#socket = undefined;
    this.#listener.state(final ? "refused" : "reconnecting", reason);
    if (final || this.#socket) return;
    const delay = backoffDelay(this.#attempt++, this.#options.backoff);
    this.#timer = setTimeout(() => this.#connect(), delay);
  }

  /** Why there is no connection, as far as the host says; the same request tells without upgrade. */
  async #askReason(): Promise<Refusal> {
    const abort = new AbortController();
    const timer = setTimeout(() => abort.abort(), this.#options.helloTimeout);
    try {
      const address = this.#options.channelUrl.replace(/^ws/, "http");
      const answer = await this.#options.fetch(address, {
        signal: abort.signal,
        cache: "no-store",
      });
      if (answer.status === upgradeRequired) return unknown;
      const body = (await answer.json().catch(() => undefined)) as { error?: unknown } | undefined;
      if (typeof body?.error !== "string") {
        const { host } = new URL(address);
        return { final: false, reason: `${host} has no script channel (HTTP ${answer.status})` };
      }
      return { final: answer.status < 500, reason: body.error };
    } catch {
      return unknown;
    } finally {
      clearTimeout(timer);
    }
  }
}
