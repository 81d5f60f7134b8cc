import type { JSX } from "preact";
import { useEffect, useState } from "preact/hooks";
import { isPicture, type Attachment } from "../store/attachments.ts";
import { keyOf, type Peer } from "../store/peers.ts";
import { sizeText } from "../text/fold.ts";
import { useStore } from "./context.ts";
import { Icon } from "./icons.tsx";

/** The files that are to be sent, or on their way, above the field to write in. */
export function AttachmentStrip({ cid }: { cid: Peer }): JSX.Element | null {
  const { attachments } = useStore();
  const refusals = attachments.refusals.value.get(keyOf(cid)) ?? [];
  const all = attachments.of(cid);
  if (all.length === 0 && refusals.length === 0) return null;
  return (
    <div class="attachments">
      {refusals.map((refusal) => (
        <p key={refusal} class="problem" role="alert">
          {refusal}
          <button
            type="button"
            class="link-button"
            onClick={() => attachments.forgetRefusal(cid, refusal)}
          >
            Dismiss
          </button>
        </p>
      ))}
      {all.length > 0 && (
        <ul class="attachment-list" aria-label="Files to send">
          {all.map((attachment) => (
            <Item key={attachment.id} attachment={attachment} />
          ))}
        </ul>
      )}
    </div>
  );
}

function Item({ attachment }: { attachment: Attachment<File> }): JSX.Element {
  const { attachments } = useStore();
  const { id, file, state, progress, problem } = attachment;
  const underWay = state === "reading" || state === "sending";
  // All is handed over and the host works on it: how far it is nobody knows.
  const measured = progress > 0 && progress < 1;
  return (
    <li class={`attachment ${state}`}>
      {isPicture(attachment) ? <Thumbnail file={file} /> : <Icon name="file" />}
      <span class="attachment-lines">
        <span class="attachment-name" title={file.name}>
          {file.name}
        </span>
        <span class="soft">{words()}</span>
        {underWay && (
          <progress
            aria-label={`${file.name}, ${state}`}
            max={1}
            value={measured ? progress : undefined}
          />
        )}
      </span>
      {state !== "sending" && (
        <button
          type="button"
          class="icon-button"
          title={`Remove ${file.name}`}
          aria-label={`Remove ${file.name}`}
          onClick={() => attachments.remove(id)}
        >
          <Icon name="close" />
        </button>
      )}
    </li>
  );

  function words(): string {
    switch (state) {
      case "ready":
        return sizeText(file.size);
      case "reading":
        return progress > 0 ? `Reading… ${Math.round(progress * 100)} %` : "Waiting…";
      case "sending":
        return measured ? `Sending… ${Math.round(progress * 100)} %` : "Sending…";
      case "failed":
        return `Not sent: ${problem}. Send again, or remove it.`;
    }
  }
}

function Thumbnail({ file }: { file: File }): JSX.Element {
  const [url, setUrl] = useState("");
  useEffect(() => {
    const made = URL.createObjectURL(file);
    setUrl(made);
    return () => URL.revokeObjectURL(made);
  }, [file]);
  return <img class="thumbnail" src={url || undefined} alt={`Preview of ${file.name}`} />;
}
