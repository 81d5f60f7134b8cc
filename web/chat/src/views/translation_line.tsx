import type { JSX } from "preact";
import { useStore } from "./context.ts";
import type { ChatMessage } from "../store/peers.ts";

/** The translation of a message under its text, or why there is none; nothing when none is wanted. */
export function TranslationLine({ message }: { message: ChatMessage }): JSX.Element | null {
  const { translations } = useStore();
  const { msgid } = message;
  const translated = translations.all.value.get(msgid);
  if (!translated) return null;
  const again = () => void translations.translate(message);
  const turnOn = async () => {
    await translations.setEnabled(true);
    again();
  };
  return (
    <div class="translation" role="status">
      {translated.state === "loading" && (
        <>
          <span class="spinner" aria-hidden="true" /> Translating…
        </>
      )}
      {translated.state === "done" && (
        <span class="text" dir="auto">
          {translated.text}
        </span>
      )}
      {translated.state === "off" && (
        <span class="soft">
          Translation is off.{" "}
          <button type="button" class="link-button" onClick={() => void turnOn()}>
            Turn it on
          </button>
        </span>
      )}
      {translated.state === "failed" && (
        <span class="soft">
          Not translated: {translated.problem}.{" "}
          <button type="button" class="link-button" onClick={again}>
            Try again
          </button>
        </span>
      )}
      <button type="button" class="link-button hide" onClick={() => translations.hide(msgid)}>
        Hide
      </button>
    </div>
  );
}
