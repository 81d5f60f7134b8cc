/**
 * Message bodies: text with pictures, emotions and files in it as tokens. What `writeBody` made is
 * read by `readBody` as it was put in, whatever the text.
 *
 * A mark, U+200B, stands behind each token that does not end the body, and in text behind a "|" that
 * could belong to a token; a reader drops one mark in these places. The bridge and the engine write
 * and read bodies in the same way.
 */

/** One stretch of a message body, in display order. */
export type BodyPart =
  | { kind: "text"; text: string }
  | { kind: "picture"; path: string; md5: string; type: string }
  | { kind: "emotion"; path: string; shortcut: string }
  | { kind: "file"; name: string; path: string };

const mark = "\u200b";
const longestName = 512;

// The letters before the colon of a token that follows at once, as older writers put it, would fit.
const value = "((?:(?!pic:im(?:picture|emotion)\\|)[\\w\\-.!~*'()%+])*)";
const picture =
  `pic:(impicture|imemotion)\\|[^?|\\x00- ${mark}]*\\?filepath=${value}` +
  `((?:&(?:fileMD5|filetype|shortcut)=${value})*)`;
const file = `file:((?:(?!file:)[^|\\x00-\\x1f]){0,1024})\\|filepath=${value}`;
const stretch = new RegExp(`\\|${mark}|(?:${picture}|${file})${mark}?`, "g");

/**
 * Takes the body of a message ("msgbody") apart. Show the texts, names and shortcuts as text only:
 * they come from others. What is no token is text; texts do not follow each other.
 */
export function readBody(body: string): BodyPart[] {
  const parts: BodyPart[] = [];
  let text = "";
  let end = 0;
  const endText = () => {
    if (text) parts.push({ kind: "text", text });
    text = "";
  };
  for (const match of body.matchAll(stretch)) {
    text += body.slice(end, match.index);
    end = match.index + match[0].length;
    const [, kind, path, more = "", , name, filePath] = match;
    if (kind === undefined && name === undefined) {
      text += "|";
      continue;
    }
    endText();
    parts.push(
      name === undefined
        ? picturePart(kind!, path!, new Map(pairs(more)))
        : { kind: "file", name, path: unescaped(filePath!) },
    );
  }
  text += body.slice(end);
  endText();
  return parts;
}

function pairs(query: string): [string, string][] {
  return [...query.matchAll(/&(\w+)=([^&]*)/g)].map(([, key, text]) => [key!, unescaped(text!)]);
}

function picturePart(kind: string, escaped: string, more: Map<string, string>): BodyPart {
  const path = unescaped(escaped);
  if (kind === "imemotion") return { kind: "emotion", path, shortcut: more.get("shortcut") ?? "" };
  const md5 = more.get("fileMD5") ?? "";
  return { kind: "picture", path, md5, type: more.get("filetype") ?? "" };
}

/**
 * Makes the body of a message, or the "value" of a body item: the text arrives as it is, also where
 * it looks like a token. Without emotions to look for, this is what `ConvertMsgText2Emotion` does.
 */
export function writeBody(parts: readonly BodyPart[]): string {
  let body = "";
  let text = "";
  let afterToken = false;
  const put = (next: string, token: boolean) => {
    if (!next) return;
    body += (afterToken ? mark : "") + next;
    afterToken = token;
  };
  const endText = () => {
    put(
      text.replace(/\|/g, (bar, at: number) => (needsMark(text, at) ? bar + mark : bar)),
      false,
    );
    text = "";
  };
  for (const part of parts) {
    if (part.kind === "text") {
      text += part.text;
    } else {
      endText();
      put(tokenOf(part), true);
    }
  }
  endText();
  return body;
}

/** Whether a reader could take a bar of a text for a token's, or drop the mark behind it. */
function needsMark(text: string, bar: number): boolean {
  return (
    text.endsWith("pic:impicture", bar) ||
    text.endsWith("pic:imemotion", bar) ||
    text.startsWith("filepath=", bar + 1) ||
    text.startsWith(mark, bar + 1)
  );
}

function tokenOf(part: Exclude<BodyPart, { kind: "text" }>): string {
  const path = `filepath=${escaped(part.path)}`;
  switch (part.kind) {
    case "emotion":
      return `pic:imemotion|ID?${path}&shortcut=${escaped(part.shortcut)}`;
    case "picture": {
      const md5 = part.md5 && `&fileMD5=${escaped(part.md5)}`;
      const type = part.type && `&filetype=${escaped(part.type)}`;
      return `pic:impicture|${part.md5}?${path}${md5}${type}`;
    }
    case "file": {
      const name = part.name.slice(0, longestName).replace(/[\ud800-\udbff]$/, "");
      const clean = name.replace(/[|\x00-\x1f]/g, "_").replace(/file:/g, "file_");
      return `file:${clean}|${path}`;
    }
  }
}

function escaped(text: string): string {
  // Half a character cannot be escaped.
  return encodeURIComponent(text.replace(/\p{Surrogate}/gu, "\ufffd"));
}

/** A path as it was before it was escaped, such as the "url" of a picture entry. Never fails. */
export function unescaped(text: string): string {
  try {
    return decodeURIComponent(text.replace(/\+/g, " "));
  } catch {
    return text;
  }
}
