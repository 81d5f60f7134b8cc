import { MessageType, type Message } from "@imsdkbridge/client";
import type { JSX } from "preact";
import { useMemo, useState } from "preact/hooks";
import { emotionUrl, fileUrl } from "../files.ts";
import { bodyParts, type BodyPart } from "../text/body.ts";
import { folded, sizeOf } from "../text/fold.ts";
import { highlighted } from "../text/highlight.ts";
import { Icon } from "./icons.tsx";

interface BodyProps {
  message: Pick<Message, "msgtype" | "msgbody">;
  /** Words to highlight. */
  keywords?: readonly string[];
  /** Opens one of the message's pictures, counted from 0; without it they are only shown. */
  openPicture?: (path: string, index: number) => void;
}

/** What a message says. Text is only ever shown as text. */
export function Body({ message, keywords = [], openPicture }: BodyProps): JSX.Element {
  const { msgtype, msgbody } = message;
  const parts = useMemo(() => bodyParts({ msgtype, msgbody }), [msgtype, msgbody]);
  const lonely = parts.length > 0 && parts.length <= 3 && parts.every(isEmotion);
  const pictures = parts.filter(({ kind }) => kind === "picture");
  return (
    <div class={lonely ? "body lonely" : "body"} dir="auto">
      {parts.map((part, index) => {
        switch (part.kind) {
          case "text":
            return <Text key={index} text={part.text} keywords={keywords} />;
          case "picture": {
            const open = openPicture && (() => openPicture(part.path, pictures.indexOf(part)));
            return <Picture key={index} {...part} open={open} />;
          }
          case "emotion":
            return <Emotion key={index} {...part} />;
          case "file":
            return <File key={index} {...part} voice={msgtype === MessageType.audio} />;
        }
      })}
    </div>
  );
}

function isEmotion(part: BodyPart): boolean {
  return part.kind === "emotion" || (part.kind === "text" && !part.text.trim());
}

function Text({ text, keywords }: { text: string; keywords: readonly string[] }): JSX.Element {
  const [open, setOpen] = useState(false);
  const shown = useMemo(() => folded(text), [text]);
  const long = shown.length < text.length;
  return (
    <>
      <span class="text">
        {marked(open ? text : shown, keywords)}
        {long && !open && "…"}
      </span>
      {long && (
        <button type="button" class="link-button fold" onClick={() => setOpen(!open)}>
          {open ? "Show less" : `Show all (${sizeOf(text)})`}
        </button>
      )}
    </>
  );
}

function marked(text: string, keywords: readonly string[]): (string | JSX.Element)[] | string {
  if (keywords.length === 0) return text;
  return highlighted(text, keywords).map((stretch, index) =>
    stretch.hit ? <mark key={index}>{stretch.text}</mark> : stretch.text,
  );
}

interface PictureProps {
  path: string;
  /** The token as it was written, for when there is no such picture. */
  source: string;
  open: (() => void) | undefined;
}

function Picture({ path, source, open }: PictureProps): JSX.Element {
  const [broken, setBroken] = useState(false);
  if (broken) return <span class="text">{source}</span>;
  const image = (
    <img class="picture" src={fileUrl(path)} alt="Picture" onError={() => setBroken(true)} />
  );
  if (!open) return image;
  return (
    <button type="button" class="picture-button" aria-label="Open picture" onClick={open}>
      {image}
    </button>
  );
}

interface EmotionProps {
  path: string;
  shortcut: string;
  source: string;
}

function Emotion({ path, shortcut, source }: EmotionProps): JSX.Element {
  const [broken, setBroken] = useState(false);
  if (broken) return <span class="text">{shortcut || source}</span>;
  return (
    <img
      class="emotion"
      src={emotionUrl(path)}
      alt={shortcut || "Emotion"}
      title={shortcut}
      onError={() => setBroken(true)}
    />
  );
}

function File({ path, name, voice }: { path: string; name: string; voice: boolean }): JSX.Element {
  return (
    <a class="file" href={fileUrl(path)} target="_blank" rel="noreferrer">
      <Icon name={voice ? "voice" : "file"} />
      <span>{voice ? "Voice message" : name}</span>
    </a>
  );
}
