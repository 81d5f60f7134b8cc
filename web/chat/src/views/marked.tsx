import type { JSX } from "preact";
import { highlighted } from "../text/highlight.ts";

/** A text with its keywords marked. */
export function marked(
  text: string,
  keywords: readonly string[],
): (string | JSX.Element)[] | string {
  if (keywords.length === 0) return text;
  return highlighted(text, keywords).map((stretch, index) =>
    stretch.hit ? <mark key={index}>{stretch.text}</mark> : stretch.text,
  );
}
