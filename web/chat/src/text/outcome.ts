import type { IMUserID } from "@imsdkbridge/client";
import { keyOf } from "../store/users.ts";
import { grouped } from "./grouped.ts";

/** What is done with messages, in words. */
export interface Verb {
  doing: "Forwarding" | "Sending";
  done: "Forwarded" | "Sent";
}

/** How one message to one receiver stands. */
interface Part {
  cid: IMUserID;
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

/** More receivers than this are counted, not named; who was not reached is always named. */
const mostNames = 3;

/** Tells who was reached, who was not and why, and for whom that is not known yet. */
export function outcomeOf({ doing, done }: Verb, parts: readonly Part[]): Outcome {
  const receivers = [...grouped(parts, ({ cid }) => keyOf(cid)).values()];
  const failed = receivers.filter((lot) => lot.some(({ state }) => state === "failed"));
  const sound = receivers.filter((lot) => !failed.includes(lot));
  const open = sound.filter((lot) => lot.some(({ state }) => state !== "sent"));
  const words: string[] = [];
  if (open.length > 0) words.push(`${doing} to ${names(open)}…`);
  else if (sound.length > 0) words.push(`${done} to ${names(sound)}${failed.length ? "." : ""}`);
  if (failed.length > 0) words.push(`Not ${done.toLowerCase()} to ${blames(failed)}.`);
  return { text: words.join(" "), problem: failed.length > 0, settled: open.length === 0 };
}

function names(receivers: readonly Part[][]): string {
  if (receivers.length > mostNames) return `${receivers.length} people`;
  return receivers.map((lot) => lot[0]!.cid.nick).join(", ");
}

/** The names of those who were not reached; people with one reason stand together before it. */
function blames(receivers: readonly Part[][]): string {
  const byReason = grouped(receivers, (lot) => {
    return lot.find(({ state }) => state === "failed")!.reason.replace(/\.$/, "");
  });
  return [...byReason]
    .map(([reason, lots]) => `${lots.map(nameWithCount).join(", ")}: ${reason}`)
    .join("; ");
}

function nameWithCount(lot: readonly Part[]): string {
  const { nick } = lot[0]!.cid;
  const failed = lot.filter(({ state }) => state === "failed").length;
  return failed < lot.length ? `${nick} (${failed} of ${lot.length} messages)` : nick;
}
