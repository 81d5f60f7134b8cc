import { cut } from "./body.ts";

/** A text longer than this, in code units, is shown folded. */
const longest = 1600;
/** A text with more lines than this is shown folded. */
const mostLines = 24;

/** The part of a text to show before it is unfolded; the whole text when it is short. */
export function folded(text: string): string {
  let end = Math.min(text.length, longest);
  let lines = 0;
  for (let at = text.indexOf("\n"); at >= 0 && at < end; at = text.indexOf("\n", at + 1)) {
    if (++lines === mostLines) end = at;
  }
  // Folding away a few words only costs the reader a click.
  return text.length - end < 200 && lines < mostLines ? text : cut(text, end);
}

/** Size of a text as people read it, in bytes of UTF-8. */
export function sizeOf(text: string): string {
  return sizeText(new TextEncoder().encode(text).length);
}

/** A number of bytes as people read it. */
export function sizeText(bytes: number): string {
  if (bytes < 1024) return bytes === 1 ? "1 byte" : `${bytes} bytes`;
  const [size, unit] = bytes < 1024 * 1024 ? [bytes / 1024, "KB"] : [bytes / 1024 / 1024, "MB"];
  return `${size < 10 ? size.toFixed(1) : Math.round(size)} ${unit}`;
}
