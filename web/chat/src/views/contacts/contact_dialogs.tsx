import type { IMListedContact } from "@imsdkbridge/client";
import type { JSX } from "preact";
import { useState } from "preact/hooks";
import type { ContactDialog } from "../../store/contacts/dialogs.ts";
import { contactName } from "../../text/contacts.ts";
import { useStore } from "../context.ts";
import { Dialog } from "../dialog.tsx";
import { Actions } from "../dialog_actions.tsx";
import { AddContactDialog } from "./add_contact_dialog.tsx";
import { ContactRequestsDialog } from "./contact_requests_dialog.tsx";
import { GroupSelect } from "./group_select.tsx";

/** The dialog about contacts that is in front of the page. */
export function ContactDialogs(props: { dialog: ContactDialog; close: () => void }): JSX.Element {
  const { dialog, close } = props;
  switch (dialog.kind) {
    case "contact-add":
      return <AddContactDialog close={close} />;
    case "contact-requests":
      return <ContactRequestsDialog close={close} />;
    case "contact-move":
      return <MoveDialog listed={dialog.listed} close={close} />;
    case "contact-remove":
      return <RemoveDialog listed={dialog.listed} block={false} close={close} />;
    case "contact-block":
      return <RemoveDialog listed={dialog.listed} block close={close} />;
  }
}

interface OneContact {
  listed: IMListedContact;
  close: () => void;
}

function MoveDialog({ listed, close }: OneContact): JSX.Element {
  const { contacts } = useStore();
  const [groupid, setGroupid] = useState(listed.groupid);
  const [name, setName] = useState("");
  const [busy, setBusy] = useState(false);
  const { appkey, nick } = listed.userid;
  const fresh = name.trim();
  const move = async (event: Event) => {
    event.preventDefault();
    setBusy(true);
    const user = { appkey, nick };
    const done = fresh ? contacts.moveToNew(user, fresh) : contacts.move(user, groupid);
    const moved = await done;
    setBusy(false);
    if (moved) close();
  };
  return (
    <Dialog title={`Move ${contactName(listed.userid)}`} close={close}>
      <form class="dialog-form" onSubmit={(event) => void move(event)}>
        <GroupSelect groupid={groupid} setGroupid={setGroupid} disabled={fresh !== ""} />
        <input
          class="field"
          aria-label="Or a new group"
          placeholder="Or a new group"
          maxLength={64}
          dir="auto"
          value={name}
          onInput={(event) => setName(event.currentTarget.value)}
        />
        <Actions close={close} label="Move" off={busy} />
      </form>
    </Dialog>
  );
}

function RemoveDialog({ listed, block, close }: OneContact & { block: boolean }): JSX.Element {
  const { contacts } = useStore();
  const [busy, setBusy] = useState(false);
  const { appkey, nick } = listed.userid;
  const name = contactName(listed.userid);
  const remove = async (event: Event) => {
    event.preventDefault();
    setBusy(true);
    const user = { appkey, nick };
    const done = await (block ? contacts.block(user) : contacts.remove(user));
    setBusy(false);
    if (done) close();
  };
  return (
    <Dialog title={block ? `Remove and block ${name}?` : `Remove ${name}?`} close={close}>
      <form class="dialog-form" onSubmit={(event) => void remove(event)}>
        <p>
          {block
            ? "Nothing they write or ask comes through any more, and they do not see you come."
            : "You stay in their list until they remove you there."}
        </p>
        <Actions close={close} label={block ? "Remove and block" : "Remove"} off={busy} danger />
      </form>
    </Dialog>
  );
}
