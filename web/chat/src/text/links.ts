import { linkifyit } from "linkify-it";

// Only web addresses that are written in full: "tides.md" may as well be a file.
const finder = linkifyit({ fuzzyLink: false, fuzzyEmail: false });
for (const schema of ["ftp:", "mailto:", "//"]) finder.add(schema, null);

/** A stretch of text, and where it leads if it is an address. */
export interface LinkStretch {
  text: string;
  href: string | undefined;
}

/** Takes a text apart at the web addresses in it. */
export function linked(text: string): LinkStretch[] {
  const stretches: LinkStretch[] = [];
  let end = 0;
  for (const { index, lastIndex, url } of finder.match(text) ?? []) {
    if (index > end) stretches.push({ text: text.slice(end, index), href: undefined });
    stretches.push({ text: text.slice(index, lastIndex), href: url });
    end = lastIndex;
  }
  if (end < text.length) stretches.push({ text: text.slice(end), href: undefined });
  return stretches;
}
