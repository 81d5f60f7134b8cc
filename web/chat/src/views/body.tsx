import { IMMsgType, type IMMessage } from "@imsdkbridge/client";
import type { JSX } from "preact";
import { useMemo, useState } from "preact/hooks";
import { emotionUrl, fileUrl, saveFile } from "../files.ts";
import { bodyParts, type BodyPart } from "../text/body.ts";
import { folded, sizeOf } from "../text/fold.ts";
import { highlighted } from "../text/highlight.ts";
import { linked } from "../text/links.ts";
import { textOf } from "../text/reasons.ts";
import { useStore } from "./context.ts";
import { Icon } from "./icons.tsx";

interface BodyProps {
  message: Pick<IMMessage, "msgtype" | "msgbody">;
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
            return <IMMsgPicture key={index} {...part} open={open} />;
          }
          case "emotion":
            return <Emotion key={index} {...part} />;
          case "file":
            return msgtype === IMMsgType.kMsgAudio ? (
              <Voice key={index} {...part} />
            ) : (
              <FileLink key={index} {...part} icon="file" />
            );
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
        {linked(open ? text : shown).map(({ text, href }, index) =>
          href ? (
            <a key={index} class="link" href={href} target="_blank" rel="noopener noreferrer">
              {marked(text, keywords)}
            </a>
          ) : (
            marked(text, keywords)
          ),
        )}
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

function IMMsgPicture({ path, source, open }: PictureProps): JSX.Element {
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

function Voice({ path, name }: { path: string; name: string }): JSX.Element {
  const [broken, setBroken] = useState(false);
  // What this browser cannot play, another program may.
  if (broken) return <FileLink path={path} name={name} icon="voice" />;
  return (
    <audio
      class="voice"
      controls
      preload="metadata"
      aria-label="Voice message"
      src={fileUrl(path)}
      onError={() => setBroken(true)}
    />
  );
}

interface FileLinkProps {
  path: string;
  name: string;
  icon: "file" | "voice";
}

function FileLink({ path, name, icon }: FileLinkProps): JSX.Element {
  const { toasts } = useStore();
  const save = (event: MouseEvent) => {
    event.preventDefault();
    saveFile(path, name).catch((error: unknown) =>
      toasts.problem(`${name} could not be saved: ${textOf(error)}.`),
    );
  };
  return (
    <a class="file" href={fileUrl(path)} title="Save" rel="noreferrer" onClick={save}>
      <Icon name={icon} />
      <span>{icon === "voice" ? `Voice message (${name})` : name}</span>
    </a>
  );
}
