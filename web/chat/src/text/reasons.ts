import { BridgeError } from "@imsdkbridge/client";

/** The words of an error for the person at the page. */
export function textOf(error: unknown): string {
  if (!(error instanceof BridgeError)) return error instanceof Error ? error.message : `${error}`;
  // Words for developers say less than that it cannot be done.
  return /no such method$|not implemented/i.test(error.text)
    ? "this host cannot do that"
    : error.text;
}
