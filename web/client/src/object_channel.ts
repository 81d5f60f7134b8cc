import { receive, type Channel, type ChannelListener, type OpenChannel } from "./channel.ts";

/**
 * What a host puts into a page whose browser it embeds. The frames are those of the script channel,
 * as JSON texts: the host sends a hello first, then answers, notifications and refusals; the page
 * sends invocations.
 */
export interface HostObject {
  /**
   * Begins: the host calls `receive` with each of its frames, in order, until `close`, and `gone`
   * when it cannot go on: what the page had asked fails at once, and what it asks from then on waits
   * for another hello.
   */
  open(receive: (frame: string) => void, gone: () => void): void;
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
  #up = false;

  constructor(host: HostObject, listener: ChannelListener) {
    this.#host = host;
    this.#listener = listener;
  }

  start(): void {
    if (this.#live) return;
    this.#live = true;
    const opened = ++this.#opened;
    this.#listener.state(opened === 1 ? "connecting" : "reconnecting", "");
    const isCurrent = () => this.#live && opened === this.#opened;
    this.#host.open(
      (frame) => {
        if (isCurrent()) receive(frame, this.#listener, (browserId) => this.#hello(browserId));
      },
      () => {
        if (isCurrent()) this.#gone();
      },
    );
  }

  send(frame: string): void {
    this.#host.send(frame);
  }

  stop(): void {
    if (!this.#live) return;
    this.#live = this.#up = false;
    this.#host.close();
  }

  /** A hello to a page that was greeted before comes from a host that was away meanwhile. */
  #hello(browserId: string): void {
    this.#gone();
    this.#up = true;
    this.#listener.up(browserId);
  }

  #gone(): void {
    if (!this.#up) return;
    this.#up = false;
    this.#listener.down();
  }
}
