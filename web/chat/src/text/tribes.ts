import {
  TribeMemberLevel,
  TribeVerifyType,
  type IMTribeMember,
  type TribeVerifyMsg,
} from "@imsdkbridge/client";

/** Who may join, by its number. */
export const joinWords = [
  "Everybody",
  "Whoever knows the password",
  "Whoever a manager allows",
  "Only who is invited",
] as const;

/** Which of a tribe's messages count, by its number. */
export const remindWords = ["All, with a badge", "All, quietly", "None"] as const;

/** What somebody is in a tribe, when it is worth a word. */
export function levelWord(level: TribeMemberLevel): string {
  if (level === TribeMemberLevel.kTribeOwner) return "Owner";
  if (level === TribeMemberLevel.kTribeManager) return "Administrator";
  return "";
}

/** The name to show of a member. */
export function nameOf({ display, nick }: Pick<IMTribeMember, "display" | "nick">): string {
  return display || nick;
}

/** A verification message in a sentence, without its words. */
export function requestLine({ type, fromid, fromname, managerid }: TribeVerifyMsg): string {
  const from = fromname || fromid.nick;
  const by = managerid.nick;
  switch (type) {
    case TribeVerifyType.kVerifyJoinAsked:
      return by ? `${from} asked to join; ${by} decided` : `${from} asks to join`;
    case TribeVerifyType.kVerifyInvited:
      return by ? `${from} invited you; it is decided` : `${from} invites you`;
    case TribeVerifyType.kVerifyJoinAllowed:
      return `${by} let ${from} join`;
    case TribeVerifyType.kVerifyJoinRefused:
      return `${by} refused the request of ${from}`;
    case TribeVerifyType.kVerifyInviteAccepted:
      return `${by} accepted the invitation of ${from}`;
    case TribeVerifyType.kVerifyInviteRefused:
      return `${by} declined the invitation of ${from}`;
  }
}
