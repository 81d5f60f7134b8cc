import { IMMsgStatus } from "@imsdkbridge/client";
import { comparePositions, type ChatMessage } from "./peers.ts";

/** Joins two sorted runs of messages; of a message in both, the incoming one counts. */
export function merge(
  known: readonly ChatMessage[],
  incoming: readonly ChatMessage[],
): readonly ChatMessage[] {
  const [first, last] = [incoming[0], incoming.at(-1)];
  if (!first || !last) return known;
  // Long runs are only joined at their ends, as live messages and pages of history come.
  if (known.length === 0 || comparePositions(first, known.at(-1)!) > 0) {
    return distinct([...known, ...incoming], incoming);
  }
  if (comparePositions(last, known[0]!) < 0) return distinct([...incoming, ...known], incoming);
  const byId = new Map(known.map((message) => [message.msgid, message]));
  for (const message of incoming) {
    byId.set(message.msgid, newest(byId.get(message.msgid), message));
  }
  return [...byId.values()].sort(comparePositions);
}

function distinct(
  joined: readonly ChatMessage[],
  incoming: readonly ChatMessage[],
): readonly ChatMessage[] {
  const sound = incoming.every(
    (message, at) => at === 0 || comparePositions(incoming[at - 1]!, message) < 0,
  );
  if (sound) return joined;
  return [...new Map(joined.map((message) => [message.msgid, message])).values()].sort(
    comparePositions,
  );
}

// A page that was read before an event must not undo what the event told.
function newest(known: ChatMessage | undefined, incoming: ChatMessage): ChatMessage {
  if (!known) return incoming;
  const settled =
    incoming.msgstatus === IMMsgStatus.kMsgSending || known.msgstatus === IMMsgStatus.kMsgWithdrawn;
  return {
    ...incoming,
    msgstatus: settled ? known.msgstatus : incoming.msgstatus,
    msgbody: known.msgstatus === IMMsgStatus.kMsgWithdrawn ? "" : incoming.msgbody,
    readflag: known.readflag || incoming.readflag,
  };
}
