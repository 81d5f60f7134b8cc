import type { IMAtReaders, IMUserID } from "@imsdkbridge/client";
import type { JSX } from "preact";
import { useEffect, useState } from "preact/hooks";
import { isOwnMention } from "../store/mentions.ts";
import { isTribe, keyOf, type ChatMessage, type Peer } from "../store/peers.ts";
import { textOf } from "../text/reasons.ts";
import { Avatar } from "./avatar.tsx";
import { useStore } from "./context.ts";
import { Dialog } from "./dialog.tsx";
import { Notice } from "./notice.tsx";

/** Below an own message that mentions: how many of those meant have read it; leads to who. */
export function ReadBy({ message }: { message: ChatMessage }): JSX.Element | null {
  const { mentions } = useStore();
  const [open, setOpen] = useState(false);
  const count = mentions.counts.value.get(message.msgid);
  if (!isOwnMention(message) || !isTribe(message.cid) || !count) return null;
  const { readedcount, unreadcount } = count;
  return (
    <>
      <button type="button" class="link-button read-by" onClick={() => setOpen(true)}>
        {`Read by ${readedcount} of ${readedcount + unreadcount}`}
      </button>
      {open && (
        <ReadersDialog
          cid={message.cid}
          tribeid={message.cid.tribeid}
          msgid={message.msgid}
          version={readedcount}
          close={() => setOpen(false)}
        />
      )}
    </>
  );
}

interface ReadersDialogProps {
  cid: Peer;
  tribeid: string;
  msgid: string;
  /** Changes when somebody else has read it. */
  version: number;
  close: () => void;
}

function ReadersDialog({ cid, tribeid, msgid, version, close }: ReadersDialogProps): JSX.Element {
  const { mentions } = useStore();
  const [readers, setReaders] = useState<IMAtReaders | undefined>(undefined);
  const [problem, setProblem] = useState("");
  useEffect(() => {
    mentions
      .readers(tribeid, msgid)
      .then(setReaders, (error: unknown) => setProblem(textOf(error)));
  }, [msgid, version]);
  return (
    <Dialog title="Who has read it" close={close}>
      {readers ? (
        <>
          <People title="Has read it" cid={cid} users={readers.readedusers} />
          <People title="Has not read it" cid={cid} users={readers.unreadusers} />
        </>
      ) : problem ? (
        <Notice icon="warning" title="That is not known" text={problem} />
      ) : (
        <Notice spinner title="Loading…" />
      )}
    </Dialog>
  );
}

function People(props: { title: string; cid: Peer; users: readonly IMUserID[] }): JSX.Element {
  const { title, cid, users } = props;
  const { names } = useStore();
  return (
    <section class="readers" aria-label={title}>
      <h3 class="soft">{`${title} (${users.length})`}</h3>
      <ul class="people-list">
        {users.map((fromid) => (
          <li key={keyOf(fromid)} class="person">
            <Avatar nick={names.ofSender({ cid, fromid })} />
            {names.ofSender({ cid, fromid })}
          </li>
        ))}
      </ul>
    </section>
  );
}
