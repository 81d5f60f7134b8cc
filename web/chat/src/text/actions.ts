import { IMMsgStatus, IMMsgType, readBody } from "@imsdkbridge/client";
import type { ChatMessage } from "../store/peers.ts";

/** What can be done with a message, by name. */
export type Action =
  "copy" | "translate" | "forward" | "withdraw" | "resend" | "select" | "delete" | "open";

/** Milliseconds after which the server no longer takes a message back. */
export const withdrawTime = 2 * 60_000;

/** Whether somebody wrote the message, and did not take it back; else a notice stands for it. */
function isWritten({ msgstatus, msgtype, extinfo }: ChatMessage): boolean {
  return (
    msgstatus !== IMMsgStatus.kMsgWithdrawn &&
    msgtype !== IMMsgType.kMsgShake &&
    !extinfo.syschatmsg
  );
}

/** Whether a message can be sent on: a notice has nothing to send, nor has what never went out. */
export function canForward(message: ChatMessage, mine: boolean): boolean {
  return isWritten(message) && (!mine || message.msgstatus === IMMsgStatus.kMsgSent);
}

/** What a person can do with a message now, in the order of the menu. */
export function actionsFor(
  message: ChatMessage,
  { mine, readOnly, now }: { mine: boolean; readOnly: boolean; now: number },
): Action[] {
  const written = isWritten(message);
  const parts = written ? readBody(message.msgbody) : [];
  const words = parts.some((part) => part.kind === "text" && part.text.trim());
  const age = now - Number(message.svrtime || message.msgtime);
  const sent = message.msgstatus === IMMsgStatus.kMsgSent;
  const possible: [Action, boolean][] = [
    ["open", parts.some(({ kind }) => kind === "picture")],
    ["copy", words],
    ["translate", words && !mine],
    ["forward", !readOnly && canForward(message, mine)],
    ["resend", mine && message.msgstatus === IMMsgStatus.kMsgFailed],
    ["withdraw", mine && written && sent && !readOnly && age < withdrawTime],
    ["select", true],
    ["delete", message.msgstatus !== IMMsgStatus.kMsgSending],
  ];
  return possible.filter(([, can]) => can).map(([action]) => action);
}
