import { MessageStatus, type Message } from "@imsdkbridge/client";
import type { JSX } from "preact";
import type { Outgoing } from "../store/outbox.ts";
import { sameUser } from "../store/users.ts";
import { timeOf } from "../text/rows.ts";
import { clockTime, fullTime } from "../text/time.ts";
import { Body } from "./body.tsx";
import { useStore } from "./context.ts";
import { Icon } from "./icons.tsx";

interface MessageBubbleProps {
  message: Message;
  /** Whether it begins and ends a group of one sender's messages. */
  first: boolean;
  last: boolean;
}

/** One message with its time and, for an own one, what became of it. */
export function MessageBubble({ message, first, last }: MessageBubbleProps): JSX.Element {
  const mine = sameUser(message.fromid, useStore().session.me.value);
  const failed = message.msgstatus === MessageStatus.failed;
  const classes = ["message", mine ? "mine" : "theirs", first && "first", last && "last"];
  return (
    <article
      class={classes.filter(Boolean).join(" ")}
      data-msgid={message.msgid}
      aria-label={`${mine ? "You" : message.fromid.nick}, ${clockTime(timeOf(message))}`}
    >
      <div class="bubble">
        <Body message={message} />
        <span class="stamp">
          <time title={fullTime(timeOf(message))}>{clockTime(timeOf(message))}</time>
          {mine && <SendState status={message.msgstatus} />}
        </span>
      </div>
      {mine && failed && <Failure message={message} />}
    </article>
  );
}

function SendState({ status }: { status: number }): JSX.Element {
  const states = {
    [MessageStatus.sending]: ["clock", "Sending"],
    [MessageStatus.failed]: ["warning", "Not sent"],
  } as const;
  const [icon, words] = states[status as keyof typeof states] ?? ["check", "Sent"];
  return (
    <span class="send-state" role="img" aria-label={words} title={words}>
      <Icon name={icon} />
    </span>
  );
}

function Failure({ message }: { message: Message }): JSX.Element {
  const store = useStore();
  const reason = store.threads.failures.value.get(message.msgid);
  return (
    <p class="failure">
      <span>{reason ? `Not sent: ${reason}` : "Not sent"}</span>
      <button type="button" class="link-button" onClick={() => void store.resend(message)}>
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
        <Body message={{ msgtype: 0, msgbody: entry.text }} />
        <span class="stamp">
          <SendState status={MessageStatus.sending} />
        </span>
      </div>
    </article>
  );
}
