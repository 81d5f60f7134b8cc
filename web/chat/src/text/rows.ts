import { samePeer, type ChatMessage } from "../store/peers.ts";

/** How a message stands among its neighbours. */
export interface Row {
  message: ChatMessage;
  /** Whether a new day begins with it. */
  newDay: boolean;
  /** Whether it begins and ends a group of one sender's messages. */
  first: boolean;
  last: boolean;
}

/** Messages of one sender closer than this, in milliseconds, are shown as one group. */
const groupGap = 5 * 60_000;

/** The row of one message; only its neighbours are looked at, so that long lists stay cheap. */
export function rowAt(messages: readonly ChatMessage[], index: number): Row {
  const message = messages[index]!;
  const before = messages[index - 1];
  const after = messages[index + 1];
  return {
    message,
    newDay: !before || timeOf(message).toDateString() !== timeOf(before).toDateString(),
    first: !before || !together(before, message),
    last: !after || !together(message, after),
  };
}

/** When a message was written. */
export function timeOf(message: Pick<ChatMessage, "msgtime">): Date {
  return new Date(Number(message.msgtime));
}

function together(a: ChatMessage, b: ChatMessage): boolean {
  const [from, to] = [timeOf(a), timeOf(b)];
  return (
    samePeer(a.fromid, b.fromid) &&
    to.getTime() - from.getTime() < groupGap &&
    from.toDateString() === to.toDateString()
  );
}
