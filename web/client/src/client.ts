import type { Channel, ConnectionState, OpenChannel } from "./channel.ts";
import { FailureCode } from "./errors.ts";
import { encodeInvoke } from "./frames.ts";
import type { Methods, PageEvents } from "./generated/methods.ts";
import type { Notifications } from "./generated/notifications.ts";
import type { ResultCode } from "./generated/records.ts";
import { moduleFaces, type ModuleFaces, type RoutingPath } from "./modules.ts";
import { PendingCalls, type CallOptions } from "./pending_calls.ts";
import { Subscriptions } from "./subscriptions.ts";

/** Typed calls; a path or method the types do not know is called with plain names. */
export interface Calls extends ModuleFaces {
  /**
   * Calls a method of a module. Resolves with the answer, rejects with a `BridgeError`. A routing
   * path that the host does not have is never answered, so such a call ends in its timeout.
   */
  invoke<P extends RoutingPath, M extends keyof Methods[P] & string>(
    path: P,
    method: M,
    request: Methods[P][M] extends { request: infer R } ? R : never,
    options?: CallOptions,
  ): Promise<Methods[P][M] extends { answer: infer A } ? A : never>;
  invoke(path: string, method: string, request: object, options?: CallOptions): Promise<ResultCode>;
}

/** What `connect` has worked out for a client. */
export interface ClientOptions {
  channel: OpenChannel;
  /** Timeout of calls that name none, in milliseconds. */
  timeout: number;
  /**
   * Runs after each connect, before the calls that wait for a connection go out; for logging in
   * again. Only calls made through `direct` go out while it runs. A rejection is a problem like any
   * other and does not hold the waiting calls back.
   */
  onConnect?: (direct: Calls) => Promise<void> | void;
  /** Told about trouble that belongs to no call: a refused frame, a handler that threw. */
  onProblem: (error: unknown) => void;
}

/** Told about each change of the connection; `reason` is what the host says of it, if anything. */
export type StateHandler = (state: ConnectionState, reason: string) => void;

export interface BridgeClient extends ModuleFaces {}

/** One page's connection to the host; make it with `connect`. */
export class BridgeClient implements Calls {
  readonly #options: ClientOptions;
  readonly #channel: Channel;
  readonly #calls = new PendingCalls();
  readonly #subscriptions: Subscriptions;
  readonly #direct: Calls;
  readonly #stateHandlers = new Set<StateHandler>();
  #state: ConnectionState = "connecting";
  #reason = "";
  #browserId = "";
  /** Whether frames can be sent now. */
  #up = false;
  /** Grows with each connection and each loss, so that work for an earlier one notices. */
  #connection = 0;

  constructor(options: ClientOptions) {
    this.#options = options;
    this.#subscriptions = new Subscriptions(
      (verb, events) => this.#register(verb, events),
      options.onProblem,
    );
    this.#direct = this.#callsVia(true);
    Object.assign(this, this.#callsVia(false));
    this.#channel = options.channel({
      up: (browserId) => void this.#linkUp(browserId),
      down: () => this.#linkDown(),
      frame: (frame) => {
        if (frame.kind === "answer") this.#calls.settle(frame.seq, frame.failed, frame.payload);
        else if (frame.kind === "notify") this.#subscriptions.dispatch(frame);
        else options.onProblem(new Error(`the host refused a frame: ${frame.reason}`));
      },
      garbage: () => options.onProblem(new Error("the host sent an unknown frame")),
      state: (state, reason) => this.#linkState(state, reason),
    });
    this.#channel.start();
  }

  /** See `Calls.invoke`. */
  declare readonly invoke: Calls["invoke"];

  /** State of the connection. */
  get state(): ConnectionState {
    return this.#state;
  }

  /** Why the host refuses this page, or cannot take it now; empty when it said nothing. */
  get reason(): string {
    return this.#reason;
  }

  /** The view's name at the host; empty until the first connection. */
  get browserId(): string {
    return this.#browserId;
  }

  /** Bytes of sent calls that the network has not taken yet; for showing progress. */
  get unsentBytes(): number {
    return this.#channel.unsentBytes;
  }

  /**
   * Calls `handler` for each such notification, with its payload and the routing path that it comes
   * from; the returned function ends that. Where several paths send one name, asking for the path
   * tells which payload it is; who does not ask gets what the payloads have in common.
   */
  on<E extends keyof Notifications>(
    event: E,
    handler: (...what: Notifications[E]) => void,
  ): () => void;
  on<E extends keyof Notifications>(
    event: E,
    handler: (payload: Notifications[E][0]) => void,
  ): () => void;
  on(event: string, handler: (payload: Record<string, unknown>, path: string) => void): () => void;
  on(event: string, handler: (payload: never, path: never) => void): () => void {
    return this.#subscriptions.add(event, handler);
  }

  /**
   * Address of a file that a message or an answer names ("files/…", "emotions/…"), for `src` and
   * `href`; a file that is still on the server is fetched when the address is asked for. A channel
   * without addresses gives the path itself.
   */
  fileUrl(path: string): string {
    return this.#channel.fileUrl?.(path) ?? path;
  }

  /** Calls `handler` at each change of the connection; the returned function ends that. */
  onState(handler: StateHandler): () => void {
    this.#stateHandlers.add(handler);
    return () => void this.#stateHandlers.delete(handler);
  }

  /** Raises an event of the page at the host; resolves when the host took it. */
  raise<E extends keyof PageEvents>(
    event: E,
    payload: PageEvents[E],
    options?: CallOptions,
  ): Promise<ResultCode> {
    return this.#call("im.event_notify", event, payload, options, false);
  }

  /** Connects now instead of at the end of the current wait; also after `refused` and `close`. */
  reconnect(): void {
    this.#channel.start();
  }

  /** Ends the connection and rejects every open call with kind `closed`. */
  close(): void {
    this.#channel.stop();
    this.#leave("closed", "");
    this.#calls.rejectAll("closed", FailureCode.connectionLost, "the page closed its connection");
  }

  #callsVia(direct: boolean): Calls {
    const invoke = (path: string, method: string, request: object, options?: CallOptions) =>
      this.#call(`${path}.invoke`, method, request, options, direct);
    return { ...moduleFaces(invoke), invoke } as Calls;
  }

  async #call(
    route: string,
    name: string,
    request: object,
    options: CallOptions | undefined,
    direct: boolean,
  ): Promise<ResultCode> {
    const json = JSON.stringify(request);
    // What the host serves itself has a name of its own; everything else goes to the bridge.
    const method = route.startsWith("bridgehost.") ? route : `workbench.${route}`;
    const encode = (seq: string) => encodeInvoke(method, seq, name, json);
    const timeout = options?.timeout ?? this.#options.timeout;
    const label = `${route.replace(/\.invoke$/, "")} ${name}`;
    const { seq, answer } = this.#calls.open(label, encode, { ...options, timeout });
    if (this.#state === "closed") {
      this.#calls.rejectAll("closed", FailureCode.connectionLost, "the connection is closed");
    } else if (this.#state === "refused") {
      this.#calls.rejectAll("refused", FailureCode.accessDenied, this.#reason);
    } else if (this.#state === "open" || (direct && this.#up)) {
      this.#calls.send(seq, (frame) => this.#channel.send(frame));
    }
    return answer;
  }

  async #register(verb: "register" | "unregister", events: string[]): Promise<void> {
    try {
      await this.#call("im.event_register", verb, { events }, undefined, true);
    } catch (error) {
      // The next connection registers everything anew.
      if (!this.#up) return;
      throw error;
    }
  }

  async #linkUp(browserId: string): Promise<void> {
    const connection = ++this.#connection;
    this.#up = true;
    this.#browserId = browserId;
    this.#subscriptions.connected();
    try {
      await this.#options.onConnect?.(this.#direct);
    } catch (error) {
      this.#options.onProblem(error);
    }
    if (connection !== this.#connection) return;
    this.#setState("open", "");
    this.#calls.sendAll((frame) => this.#channel.send(frame));
  }

  #linkDown(): void {
    this.#leave("reconnecting", "");
    this.#calls.rejectSent(
      "disconnected",
      FailureCode.connectionLost,
      "the connection was lost before the answer",
    );
  }

  #linkState(state: ConnectionState, reason: string): void {
    this.#setState(state, reason);
    if (state === "refused") this.#calls.rejectAll("refused", FailureCode.accessDenied, reason);
  }

  #leave(state: ConnectionState, reason: string): void {
    this.#connection++;
    this.#up = false;
    this.#subscriptions.disconnected();
    this.#setState(state, reason);
  }

  #setState(state: ConnectionState, reason: string): void {
    if (state === this.#state && reason === this.#reason) return;
    this.#state = state;
    this.#reason = reason;
    for (const handler of [...this.#stateHandlers]) {
      try {
        handler(state, reason);
      } catch (error) {
        this.#options.onProblem(error);
      }
    }
  }
}
