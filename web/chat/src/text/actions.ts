import { IMMsgStatus, IMMsgType, type IMMessage } from "@imsdkbridge/client";
import { bodyParts } from "./body.ts";

/** What can be done with a message, by name. */
export type Action =
  "copy" | "translate" | "forward" | "withdraw" | "resend" | "select" | "delete" | "open";

/** Milliseconds after which the server no longer takes a message back. */
export const withdrawTime = 2 * 60_000;

/** What a person can do with a message now, in the order of the menu. */
export function actionsFor(
  message: IMMessage,
  { mine, readOnly, now }: { mine: boolean; readOnly: boolean; now: number },
): Action[] {
  const written =
    message.msgstatus !== IMMsgStatus.kMsgWithdrawn &&
    message.msgtype !== IMMsgType.kMsgShake &&
    !message.extinfo.syschatmsg;
  const parts = written ? bodyParts(message) : [];
  const words = parts.some((part) => part.kind === "text" && part.text.trim());
  const age = now - Number(message.svrtime || message.msgtime);
  const sent = message.msgstatus === IMMsgStatus.kMsgSent;
  const possible: [Action, boolean][] = [
    ["open", parts.some(({ kind }) => kind === "picture")],
    ["copy", words],
    ["translate", words && !mine],
    ["forward", written && !readOnly && (sent || !mine)],
    ["resend", mine && message.msgstatus === IMMsgStatus.kMsgFailed],
    ["withdraw", mine && written && sent && !readOnly && age < withdrawTime],
    ["select", true],
    ["delete", message.msgstatus !== IMMsgStatus.kMsgSending],
  ];
  return possible.filter(([, can]) => can).map(([action]) => action);
}
