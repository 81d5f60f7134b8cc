import type { UserId } from "@imsdkbridge/client";
import type { JSX } from "preact";
import { useEffect, useRef } from "preact/hooks";
import { keyOf } from "../store/users.ts";
import { useStore } from "./context.ts";
import { Icon } from "./icons.tsx";

/** Where messages are written. Enter sends, Shift+Enter breaks the line. */
export function Composer({ cid }: { cid: UserId }): JSX.Element {
  const store = useStore();
  const field = useRef<HTMLTextAreaElement>(null);
  const draft = store.outbox.drafts.value[keyOf(cid)] ?? "";
  const notice = store.outbox.notices.value[keyOf(cid)];

  useEffect(() => field.current?.focus(), []);

  const submit = (event: Event) => {
    event.preventDefault();
    void store.send();
    field.current?.focus();
  };
  const onKeyDown = (event: KeyboardEvent) => {
    // Enter that ends the composition of a character must not send.
    if (event.key === "Enter" && !event.shiftKey && !event.isComposing) submit(event);
  };

  return (
    <form class="composer" onSubmit={submit}>
      {notice && (
        <p class="problem" role="alert">
          {notice} Your text is kept below.
        </p>
      )}
      <textarea
        ref={field}
        rows={1}
        dir="auto"
        aria-label={`Message to ${cid.nick}`}
        placeholder="Write a message"
        value={draft}
        onInput={(event) => store.outbox.setDraft(cid, event.currentTarget.value)}
        onKeyDown={onKeyDown}
      />
      <button
        type="submit"
        class="icon-button primary"
        title="Send (Enter)"
        aria-label="Send"
        disabled={!draft.trim()}
      >
        <Icon name="send" />
      </button>
    </form>
  );
}
