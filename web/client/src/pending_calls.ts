import { BridgeError, failureText, FailureCode, type BridgeErrorKind } from "./errors.ts";
import { parseObject } from "./frames.ts";
import type { ResultCode } from "./generated/records.ts";

/** Longest time a timer can wait, in milliseconds. */
const longestTimer = 2 ** 31 - 1;

/** Options of one call. */
export interface CallOptions {
  /** Milliseconds until the call is given up, time spent waiting for a connection included. */
  timeout?: number;
  /** Gives the call up early. */
  signal?: AbortSignal;
}

interface Call {
  label: string;
  /** The frame while it still waits for a connection; empty once it was sent. */
  waiting: string;
  resolve(answer: ResultCode): void;
  reject(error: unknown): void;
}

/**
 * The open calls of one page, by sequence id. A call leaves the table exactly once: by its answer,
 * its timeout, its signal, or the end of the connection. What comes for it later is dropped.
 */
export class PendingCalls {
  readonly #calls = new Map<string, Call>();
  /** Random per page load, so answers meant for an earlier page match nothing here. */
  readonly #prefix = randomPrefix();
  #counter = 0;

  /** Opens a call; `encode` makes its frame, which waits until `send` or `sendAll` takes it. */
  open(
    label: string,
    encode: (seq: string) => string,
    options: Required<Pick<CallOptions, "timeout">> & CallOptions,
  ): { seq: string; answer: Promise<ResultCode> } {
    const seq = `${this.#prefix}-${(++this.#counter).toString(36)}`;
    const answer = new Promise<ResultCode>((resolve, reject) => {
      const { timeout, signal } = options;
      const late = () => {
        const what = this.#calls.get(seq)?.waiting ? "connection" : "answer";
        this.#fail(seq, "timeout", FailureCode.timeout, `no ${what} within ${timeout} ms`);
      };
      const timer = setTimeout(late, Math.min(timeout, longestTimer));
      const abort = () => this.#fail(seq, "aborted", FailureCode.aborted, "given up by the caller");
      const done = () => {
        clearTimeout(timer);
        signal?.removeEventListener("abort", abort);
      };
      this.#calls.set(seq, {
        label,
        waiting: encode(seq),
        resolve: (value) => (done(), resolve(value)),
        reject: (error) => (done(), reject(error)),
      });
      if (signal?.aborted) abort();
      else signal?.addEventListener("abort", abort, { once: true });
    });
    return { seq, answer };
  }

  /** Hands the frame of one waiting call to `send`. */
  send(seq: string, send: (frame: string) => void): void {
    const call = this.#calls.get(seq);
    if (!call?.waiting) return;
    const frame = call.waiting;
    call.waiting = "";
    send(frame);
  }

  /** Hands every waiting frame to `send`, oldest call first. */
  sendAll(send: (frame: string) => void): void {
    for (const seq of [...this.#calls.keys()]) this.send(seq, send);
  }

  /** Settles the call that an answer frame belongs to; an unknown sequence id is dropped. */
  settle(seq: string, failed: boolean, payload: string): void {
    const call = this.#calls.get(seq);
    if (!call) return;
    this.#calls.delete(seq);
    const body = parseObject(payload);
    if (failed) call.reject(failure(body, call.label));
    else if (body) call.resolve(body as unknown as ResultCode);
    else call.reject(new BridgeError("unreadable", 0, 0, "answer is not JSON", call.label));
  }

  /** Rejects the calls that were sent; those still waiting for a connection stay. */
  rejectSent(kind: BridgeErrorKind, code: number, text: string): void {
    for (const [seq, call] of [...this.#calls]) {
      if (!call.waiting) this.#fail(seq, kind, code, text);
    }
  }

  /** Rejects every call. */
  rejectAll(kind: BridgeErrorKind, code: number, text: string): void {
    for (const seq of [...this.#calls.keys()]) this.#fail(seq, kind, code, text);
  }

  #fail(seq: string, kind: BridgeErrorKind, code: number, text: string): void {
    const call = this.#calls.get(seq);
    if (!call) return;
    this.#calls.delete(seq);
    call.reject(new BridgeError(kind, code, 0, text, call.label));
  }
}

function failure(body: Record<string, unknown> | undefined, label: string): BridgeError {
  if (!body) {
    const text = "failed without a reason; there may be no such method";
    return new BridgeError("failed", FailureCode.failed, 0, text, label);
  }
  const number = (key: string) => (typeof body[key] === "number" ? (body[key] as number) : 0);
  const text = failureText(number("code"), body["result"]);
  return new BridgeError("failed", number("code"), number("subcode"), text, label);
}

function randomPrefix(): string {
  const bytes = crypto.getRandomValues(new Uint8Array(8));
  return Array.from(bytes, (byte) => byte.toString(16).padStart(2, "0")).join("");
}
