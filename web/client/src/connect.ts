import type { BackoffOptions } from "./backoff.ts";
import type { OpenChannel } from "./channel.ts";
import { BridgeClient, type ClientOptions } from "./client.ts";
import { socketChannel } from "./socket_channel.ts";

/** Options of `connect`; each has a default that fits a page which the host itself serves. */
export interface ConnectOptions {
  /**
   * The way to the host. Default: a WebSocket to the script channel, to which the options `url`,
   * `token`, `account`, `connectTimeout`, `backoff`, `WebSocket` and `fetch` belong.
   */
  channel?: OpenChannel;
  /**
   * Address of the channel, or the whole address that bridgehost printed when it started. Default:
   * `/channel` on the page's own host.
   */
  url?: string;
  /** The host's token. Default: `token` in `url`, else in the page's own address. */
  token?: string;
  /** Account that the host logs in by itself; without one the page logs in. */
  account?: string;
  /** Milliseconds until a call without a timeout of its own is given up. Default: 15,000. */
  timeout?: number;
  /** Milliseconds an attempt to connect may take. Default: 10,000. */
  connectTimeout?: number;
  /** Waits between attempts to connect. Default: up to 250 ms, doubling up to 8 s. */
  backoff?: Partial<BackoffOptions>;
  /** See `ClientOptions`. */
  onConnect?: ClientOptions["onConnect"];
  /** See `ClientOptions`. Default: a warning on the console. */
  onProblem?: ClientOptions["onProblem"];
  /** WebSocket class. Default: the browser's. */
  WebSocket?: typeof WebSocket;
  /** Fetch function. Default: the browser's. */
  fetch?: typeof fetch;
}

/**
 * Connects a page to its host and keeps it connected. Calls may be made at once: they wait until
 * the connection is there, within their timeout. When the page is unloaded, every open call rejects.
 */
export function connect(options: ConnectOptions = {}): BridgeClient {
  const client = new BridgeClient({
    channel: options.channel ?? socketChannelOf(options),
    timeout: options.timeout ?? 15_000,
    onConnect: options.onConnect,
    onProblem: options.onProblem ?? ((error) => console.warn(error)),
  });
  closeWithPage(client);
  return client;
}

function socketChannelOf(options: ConnectOptions): OpenChannel {
  const page = globalThis.location as Location | undefined;
  const url = new URL(options.url ?? "/channel", page?.href);
  if (url.pathname === "/") url.pathname = "/channel";
  const ownToken = () => new URLSearchParams(page?.search).get("token");
  const token = options.token ?? url.searchParams.get("token") ?? ownToken() ?? "";
  url.protocol = url.protocol.replace("http", "ws");
  url.searchParams.set("token", token);
  if (options.account) url.searchParams.set("account", options.account);
  return socketChannel({
    channelUrl: url.href,
    token,
    helloTimeout: options.connectTimeout ?? 10_000,
    backoff: { first: 250, longest: 8_000, ...options.backoff },
    WebSocket: options.WebSocket ?? WebSocket,
    fetch: options.fetch ?? fetch.bind(globalThis),
  });
}

/** A page that is put aside closes its connection, and takes it up again if it is shown again. */
function closeWithPage(client: BridgeClient): void {
  if (typeof addEventListener !== "function") return;
  let connected = false;
  addEventListener("pagehide", () => {
    connected = client.state !== "closed";
    client.close();
  });
  addEventListener("pageshow", (event) => {
    if (event.persisted && connected) client.reconnect();
  });
}
