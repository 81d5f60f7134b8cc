import { IMMsgType, readBody, type BodyPart } from "@imsdkbridge/client";
import { Fragment, type JSX } from "preact";
import { useMemo, useState } from "preact/hooks";
import { emotionUrl, fileUrl } from "../files.ts";
import { calledIn } from "../text/called.ts";
import { folded, sizeOf } from "../text/fold.ts";
import { linked } from "../text/links.ts";
import { FileLink, nameIn, type FileLinkProps } from "./file_link.tsx";
import { marked } from "./marked.tsx";
import { useFolding } from "./use_folding.ts";
import type { ChatMessage } from "../store/peers.ts";

interface BodyProps {
  message: Pick<ChatMessage, "msgtype" | "msgbody">;
  /** Words to highlight. */
  keywords?: readonly string[];
  /** Words that call for members, and whether for the person at the page. */
  calls?: ReadonlyMap<string, boolean>;
  /** Opens one of the message's pictures, counted from 0; without it they are only shown. */
  openPicture?: (path: string, index: number) => void;
}

/** What a message says. Text is only ever shown as text. */
export function Body({
  message,
  keywords = [],
  calls = noCalls,
  openPicture,
}: BodyProps): JSX.Element {
  const { msgtype, msgbody } = message;
  const parts = useMemo(() => readBody(msgbody), [msgbody]);
  const lonely = parts.length > 0 && parts.length <= 3 && parts.every(isEmotion);
  const pictures = parts.filter(({ kind }) => kind === "picture");
  return (
    <div class={lonely ? "body lonely" : "body"} dir="auto">
      {parts.map((part, index) => {
        switch (part.kind) {
          case "text":
            return <Text key={index} text={part.text} keywords={keywords} calls={calls} />;
          case "picture": {
            const open = openPicture && (() => openPicture(part.path, pictures.indexOf(part)));
            return <IMMsgPicture key={index} path={part.path} open={open} />;
          }
          case "emotion":
            return <Emotion key={index} path={part.path} shortcut={part.shortcut} />;
          case "file":
            return msgtype === IMMsgType.kMsgAudio ? (
              <Voice key={index} {...part} keywords={keywords} />
            ) : (
              <FileLink key={index} {...part} icon="file" keywords={keywords} />
            );
        }
      })}
    </div>
  );
}

function isEmotion(part: BodyPart): boolean {
  return part.kind === "emotion" || (part.kind === "text" && !part.text.trim());
}

const noCalls: ReadonlyMap<string, boolean> = new Map();

interface TextProps {
  text: string;
  keywords: readonly string[];
  calls: ReadonlyMap<string, boolean>;
}

function Text({ text, keywords, calls }: TextProps): JSX.Element {
  const shown = useMemo(() => folded(text), [text]);
  const [open, setOpen] = useFolding(text, shown.length, keywords);
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
            calledIn(text, calls).map(({ text, call }, place) =>
              call === "nobody" ? (
                <Fragment key={place}>{marked(text, keywords)}</Fragment>
              ) : (
                <span key={place} class={call === "me" ? "mention me" : "mention"}>
                  {marked(text, keywords)}
                </span>
              ),
            )
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

interface PictureProps {
  path: string;
  open: (() => void) | undefined;
}

function IMMsgPicture({ path, open }: PictureProps): JSX.Element {
  const [broken, setBroken] = useState(false);
  // What this browser cannot show, another program may.
  if (broken) return <FileLink path={path} name={nameIn(path)} icon="file" />;
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
}

/** An emotion in a text; its shortcut where there is no such picture. */
export function Emotion({ path, shortcut }: EmotionProps): JSX.Element {
  const [broken, setBroken] = useState(false);
  if (broken) return <span class="text">{shortcut || "[Emotion]"}</span>;
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

function Voice({ path, name, keywords }: Omit<FileLinkProps, "icon">): JSX.Element {
  const [broken, setBroken] = useState(false);
  // What this browser cannot play, another program may.
  if (broken) return <FileLink path={path} name={name} icon="voice" keywords={keywords} />;
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
