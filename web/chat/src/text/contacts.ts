import { type IMContact, type IMContactVerifyMsg, IMContactVerifyType } from "@imsdkbridge/client";

/** The name to show of a user. */
export function contactName({ display, nick }: Pick<IMContact, "display" | "nick">): string {
  return display || nick;
}

/** A verification message in a sentence, without its words. */
export function contactRequestLine({ type, fromname, fromid }: IMContactVerifyMsg): string {
  const from = fromname || fromid.nick;
  switch (type) {
    case IMContactVerifyType.kContactAsked:
      return `${from} wants to add you`;
    case IMContactVerifyType.kContactAgreed:
      return `You let ${from} add you`;
    case IMContactVerifyType.kContactAgreedAndAdded:
      return `You and ${from} added each other`;
    case IMContactVerifyType.kContactRefused:
      return `You refused ${from}`;
    case IMContactVerifyType.kContactBlacked:
      return `You refused and blocked ${from}`;
    case IMContactVerifyType.kContactIgnored:
      return `You put the request of ${from} aside`;
    case IMContactVerifyType.kContactReported:
      return `You reported the request of ${from}`;
    case IMContactVerifyType.kContactAnsweredYes:
      return `${from} is your contact now`;
    case IMContactVerifyType.kContactAnsweredAndAdded:
      return `${from} and you are contacts now`;
    case IMContactVerifyType.kContactAnsweredNo:
      return `${from} refused your request`;
  }
}
