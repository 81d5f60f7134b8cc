import type { ComponentProps, JSX } from "preact";
import { useEffect, useLayoutEffect, useRef, useState } from "preact/hooks";
import { keyOf, type Peer, isTribe } from "../store/peers.ts";
import { AttachmentStrip } from "./attachment_strip.tsx";
import { useStore } from "./context.ts";
import { EmotionPicker } from "./emotion_picker.tsx";
import { Icon } from "./icons.tsx";
import { MentionPicker, type PickerKeys } from "./mention_picker.tsx";

/** Where messages are written. Enter sends, Shift+Enter breaks the line. */
export function Composer({ cid }: { cid: Peer }): JSX.Element {
  const store = useStore();
  const field = useRef<HTMLTextAreaElement>(null);
  const chooser = useRef<HTMLInputElement>(null);
  const [picking, setPicking] = useState(false);
  const [calling, setCalling] = useState<{ from: number; query: string } | undefined>(undefined);
  const picker = useRef<PickerKeys>(null);
  const wantedCaret = useRef<number | undefined>(undefined);
  const draft = store.outbox.drafts.value[keyOf(cid)] ?? "";
  const notice = store.outbox.notices.value[keyOf(cid)];
  const files = store.attachments.of(cid);
  const sendable = files.some(({ state }) => state === "ready" || state === "failed");

  useEffect(() => {
    if (!store.search.cid.peek()) field.current?.focus();
  }, []);
  // Enter sends files that were just chosen or dropped.
  const newest = files.at(-1)?.id ?? 0;
  const known = useRef(newest);
  useEffect(() => {
    if (newest > known.current) field.current?.focus();
    known.current = Math.max(known.current, newest);
  }, [newest]);

  // In one step with the text, or what is typed next would land elsewhere.
  useLayoutEffect(() => {
    const caret = wantedCaret.current;
    if (caret === undefined) return;
    wantedCaret.current = undefined;
    field.current?.focus();
    field.current?.setSelectionRange(caret, caret);
  }, [draft]);

  const write = (text: string) => {
    store.outbox.setDraft(cid, text);
    if (isTribe(cid)) return;
    if (text) store.typing.typed(cid);
    else store.typing.stopped();
  };
  const submit = (event: Event) => {
    event.preventDefault();
    void store.send();
    field.current?.focus();
  };
  const onKeyDown = (event: KeyboardEvent) => {
    if (picker.current?.onKey(event)) return;
    // Enter that ends the composition of a character must not send.
    if (event.key === "Enter" && !event.shiftKey && !event.isComposing) submit(event);
  };
  const onPaste = (event: ClipboardEvent) => {
    const files = [...(event.clipboardData?.files ?? [])];
    // Office programs put a picture of the text beside the text.
    if (files.length === 0 || event.clipboardData?.getData("text/plain")) return;
    event.preventDefault();
    store.attachments.add(cid, files);
  };
  const place = (text: string, caret: number) => {
    wantedCaret.current = caret;
    write(text);
  };
  const insert = (shortcut: string) => {
    const { selectionStart, selectionEnd } = field.current!;
    setPicking(false);
    const text = draft.slice(0, selectionStart) + shortcut + draft.slice(selectionEnd);
    place(text, selectionStart + shortcut.length);
  };
  const mention = (words: string) => {
    if (!calling) return;
    const end = field.current!.selectionEnd;
    setCalling(undefined);
    place(
      draft.slice(0, calling.from) + `${words} ` + draft.slice(end),
      calling.from + words.length + 1,
    );
  };
  const closePicker = () => {
    setPicking(false);
    field.current?.focus();
  };

  return (
    <form class="composer" onSubmit={submit}>
      {notice && (
        <p class="problem" role="alert">
          {notice} Your text is kept below.
        </p>
      )}
      <AttachmentStrip cid={cid} />
      <div class="composer-line">
        <div class="composer-tools">
          <Tool icon="smile" label="Emotions" expanded={picking} run={() => setPicking(!picking)} />
          <Tool icon="clip" label="Send files" run={() => chooser.current?.click()} />
          {!isTribe(cid) && (
            <Tool
              icon="shake"
              label="Shake the window"
              off={!store.shaking.ready.value}
              run={() => void store.shaking.shake(cid)}
            />
          )}
        </div>
        <input
          ref={chooser}
          type="file"
          multiple
          hidden
          aria-label="Files to send"
          onChange={(event) => {
            store.attachments.add(cid, [...(event.currentTarget.files ?? [])]);
            event.currentTarget.value = "";
          }}
        />
        <textarea
          ref={field}
          rows={1}
          dir="auto"
          aria-label={`Message to ${store.names.of(cid)}`}
          placeholder="Write a message"
          value={draft}
          onInput={({ currentTarget: { value, selectionEnd } }) => {
            write(value);
            setCalling(isTribe(cid) ? calledFor(value.slice(0, selectionEnd)) : undefined);
          }}
          onBlur={() => setCalling(undefined)}
          onKeyDown={onKeyDown}
          onPaste={onPaste}
        />
        <button
          type="submit"
          class="icon-button primary"
          title="Send (Enter)"
          aria-label="Send"
          disabled={!draft.trim() && !sendable}
        >
          <Icon name="send" />
        </button>
      </div>
      {calling && isTribe(cid) && (
        <MentionPicker
          cid={cid}
          query={calling.query}
          keys={picker}
          choose={mention}
          close={() => setCalling(undefined)}
        />
      )}
      {picking && <EmotionPicker choose={insert} close={closePicker} />}
    </form>
  );
}

/** The mention that is being typed at the end of a text. */
function calledFor(text: string): { from: number; query: string } | undefined {
  const found = /(?:^|\s)@([^\s@]{0,40})$/.exec(text);
  return found ? { from: text.length - found[1]!.length - 1, query: found[1]! } : undefined;
}

interface ToolProps {
  icon: ComponentProps<typeof Icon>["name"];
  label: string;
  off?: boolean;
  expanded?: boolean;
  run: () => void;
}

function Tool({ icon, label, off, expanded, run }: ToolProps): JSX.Element {
  return (
    <button
      type="button"
      class="icon-button"
      title={label}
      aria-label={label}
      aria-expanded={expanded}
      disabled={off}
      onClick={run}
    >
      <Icon name={icon} />
    </button>
  );
}
