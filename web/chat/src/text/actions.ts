import { MessageStatus, MessageType, type Message } from "@imsdkbridge/client";
import { bodyParts } from "./body.ts";

/** What can be done with a message, by name. */
export type Action =
  "copy" | "translate" | "forward" | "withdraw" | "resend" | "select" | "delete" | "open";

/** Milliseconds after which the server no longer takes a message back. */
export const withdrawTime = 2 * 60_000;

/** What a person can do with a message now, in the order of the menu. */
export function actionsFor(
  message: Message,
  { mine, readOnly, now }: { mine: boolean; readOnly: boolean; now: number },
): Action[] {
  const written =
    message.msgstatus !== MessageStatus.withdrawn &&
    message.msgtype !== MessageType.shake &&
    !message.extinfo.syschatmsg;
  const parts = written ? bodyParts(message) : [];
  const words = parts.some((part) => part.kind === "text" && part.text.trim());
  const age = now - Number(message.svrtime || message.msgtime);
  const sent = message.msgstatus === MessageStatus.sent;
  const possible: [Action, boolean][] = [
    ["open", parts.some(({ kind }) => kind === "picture")],
    ["copy", words],
    ["translate", words && !mine],
    ["forward", written && !readOnly && (sent || !mine)],
    ["resend", mine && message.msgstatus === MessageStatus.failed],
    ["withdraw", mine && written && sent && !readOnly && age < withdrawTime],
    ["select", true],
    ["delete", message.msgstatus !== MessageStatus.sending],
  ];
  return possible.filter(([, can]) => can).map(([action]) => action);
}
