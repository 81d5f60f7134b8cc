import { IMMsgStatus } from "@imsdkbridge/client";
import type { JSX } from "preact";
import type { Outgoing } from "../store/outbox.ts";
import { timeOf } from "../text/rows.ts";
import { clockTime, fullTime } from "../text/time.ts";
import { Body } from "./body.tsx";
import { useStore } from "./context.ts";
import { Icon } from "./icons.tsx";
import { openPicture } from "./picture_link.ts";
import { ReadBy } from "./read_by.tsx";
import { TranslationLine } from "./translation_line.tsx";
import type { ChatMessage } from "../store/peers.ts";

interface MessageBubbleProps {
  message: ChatMessage;
  mine: boolean;
  openMenu: (x: number, y: number) => void;
}

/** One message with its time and, for an own one, what became of it. */
export function MessageBubble({ message, mine, openMenu }: MessageBubbleProps): JSX.Element {
  const store = useStore();
  const failed = message.msgstatus === IMMsgStatus.kMsgFailed;
  const keywords = useKeywords(message);
  const more = (event: MouseEvent) => {
    const { left, bottom } = (event.currentTarget as Element).getBoundingClientRect();
    openMenu(left, bottom + 4);
  };
  return (
    <>
      <div class="bubble-line">
        <div class="bubble">
          <Body
            message={message}
            keywords={keywords}
            calls={store.names.callsIn(message, store.session.me.value)}
            openPicture={(path, index) => openPicture(store, message, path, index)}
          />
          <TranslationLine message={message} />
          <span class="stamp">
            {message.extinfo.autochatmsg === 1 && <span class="tag">Automatic reply</span>}
            <time title={fullTime(timeOf(message))}>{clockTime(timeOf(message))}</time>
            {mine && <SendState status={message.msgstatus} read={message.readflag === 1} />}
          </span>
        </div>
        <button
          type="button"
          class="icon-button more"
          title="More"
          aria-label="More"
          aria-haspopup="menu"
          tabIndex={-1}
          onClick={more}
        >
          <Icon name="more" />
        </button>
      </div>
      {mine && <ReadBy message={message} />}
      {mine && failed && <Failure message={message} />}
    </>
  );
}

/** The words to mark: those of the search, or of the one that led to this message. */
function useKeywords({ msgid }: ChatMessage): readonly string[] {
  const { search: finder, target } = useStore();
  if (finder.cid.value) return finder.search.keywords;
  return target.value?.msgid === msgid ? target.value.keywords : [];
}

function SendState({ status, read }: { status: number; read: boolean }): JSX.Element {
  const [icon, words] = stateOf(status, read);
  return (
    <span
      class={words === "Read" ? "send-state read" : "send-state"}
      role="img"
      aria-label={words}
      title={words}
    >
      <Icon name={icon} />
    </span>
  );
}

function stateOf(status: number, read: boolean) {
  if (status === IMMsgStatus.kMsgSending) return ["clock", "Sending"] as const;
  if (status === IMMsgStatus.kMsgFailed) return ["warning", "Not sent"] as const;
  return read ? (["checks", "Read"] as const) : (["check", "Sent"] as const);
}

function Failure({ message }: { message: ChatMessage }): JSX.Element {
  const store = useStore();
  const reason = store.threads.failures.value.get(message.msgid);
  return (
    <p class="failure">
      <span>{reason ? `Not sent: ${reason}` : "Not sent"}</span>
      <button type="button" class="link-button" onClick={() => void store.actions.resend(message)}>
        <Icon name="retry" /> Retry
      </button>
    </p>
  );
}

/** A text whose message is not stored yet. */
export function OutgoingBubble({ entry }: { entry: Outgoing }): JSX.Element {
  return (
    <article class="message mine first last outgoing" aria-label="You, sending">
      <div class="bubble">
        <Body message={{ msgtype: 0, msgbody: entry.body ?? entry.text }} />
        <span class="stamp">
          <SendState status={IMMsgStatus.kMsgSending} read={false} />
        </span>
      </div>
    </article>
  );
}
