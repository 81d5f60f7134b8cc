import { MessageType, type Message } from "@imsdkbridge/client";
import type { JSX } from "preact";
import { useMemo, useState } from "preact/hooks";
import { fileUrl } from "../files.ts";
import { bodyParts, type BodyPart } from "../text/body.ts";
import { folded, sizeOf } from "../text/fold.ts";
import { Icon } from "./icons.tsx";

type BodyProps = { message: Pick<Message, "msgtype" | "msgbody"> };

/** What a message says. Text is only ever shown as text. */
export function Body({ message: { msgtype, msgbody } }: BodyProps): JSX.Element {
  const parts = useMemo(() => bodyParts({ msgtype, msgbody }), [msgtype, msgbody]);
  return (
    <div class="body" dir="auto">
      {parts.map((part, index) => (
        <Part key={index} part={part} voice={msgtype === MessageType.audio} />
      ))}
    </div>
  );
}

function Part({ part, voice }: { part: BodyPart; voice: boolean }): JSX.Element {
  switch (part.kind) {
    case "text":
      return <Text text={part.text} />;
    case "picture":
      return <Image path={part.path} words="Picture" source={part.source} />;
    case "emotion":
      return <Image path={part.path} words={part.shortcut} source={part.source} small />;
    case "file":
      return (
        <a class="file" href={fileUrl(part.path)} target="_blank" rel="noreferrer">
          <Icon name={voice ? "voice" : "file"} />
          <span>{voice ? "Voice message" : part.name}</span>
        </a>
      );
  }
}

function Text({ text }: { text: string }): JSX.Element {
  const [open, setOpen] = useState(false);
  const shown = useMemo(() => folded(text), [text]);
  if (shown.length === text.length) return <span class="text">{text}</span>;
  return (
    <>
      <span class="text">{open ? text : `${shown}…`}</span>
      <button type="button" class="link-button fold" onClick={() => setOpen(!open)}>
        {open ? "Show less" : `Show all (${sizeOf(text)})`}
      </button>
    </>
  );
}

interface ImageProps {
  path: string;
  words: string;
  /** The token as it was written, for when there is no such picture. */
  source: string;
  small?: boolean;
}

function Image({ path, words, source, small }: ImageProps): JSX.Element {
  const [broken, setBroken] = useState(false);
  if (broken) return <span class="text">{words ? `[${words}]` : source}</span>;
  return (
    <img
      class={small ? "emotion" : "picture"}
      src={fileUrl(path)}
      alt={words || "Emotion"}
      onError={() => setBroken(true)}
    />
  );
}
