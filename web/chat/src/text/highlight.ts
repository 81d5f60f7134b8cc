/** A stretch of text, and whether it is what was searched for. */
export interface Stretch {
  text: string;
  hit: boolean;
}

/** Code units of an excerpt before its first hit. */
const lead = 24;

/** The words of a search field. */
export function keywordsOf(query: string): string[] {
  return query.split(/\s+/).filter((word) => /[\p{L}\p{N}\p{Extended_Pictographic}]/u.test(word));
}

const joined = /[\p{L}\p{N}]/u;
/** Scripts that write words without spaces: their words are found anywhere. */
const unspaced = /[\p{sc=Han}\p{sc=Hiragana}\p{sc=Katakana}\p{sc=Thai}\p{sc=Lao}\p{sc=Khmer}]/u;

/**
 * Takes a text apart at the keywords, as the search finds them: case and accents make no
 * difference, and a word counts from its beginning.
 */
export function highlighted(text: string, keywords: readonly string[]): Stretch[] {
  const { folded, starts } = fold(text);
  const ranges: [from: number, to: number][] = [];
  for (const keyword of keywords) {
    const wanted = fold(keyword).folded;
    if (!wanted) continue;
    for (let at = folded.indexOf(wanted); at >= 0; at = folded.indexOf(wanted, at + 1)) {
      if (beginsWord(folded, at)) ranges.push([starts[at]!, starts[at + wanted.length]!]);
    }
  }
  ranges.sort((a, b) => a[0] - b[0] || b[1] - a[1]);
  const stretches: Stretch[] = [];
  let end = 0;
  for (const [from, to] of ranges) {
    if (to <= end) continue;
    const start = Math.max(from, end);
    if (start > end) stretches.push({ text: text.slice(end, start), hit: false });
    stretches.push({ text: text.slice(start, to), hit: true });
    end = to;
  }
  if (end < text.length) stretches.push({ text: text.slice(end), hit: false });
  return stretches;
}

/** The stretches from shortly before the first hit, so that a hit far inside a text is seen. */
export function excerpt(stretches: readonly Stretch[]): readonly Stretch[] {
  const first = stretches.findIndex(({ hit }) => hit);
  const before = stretches
    .slice(0, Math.max(first, 0))
    .map(({ text }) => text)
    .join("");
  if (before.length <= 2 * lead) return stretches;
  // Neither half a word nor half a character, unless it is a word without end.
  const start = before.slice(-lead).replace(/^\S{0,12}\s|^[\udc00-\udfff]/, "");
  return [{ text: `…${start}`, hit: false }, ...stretches.slice(first)];
}

function beginsWord(folded: string, at: number): boolean {
  const first = String.fromCodePoint(folded.codePointAt(at)!);
  if (!joined.test(first) || unspaced.test(first)) return true;
  const before = at > 0 ? folded[at - 1]! : " ";
  return !joined.test(before) || unspaced.test(before);
}

/** A text without case and accents; `starts` has the place in the text of each of its units. */
function fold(text: string): { folded: string; starts: number[] } {
  let folded = "";
  const starts: number[] = [];
  let place = 0;
  for (const letter of text) {
    const plain = letter.normalize("NFD").replace(/\p{M}/gu, "").toLowerCase();
    for (let unit = 0; unit < plain.length; unit++) starts.push(place);
    folded += plain;
    place += letter.length;
  }
  starts.push(text.length);
  return { folded, starts };
}
