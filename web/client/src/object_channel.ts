import { receive, type Channel, type ChannelListener, type OpenChannel } from "./channel.ts";

/**
 * What a host puts into a page whose browser it embeds. The frames are those of the script channel,
 * as JSON texts: the host sends a hello first, then answers, notifications and refusals; the page
 * sends invocations.
 */
export interface HostObject {
  /** Begins: the host calls `receive` with each of its frames, in order, until `close`. */
  open(receive: (frame: string) => void): void;
  /** Takes one frame of the page. */
  send(frame: string): void;
  /** Ends what `open` began. */
  close(): void;
}

/** The channel of a host that is there as long as the page is: `channel: objectChannel(object)`. */
export function objectChannel(host: HostObject): OpenChannel {
  return (listener) => new ObjectChannel(host, listener);
}

class ObjectChannel implements Channel {
  readonly unsentBytes = 0;
  readonly #host: HostObject;
  readonly #listener: ChannelListener;
  #opened = 0;
  #live = false;

  constructor(host: HostObject, listener: ChannelListener) {
    this.#host = host;
    this.#listener = listener;
  }

  start(): void {
    if (this.#live) return;
    this.#live = true;
    const opened = ++this.#opened;
    this.#listener.state(opened === 1 ? "connecting" : "reconnecting", "");
    this.#host.open((frame) => {
      if (!this.#live || opened !== this.#opened) return;
      receive(frame, this.#listener, (browserId) => this.#listener.up(browserId));
    });
  }

  send(frame: string): void {
    this.#host.send(frame);
  }

  stop(): void {
    if (!this.#live) return;
    this.#live = false;
    this.#host.close();
  }
}
