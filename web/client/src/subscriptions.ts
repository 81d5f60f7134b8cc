import { parseObject, type NotifyFrame } from "./frames.ts";

/** Asks the host to start or stop sending the named events. */
export type RegisterEvents = (verb: "register" | "unregister", events: string[]) => Promise<void>;

type Handler = (payload: never, path: never) => void;

/** Milliseconds in which handlers that come and go are gathered into one request. */
const gatherTime = 20;

/**
 * The page's event handlers, and which events the host was asked to send. The host is told about an
 * event when its first handler comes and after its last one left.
 */
export class Subscriptions {
  readonly #register: RegisterEvents;
  readonly #problem: (error: unknown) => void;
  readonly #handlers = new Map<string, Set<Handler>>();
  #known = new Set<string>();
  #connected = false;
  #timer: ReturnType<typeof setTimeout> | undefined;

  constructor(register: RegisterEvents, problem: (error: unknown) => void) {
    this.#register = register;
    this.#problem = problem;
  }

  /** Adds a handler; the returned function removes it again. */
  add(event: string, handler: Handler): () => void {
    // Each addition is its own entry, so adding one function twice and removing it once keeps one.
    const entry: Handler = (payload, path) => handler(payload, path);
    const handlers = this.#handlers.get(event) ?? new Set();
    this.#handlers.set(event, handlers.add(entry));
    this.#plan();
    return () => {
      if (!handlers.delete(entry)) return;
      if (handlers.size === 0 && this.#handlers.get(event) === handlers) {
        this.#handlers.delete(event);
      }
      this.#plan();
    };
  }

  /** A fresh connection: the host knows of no event yet, so all are registered at once. */
  connected(): void {
    this.#connected = true;
    this.#known.clear();
    this.#sync();
  }

  /** The connection is gone. */
  disconnected(): void {
    this.#connected = false;
    clearTimeout(this.#timer);
    this.#timer = undefined;
  }

  /** Hands one event to its handlers; a handler that throws does not keep it from the others. */
  dispatch({ event, payload: text, path }: NotifyFrame): void {
    const handlers = this.#handlers.get(event);
    if (!handlers) return;
    const payload = parseObject(text);
    if (!payload) {
      this.#problem(new Error(`payload of ${event} is not a JSON object`));
      return;
    }
    for (const handler of [...handlers]) {
      try {
        handler(payload as never, path as never);
      } catch (error) {
        this.#problem(error);
      }
    }
  }

  #plan(): void {
    if (!this.#connected) return;
    this.#timer ??= setTimeout(() => this.#sync(), gatherTime);
  }

  #sync(): void {
    clearTimeout(this.#timer);
    this.#timer = undefined;
    const wanted = [...this.#handlers.keys()];
    this.#ask(
      "register",
      wanted.filter((event) => !this.#known.has(event)),
    );
    this.#ask(
      "unregister",
      [...this.#known].filter((event) => !this.#handlers.has(event)),
    );
    this.#known = new Set(wanted);
  }

  #ask(verb: "register" | "unregister", events: string[]): void {
    if (events.length === 0) return;
    this.#register(verb, events).catch((error) => {
      // One name that the host does not know fails a whole request: the others get one of their own.
      if (events.length === 1) this.#problem(error);
      else for (const event of events) this.#ask(verb, [event]);
    });
  }
}
