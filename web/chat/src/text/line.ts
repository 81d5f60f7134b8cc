import { IMMsgStatus, readBody, type BodyPart } from "@imsdkbridge/client";
import { cut, wordsOf } from "./body.ts";
import { excerpt, highlighted, type Stretch } from "./highlight.ts";
import { noteOf } from "./note.ts";
import { type ChatMessage, isTribe } from "../store/peers.ts";

type EmotionPart = Extract<BodyPart, { kind: "emotion" }>;

/** One line that stands for a message, with its emotions where they stand in it. */
export interface Line {
  /** With a placeholder for each emotion. */
  stretches: readonly Stretch[];
  /** What the placeholders stand for, in order. */
  emotions: readonly EmotionPart[];
}

/** Stands for an emotion in the text of a line. */
const placeholder = "\ufffc";
/** Code units of a line. */
const longest = 160;

/** A message in a list: the words of its bubble, after who says them and what is to be known of it. */
export function lineOf(message: ChatMessage, mine: boolean, sender = message.fromid.nick): Line {
  const note = noteOf(message, mine, sender);
  if (note !== undefined) return { stretches: [plain(note)], emotions: [] };
  const { stretches, emotions } = whole(message, []);
  const text = stretches.map(({ text }) => text).join("");
  return {
    stretches: [plain(beforeWords(message, mine, sender) + cut(text.trim(), longest))],
    emotions,
  };
}

/** A message that was found: from shortly before its first hit on, which is marked. */
export function hitLine(
  message: ChatMessage,
  mine: boolean,
  keywords: readonly string[],
  sender = message.fromid.nick,
): Line {
  const { stretches, emotions } = whole(message, keywords);
  const rest = excerpt(stretches);
  const shown = emotions.slice(
    emotions.length - rest.reduce((sum, { text }) => sum + placeholdersIn(text), 0),
  );
  let left = longest;
  const short = rest.map(({ text, hit }) => {
    const part = cut(text, left);
    left -= part.length;
    return { text: part, hit };
  });
  return {
    stretches: [plain(beforeWords(message, mine, sender)), ...short].filter(({ text }) => text),
    emotions: shown,
  };
}

/** A part of a line: a text, or an emotion. */
export type Piece = string | EmotionPart;

/** Takes a text with placeholders apart; `emotions` begin with that of its first one. */
export function piecesOf(text: string, emotions: readonly EmotionPart[]): Piece[] {
  return text.split(placeholder).flatMap((words, index) => {
    const emotion = emotions[index - 1];
    return index > 0 && emotion ? [emotion, words] : [words];
  });
}

/** How many emotions stand in a text. */
export function placeholdersIn(text: string): number {
  return text.split(placeholder).length - 1;
}

function plain(text: string): Stretch {
  return { text, hit: false };
}

function beforeWords(
  { cid, msgstatus, extinfo }: ChatMessage,
  mine: boolean,
  sender: string,
): string {
  if (msgstatus === IMMsgStatus.kMsgFailed) return "Not sent: ";
  if (extinfo.autochatmsg) return "Automatic reply: ";
  if (mine) return "You: ";
  return isTribe(cid) ? `${sender}: ` : "";
}

/** A message in one line, with the keywords marked in its own words. */
function whole({ msgtype, msgbody }: ChatMessage, keywords: readonly string[]): Line {
  // What is typed is no placeholder.
  const message = { msgtype, msgbody: msgbody.replaceAll(placeholder, "\ufffd") };
  const stretches = wordsOf(message, () => placeholder).flatMap(({ text, own }) => {
    const line = text.replace(/\s+/g, " ");
    return own ? highlighted(line, keywords) : [plain(line)];
  });
  const emotions = readBody(message.msgbody).filter((part) => part.kind === "emotion");
  return { stretches, emotions };
}
