import { IMMsgStatus, IMMsgType, type IMMessage } from "@imsdkbridge/client";
import { plainText } from "./body.ts";

/** The words of a message that is shown as a centred note; none for one that stands in a bubble. */
export function noteOf(message: IMMessage, mine: boolean): string | undefined {
  if (message.msgstatus === IMMsgStatus.kMsgWithdrawn) {
    return mine ? "You withdrew a message" : `${message.fromid.nick} withdrew a message`;
  }
  if (message.extinfo.syschatmsg) return plainText(message);
  if (message.msgtype === IMMsgType.kMsgShake) {
    return mine ? "You shook the window" : `${message.fromid.nick} shook your window`;
  }
  return undefined;
}
