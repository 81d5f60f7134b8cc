import { IMMsgStatus, IMMsgType } from "@imsdkbridge/client";
import { plainText } from "./body.ts";
import type { ChatMessage } from "../store/peers.ts";

/** The words of a message that is shown as a centred note; none for one that stands in a bubble. */
export function noteOf(
  message: ChatMessage,
  mine: boolean,
  sender = message.fromid.nick,
): string | undefined {
  if (message.msgstatus === IMMsgStatus.kMsgWithdrawn) {
    return mine ? "You withdrew a message" : `${sender} withdrew a message`;
  }
  if (message.extinfo.syschatmsg) return plainText(message);
  if (message.msgtype === IMMsgType.kMsgShake) {
    return mine ? "You shook the window" : `${sender} shook your window`;
  }
  return undefined;
}
