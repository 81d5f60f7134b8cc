import type { Message } from "@imsdkbridge/client";
import { sameUser } from "../store/users.ts";

/** One row of the message list. */
export type Row =
  | { kind: "day"; key: string; time: Date }
  | { kind: "message"; key: string; message: Message; first: boolean; last: boolean };

/** Messages of one sender closer than this, in milliseconds, are shown as one group. */
const groupGap = 5 * 60_000;

/** Lays messages out as rows: a separator before each day, groups by sender within it. */
export function rowsOf(messages: readonly Message[]): Row[] {
  const rows: Row[] = [];
  messages.forEach((message, index) => {
    const before = messages[index - 1];
    const after = messages[index + 1];
    const time = timeOf(message);
    if (!before || time.toDateString() !== timeOf(before).toDateString()) {
      rows.push({ kind: "day", key: `day ${time.toDateString()}`, time });
    }
    const first = !before || !together(before, message);
    const last = !after || !together(message, after);
    rows.push({ kind: "message", key: message.msgid, message, first, last });
  });
  return rows;
}

/** When a message was written. */
export function timeOf(message: Pick<Message, "msgtime">): Date {
  return new Date(Number(message.msgtime));
}

function together(a: Message, b: Message): boolean {
  const [from, to] = [timeOf(a), timeOf(b)];
  return (
    sameUser(a.fromid, b.fromid) &&
    to.getTime() - from.getTime() < groupGap &&
    from.toDateString() === to.toDateString()
  );
}
