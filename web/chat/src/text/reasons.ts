import { BridgeError, EngineCode, FailureCode } from "@imsdkbridge/client";

const wordsByCode: Record<number, string> = {
  [EngineCode.kEngineNotLoggedIn]: "nobody is signed in",
  [EngineCode.kEngineNoLink]: "the server cannot be reached",
  [EngineCode.kEngineTimeout]: "the server did not answer in time",
  [EngineCode.kEngineTooLarge]: "the message is too large",
  [EngineCode.kEngineEmpty]: "there is nothing to send",
  [EngineCode.kEngineNotFound]: "there is no such message any more",
  [EngineCode.kEngineStorage]: "the message could not be stored",
  [EngineCode.kEngineRefused]: "the server does not allow it",
  [EngineCode.kEngineBusy]: "too many messages are on their way",
  [EngineCode.kEngineUnsupported]: "the server cannot do that",
  [FailureCode.notImplemented]: "this host cannot do that",
  [FailureCode.failed]: "the host cannot do that",
};

/** The words of an error for the person at the page. */
export function textOf(error: unknown): string {
  if (!(error instanceof BridgeError)) return error instanceof Error ? error.message : `${error}`;
  // Some answers say no more than that they failed; their code knows why.
  const mute = /^failed$|no such method$|not implemented/i.test(error.text);
  return mute ? (wordsByCode[error.code] ?? error.text) : error.text;
}
