import type { JSX } from "preact";
import { useState } from "preact/hooks";
import { samePeer, type Peer, type ChatMessage, isTribe } from "../store/peers.ts";
import { lineOf } from "../text/line.ts";
import { ContactDialogs } from "./contacts/contact_dialogs.tsx";
import { useStore } from "./context.ts";
import { Dialog } from "./dialog.tsx";
import { Actions } from "./dialog_actions.tsx";
import { LineText } from "./line_text.tsx";
import { PeoplePicker } from "./people_picker.tsx";
import { SearchDialog } from "./search_dialog.tsx";
import { SettingsDialog } from "./settings_dialog.tsx";
import { TribeDialogs } from "./tribes/tribe_dialogs.tsx";

/** The dialog that is in front of the page, if there is one. */
export function Dialogs(): JSX.Element | null {
  const store = useStore();
  const dialog = store.dialog.value;
  const close = () => void (store.dialog.value = undefined);
  if (!dialog) return null;
  switch (dialog.kind) {
    case "forward":
      return <ForwardDialog messages={dialog.messages} close={close} />;
    case "broadcast":
      return <BroadcastDialog close={close} />;
    case "delete":
      return <DeleteDialog {...dialog} close={close} />;
    case "settings":
      return <SettingsDialog close={close} />;
    case "search":
      return <SearchDialog close={close} />;
    case "contact-add":
    case "contact-requests":
    case "contact-move":
    case "contact-remove":
    case "contact-block":
      return <ContactDialogs dialog={dialog} close={close} />;
    default:
      return <TribeDialogs dialog={dialog} close={close} />;
  }
}

interface ForwardProps {
  messages: readonly ChatMessage[];
  close: () => void;
}

function ForwardDialog({ messages, close }: ForwardProps): JSX.Element {
  const store = useStore();
  const [people, setPeople] = useState<readonly Peer[]>([]);
  const [busy, setBusy] = useState(false);
  const [problem, setProblem] = useState("");
  const first = messages[0];
  const quote =
    first &&
    lineOf(first, samePeer(first.fromid, store.session.me.value), store.names.ofSender(first));
  const forward = async (event: Event) => {
    event.preventDefault();
    setBusy(true);
    const refusal = await store.deliveries.forward(messages, people);
    setBusy(false);
    setProblem(refusal);
    if (refusal) return;
    store.selection.end();
    close();
  };
  return (
    <Dialog title="Forward to" close={close}>
      <form class="dialog-form" onSubmit={(event) => void forward(event)}>
        <p class="dialog-quote" dir="auto">
          {messages.length > 1 ? `${messages.length} messages` : quote && <LineText line={quote} />}
        </p>
        <PeoplePicker people={people} setPeople={setPeople} />
        <Refusal reason={problem} />
        <Actions close={close} label={sendLabel("Forward", people)} off={!people.length || busy} />
      </form>
    </Dialog>
  );
}

function BroadcastDialog({ close }: { close: () => void }): JSX.Element {
  const store = useStore();
  const [people, setPeople] = useState<readonly Peer[]>([]);
  const [text, setText] = useState("");
  const [busy, setBusy] = useState(false);
  const [problem, setProblem] = useState("");
  const send = async (event: Event) => {
    event.preventDefault();
    setBusy(true);
    const refusal = await store.deliveries.broadcast(text, people);
    setBusy(false);
    setProblem(refusal);
    if (!refusal) close();
  };
  return (
    <Dialog title="Write to several people" close={close}>
      <form class="dialog-form" onSubmit={(event) => void send(event)}>
        <p class="soft">Each of them gets the text in a conversation of their own.</p>
        <PeoplePicker people={people} setPeople={setPeople} />
        <textarea
          rows={3}
          dir="auto"
          aria-label="Text to everybody chosen"
          placeholder="Write a message"
          value={text}
          onInput={(event) => setText(event.currentTarget.value)}
        />
        <Refusal reason={problem} />
        <Actions
          close={close}
          label={sendLabel("Send", people)}
          off={!people.length || !text.trim() || busy}
        />
      </form>
    </Dialog>
  );
}

interface DeleteProps {
  cid: Peer;
  msgids: readonly string[] | "all";
  close: () => void;
}

function DeleteDialog({ cid, msgids, close }: DeleteProps): JSX.Element {
  const store = useStore();
  const [busy, setBusy] = useState(false);
  const all = msgids === "all";
  const what = all
    ? `The whole conversation with ${store.names.of(cid)}`
    : msgids.length === 1
      ? "This message"
      : `${msgids.length} messages`;
  const remove = async (event: Event) => {
    event.preventDefault();
    setBusy(true);
    const done = await store.actions.remove(cid, msgids);
    setBusy(false);
    if (!done) return;
    store.selection.end();
    if (all) store.closeConversation();
    close();
  };
  return (
    <Dialog title={all ? "Delete the conversation?" : "Delete?"} close={close}>
      <form class="dialog-form" onSubmit={(event) => void remove(event)}>
        <p>
          {what} will be gone from this device for good.{" "}
          {isTribe(cid)
            ? "The others keep their own copies."
            : "The other side keeps its own copy."}
        </p>
        <Actions close={close} label="Delete" off={busy} danger />
      </form>
    </Dialog>
  );
}

/** Why nobody got anything; what became of single receivers a toast tells. */
function Refusal({ reason }: { reason: string }): JSX.Element {
  return (
    <p class="problem" role="alert">
      {reason && `Nobody got it: ${reason}.`}
    </p>
  );
}

function sendLabel(verb: string, people: readonly Peer[]): string {
  return people.length > 1 ? `${verb} to ${people.length}` : verb;
}
