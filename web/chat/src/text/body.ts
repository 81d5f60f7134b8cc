import { IMMsgStatus, IMMsgType, readBody } from "@imsdkbridge/client";
import type { ChatMessage } from "../store/peers.ts";

/** What stands for a part of a message where only text can, and whether it is the message's own. */
export interface Words {
  text: string;
  own: boolean;
}

/** The words of a message: what is no text is named in brackets, an emotion as the caller likes. */
export function wordsOf(
  { msgtype, msgbody }: Pick<ChatMessage, "msgtype" | "msgbody">,
  emotion = (shortcut: string) => shortcut || "[Emotion]",
): Words[] {
  const words: Words[] = [];
  let alone = false;
  for (const part of readBody(msgbody)) {
    // A picture stands on a line of its own.
    const breaks = words.length > 0 && (alone || part.kind === "picture");
    if (breaks && !words.at(-1)!.text.endsWith("\n")) words.push({ text: "\n", own: false });
    alone = part.kind === "picture";
    switch (part.kind) {
      case "text":
        words.push({ text: part.text, own: true });
        break;
      case "picture":
        words.push({ text: "[Picture]", own: false });
        break;
      case "emotion":
        words.push({ text: emotion(part.shortcut), own: false });
        break;
      case "file":
        if (msgtype === IMMsgType.kMsgAudio) {
          words.push({ text: "[Voice message]", own: false });
        } else {
          words.push({ text: "[File] ", own: false }, { text: part.name, own: true });
        }
    }
  }
  return words;
}

/** A message as plain text, for copying. */
export function plainText(message: Pick<ChatMessage, "msgtype" | "msgbody">): string {
  return wordsOf(message)
    .map(({ text }) => text)
    .join("");
}

/** One line that stands for a message in lists; long texts are cut. */
export function preview(message: Pick<ChatMessage, "msgtype" | "msgbody" | "msgstatus">): string {
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
