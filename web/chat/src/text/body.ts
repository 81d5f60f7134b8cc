import { IMMsgStatus, IMMsgType, type IMMessage } from "@imsdkbridge/client";

/** One piece of a message body, in display order. */
export type BodyPart =
  | { kind: "text"; text: string }
  | { kind: "picture"; path: string; source: string }
  | { kind: "emotion"; path: string; shortcut: string; source: string }
  | { kind: "file"; name: string; path: string };

const value = "[\\w\\-.!~*'()%+]*";
const token = new RegExp(
  `pic:(impicture|imemotion)\\|([^?\\s|]*)\\?(filepath=${value}(?:&(?:fileMD5|filetype|shortcut)=${value})*)`,
  "g",
);
const fileBody = /^file:([^|]*)\|filepath=(.*)$/s;

/** Takes a message body apart. The texts of all parts are to be shown as text only. */
export function bodyParts({
  msgtype,
  msgbody,
}: Pick<IMMessage, "msgtype" | "msgbody">): BodyPart[] {
  const file = fileBody.exec(msgbody);
  if (file && (msgtype === IMMsgType.kMsgAudio || msgtype === IMMsgType.kMsgFile)) {
    return [{ kind: "file", name: file[1]!, path: unescaped(file[2]!) }];
  }
  const parts: BodyPart[] = [];
  let end = 0;
  for (const match of msgbody.matchAll(token)) {
    if (match.index > end) parts.push({ kind: "text", text: msgbody.slice(end, match.index) });
    parts.push(tokenPart(match));
    end = match.index + match[0].length;
  }
  if (end < msgbody.length) parts.push({ kind: "text", text: msgbody.slice(end) });
  return parts;
}

function tokenPart([source, kind, , query]: RegExpExecArray): BodyPart {
  const values = new URLSearchParams(query);
  const path = values.get("filepath") ?? "";
  return kind === "impicture"
    ? { kind: "picture", path, source }
    : { kind: "emotion", path, shortcut: values.get("shortcut") ?? "", source };
}

/** An escaped path of a token, as it was before; broken escapes stay as they are. */
export function unescaped(text: string): string {
  try {
    return decodeURIComponent(text);
  } catch {
    return text;
  }
}

/** A message as plain text, for copying: what is no text is named in brackets. */
export function plainText(message: Pick<IMMessage, "msgtype" | "msgbody">): string {
  const words = bodyParts(message).map((part) => {
    switch (part.kind) {
      case "text":
        return part.text;
      case "picture":
        return "[Picture]";
      case "emotion":
        return part.shortcut || "[Emotion]";
      case "file":
        return message.msgtype === IMMsgType.kMsgAudio ? "[Voice message]" : `[File] ${part.name}`;
    }
  });
  return words.join("");
}

/** A message's text in one line, without the whitespace around its words. */
export function oneLine(message: Pick<IMMessage, "msgtype" | "msgbody">): string {
  return plainText(message).replace(/\s+/g, " ").trim();
}

/** One line that stands for a message in lists; long texts are cut. */
export function preview(message: Pick<IMMessage, "msgtype" | "msgbody" | "msgstatus">): string {
  if (message.msgstatus === IMMsgStatus.kMsgWithdrawn) return "Message withdrawn";
  if (message.msgtype === IMMsgType.kMsgShake) return "[Window shake]";
  return cut(plainText(message).slice(0, 2000).replace(/\s+/g, " ").trim(), 160);
}

/** The first `length` code units of a text, never half a character. */
export function cut(text: string, length: number): string {
  if (text.length <= length) return text;
  const code = text.charCodeAt(length - 1);
  return text.slice(0, code >= 0xd800 && code < 0xdc00 ? length - 1 : length);
}
