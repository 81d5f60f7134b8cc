import { BridgeError, EngineCode, ResultCode } from "@imsdkbridge/client";

const wordsByCode: Record<number, string> = {
  [EngineCode.notLoggedIn]: "nobody is signed in",
  [EngineCode.noLink]: "the server cannot be reached",
  [EngineCode.timeout]: "the server did not answer in time",
  [EngineCode.tooLarge]: "the message is too large",
  [EngineCode.empty]: "there is nothing to send",
  [EngineCode.notFound]: "there is no such message any more",
  [EngineCode.storage]: "the message could not be stored",
  [EngineCode.refused]: "the server does not allow it",
  [EngineCode.busy]: "too many messages are on their way",
  [EngineCode.unsupported]: "the server cannot do that",
  [ResultCode.notImplemented]: "this host cannot do that",
  [ResultCode.failed]: "the host cannot do that",
};

/** The words of an error for the person at the page. */
export function textOf(error: unknown): string {
  if (!(error instanceof BridgeError)) return error instanceof Error ? error.message : `${error}`;
  // Some answers say no more than that they failed; their code knows why.
  const mute = /^failed$|no such method$|not implemented/i.test(error.text);
  return mute ? (wordsByCode[error.code] ?? error.text) : error.text;
}
