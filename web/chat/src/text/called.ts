/** A stretch of text, and whom it calls for. */
export interface CallStretch {
  text: string;
  call: "nobody" | "somebody" | "me";
}

/** Takes a text apart at the words that call for members, longer ones first. */
export function calledIn(text: string, calls: ReadonlyMap<string, boolean>): CallStretch[] {
  const words = [...calls.keys()].sort((a, b) => b.length - a.length);
  if (words.length === 0) return [{ text, call: "nobody" }];
  const escaped = words.map((word) => word.replace(/[.*+?^${}()|[\]\\]/g, "\\$&"));
  return text
    .split(new RegExp(`(${escaped.join("|")})`))
    .filter(Boolean)
    .map((part) => {
      const me = calls.get(part);
      return { text: part, call: me === undefined ? "nobody" : me ? "me" : "somebody" };
    });
}
