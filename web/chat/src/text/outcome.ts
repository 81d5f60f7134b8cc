import { keyOf, type Peer } from "../store/peers.ts";
import { grouped } from "./grouped.ts";

/** What is done with messages, in words. */
export interface Verb {
  doing: "Forwarding" | "Sending";
  done: "Forwarded" | "Sent";
}

/** How one message to one receiver stands. */
interface Part {
  cid: Peer;
  state: "handing" | "open" | "sent" | "failed";
  reason: string;
}

/** How what was sent to several people stands, in words. */
export interface Outcome {
  text: string;
  /** Whether somebody did not get it. */
  problem: boolean;
  /** Whether all that can be known is known. */
  settled: boolean;
}

/** How a receiver is called. */
type NameOf = (cid: Peer) => string;

/** More receivers than this are counted, not named; who was not reached is always named. */
const mostNames = 3;

/** Tells who was reached, who was not and why, and for whom that is not known yet. */
export function outcomeOf({ doing, done }: Verb, parts: readonly Part[], nameOf: NameOf): Outcome {
  const receivers = [...grouped(parts, ({ cid }) => keyOf(cid)).values()];
  const failed = receivers.filter((lot) => lot.some(({ state }) => state === "failed"));
  const sound = receivers.filter((lot) => !failed.includes(lot));
  const open = sound.filter((lot) => lot.some(({ state }) => state !== "sent"));
  const words: string[] = [];
  if (open.length > 0) words.push(`${doing} to ${names(open, nameOf)}…`);
  else if (sound.length > 0)
    words.push(`${done} to ${names(sound, nameOf)}${failed.length ? "." : ""}`);
  if (failed.length > 0) words.push(`Not ${done.toLowerCase()} to ${blames(failed, nameOf)}.`);
  return { text: words.join(" "), problem: failed.length > 0, settled: open.length === 0 };
}

function names(receivers: readonly Part[][], nameOf: NameOf): string {
  if (receivers.length > mostNames) return `${receivers.length} people`;
  return receivers.map((lot) => nameOf(lot[0]!.cid)).join(", ");
}

/** The names of those who were not reached; people with one reason stand together before it. */
function blames(receivers: readonly Part[][], nameOf: NameOf): string {
  const byReason = grouped(receivers, (lot) => {
    return lot.find(({ state }) => state === "failed")!.reason.replace(/\.$/, "");
  });
  return [...byReason]
    .map(
      ([reason, lots]) => `${lots.map((lot) => nameWithCount(lot, nameOf)).join(", ")}: ${reason}`,
    )
    .join("; ");
}

function nameWithCount(lot: readonly Part[], nameOf: NameOf): string {
  const name = nameOf(lot[0]!.cid);
  const failed = lot.filter(({ state }) => state === "failed").length;
  return failed < lot.length ? `${name} (${failed} of ${lot.length} messages)` : name;
}
