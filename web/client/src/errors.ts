import { EngineCode } from "./generated/values.ts";

/** Result codes that the client itself uses or recognises, as the signed 32-bit numbers on the wire. */
export const FailureCode = {
  /** The module does not have what was asked for. */
  notImplemented: 0x80004001 | 0,
  /** The host failed the call without a word: no such method, or a call that it had to drop. */
  failed: 0x80004005 | 0,
  /** The caller gave the call up. */
  aborted: 0x80004004 | 0,
  /** The account or a service is not ready, for instance because nobody is logged in. */
  unexpected: 0x8000ffff | 0,
  /** The request's JSON was not usable. */
  invalidArgument: 0x80070057 | 0,
  /** No answer came in time. */
  timeout: 0x800705b4 | 0,
  /** The connection ended before the answer came. */
  connectionLost: 0x800704ca | 0,
  /** The host refused this page. */
  accessDenied: 0x80070005 | 0,
} as const;

/** The words for codes that come without a text of their own, for instance of a refused send. */
const wordsByCode: Readonly<Record<number, string>> = {
  [EngineCode.kEngineNotLoggedIn]: "nobody is logged in",
  [EngineCode.kEngineNoLink]: "the server cannot be reached",
  [EngineCode.kEngineTimeout]: "the server did not answer in time",
  [EngineCode.kEngineTooLarge]: "the message is too large",
  [EngineCode.kEngineEmpty]: "the message is empty",
  [EngineCode.kEngineNotFound]: "there is no such message or conversation",
  [EngineCode.kEngineStorage]: "the message could not be stored",
  [EngineCode.kEngineRefused]: "the server does not allow it",
  [EngineCode.kEngineBusy]: "too much is under way for this account",
  [EngineCode.kEngineUnsupported]: "the server cannot do that",
  [FailureCode.notImplemented]: "this host cannot do that",
  [FailureCode.unexpected]: "there is no such conversation, or nobody is logged in",
  [FailureCode.invalidArgument]: "the request lacks something, or holds what cannot be used",
};

/** What a failed answer says, or what its code means when it says no more than that it failed. */
export function failureText(code: number, result: unknown): string {
  if (typeof result === "string" && result && result !== "failed") return result;
  return wordsByCode[code] ?? "failed";
}

/**
 * Why a call was rejected.
 *
 * - `failed`: the host answered with a failure; `code`, `subcode` and `text` are the host's.
 * - `timeout`: no answer in time. The call may still be carried out.
 * - `aborted`: the caller's `AbortSignal` fired. The call may still be carried out.
 * - `disconnected`: the connection was lost after the call was sent. It may have been carried out.
 * - `closed`: the client was closed, or the page is going away.
 * - `refused`: the host refuses this page (wrong token, foreign origin); nothing was sent.
 * - `unreadable`: the answer was not a JSON object.
 */
export type BridgeErrorKind =
  "failed" | "timeout" | "aborted" | "disconnected" | "closed" | "refused" | "unreadable";

/** The one error type that calls reject with. */
export class BridgeError extends Error {
  override readonly name = "BridgeError";

  constructor(
    /** What happened; the field to branch on. */
    readonly kind: BridgeErrorKind,
    /** Result code, signed 32-bit; one of `FailureCode` when the client raised the error itself. */
    readonly code: number,
    /** Sub-code of the host, 0 when the client raised the error itself. */
    readonly subcode: number,
    /** Text for people: the host's "result", or the client's words where that is just "failed". */
    readonly text: string,
    /** The call that failed, as "path method"; empty when no single call did. */
    readonly call = "",
  ) {
    super(call ? `${call}: ${text}` : text);
  }
}
