import { IMTribeType, type IMTribeMember, type IMUserID } from "@imsdkbridge/client";
import type { JSX } from "preact";
import { useState } from "preact/hooks";
import type { TribeDialog } from "../../store/tribes/dialogs.ts";
import type { OpenTribe } from "../../store/tribes/open_tribe.ts";
import { isTribe, samePeer, type Peer } from "../../store/peers.ts";
import { nameOf } from "../../text/tribes.ts";
import { useStore } from "../context.ts";
import { Dialog } from "../dialog.tsx";
import { Actions } from "../dialog_actions.tsx";
import { PeoplePicker } from "../people_picker.tsx";
import { JoinDialog } from "./join_dialog.tsx";
import { RequestsDialog } from "./requests_dialog.tsx";

/** The dialog about tribes that is in front of the page. */
export function TribeDialogs(props: { dialog: TribeDialog; close: () => void }): JSX.Element {
  const { dialog, close } = props;
  switch (dialog.kind) {
    case "tribe-create":
      return <CreateDialog close={close} />;
    case "tribe-join":
      return <JoinDialog close={close} />;
    case "tribe-requests":
      return <RequestsDialog close={close} />;
    case "tribe-invite":
      return <InviteDialog tribe={dialog.tribe} close={close} />;
    case "tribe-rename-member":
      return <RenameDialog {...dialog} close={close} />;
    case "tribe-confirm":
      return <ConfirmDialog {...dialog} close={close} />;
  }
}

function CreateDialog({ close }: { close: () => void }): JSX.Element {
  const { tribes } = useStore();
  const [name, setName] = useState("");
  const [type, setType] = useState<IMTribeType>(IMTribeType.kNormalTribe);
  const [password, setPassword] = useState("");
  const [members, setMembers] = useState<readonly Peer[]>([]);
  const [busy, setBusy] = useState(false);
  const [problem, setProblem] = useState("");
  const multi = type === IMTribeType.kMultiChat;
  const create = async (event: Event) => {
    event.preventDefault();
    setBusy(true);
    const own = {
      name: name.trim(),
      type,
      members: members.filter(isUser),
      password: multi ? "" : password,
    };
    const refusal = await tribes.create(own);
    setBusy(false);
    setProblem(refusal);
    if (!refusal) close();
  };
  const kind = (value: IMTribeType, label: string) => (
    <button
      type="button"
      class="chip small"
      aria-pressed={type === value}
      onClick={() => setType(value)}
    >
      {label}
    </button>
  );
  return (
    <Dialog title="New tribe" close={close}>
      <form class="dialog-form" onSubmit={(event) => void create(event)}>
        <div class="narrowing" role="group" aria-label="What kind">
          {kind(IMTribeType.kNormalTribe, "Tribe")}
          {kind(IMTribeType.kMultiChat, "Multi-chat")}
        </div>
        <p class="soft">
          {multi
            ? "Made ad hoc: every member may rename it and bring others in."
            : "You own it, and settle who may join. Others look for it by its number."}
        </p>
        <input
          class="field"
          aria-label="Name of the tribe"
          placeholder="Name"
          dir="auto"
          maxLength={128}
          autofocus
          value={name}
          onInput={(event) => setName(event.currentTarget.value)}
        />
        {!multi && (
          <input
            class="field"
            type="password"
            aria-label="Password to join by"
            placeholder="Password to join by (none: everybody may)"
            autocomplete="off"
            maxLength={64}
            value={password}
            onInput={(event) => setPassword(event.currentTarget.value)}
          />
        )}
        <PeoplePicker people={members} setPeople={setMembers} focus={false} usersOnly />
        <p class="problem" role="alert">
          {problem && `It was not made: ${problem}.`}
        </p>
        <Actions close={close} label="Make it" off={!name.trim() || busy} />
      </form>
    </Dialog>
  );
}

interface OfTribe {
  tribe: OpenTribe;
  close: () => void;
}

/** Runs what a form is for, and closes it once that is done; the tribe says why not. */
function useDoing({ tribe, close }: OfTribe, run: () => Promise<boolean>) {
  return async (event: Event) => {
    event.preventDefault();
    if (await run()) close();
    else tribe.problem.value ||= "it did not work";
  };
}

function Problem({ tribe }: { tribe: OpenTribe }): JSX.Element {
  return (
    <p class="problem" role="alert">
      {tribe.problem.value && `That was not done: ${tribe.problem.value}.`}
    </p>
  );
}

function InviteDialog({ tribe, close }: OfTribe): JSX.Element {
  const [people, setPeople] = useState<readonly Peer[]>([]);
  const [words, setWords] = useState("");
  const invite = useDoing({ tribe, close }, () => tribe.invite(people.filter(isUser), words));
  return (
    <Dialog title="Invite people" close={close}>
      <form class="dialog-form" onSubmit={(event) => void invite(event)}>
        <p class="soft">
          {tribe.isMultiChat
            ? "They are members at once."
            : "They are asked, and become members when they accept."}
        </p>
        <PeoplePicker people={people} setPeople={setPeople} usersOnly />
        {!tribe.isMultiChat && (
          <input
            class="field"
            aria-label="Words for them"
            placeholder="Words for them"
            dir="auto"
            maxLength={512}
            value={words}
            onInput={(event) => setWords(event.currentTarget.value)}
          />
        )}
        <Problem tribe={tribe} />
        <Actions close={close} label="Invite" off={!people.length || tribe.busy.value} />
      </form>
    </Dialog>
  );
}

function RenameDialog({ tribe, member, close }: OfTribe & { member: IMTribeMember }): JSX.Element {
  const own = samePeer(member, tribe.me);
  const before = own ? tribe.settings.facts.value.nickname : "";
  const [name, setName] = useState(
    before || (member.display === member.nick ? "" : nameOf(member)),
  );
  const rename = useDoing({ tribe, close }, () =>
    own ? tribe.setText("nickname", name.trim()) : tribe.rename(member, name.trim()),
  );
  return (
    <Dialog title={own ? "What you are called here" : `Name of ${member.nick} here`} close={close}>
      <form class="dialog-form" onSubmit={(event) => void rename(event)}>
        <input
          class="field"
          aria-label="Name in this tribe"
          placeholder={`None: shown as ${member.nick}`}
          dir="auto"
          maxLength={64}
          autofocus
          value={name}
          onInput={(event) => setName(event.currentTarget.value)}
        />
        <Problem tribe={tribe} />
        <Actions close={close} label="Save" off={tribe.busy.value} />
      </form>
    </Dialog>
  );
}

type Confirm = Extract<TribeDialog, { kind: "tribe-confirm" }>;

function ConfirmDialog({ tribe, title, text, label, run, close }: Confirm & OfTribe): JSX.Element {
  const confirm = useDoing({ tribe, close }, run);
  return (
    <Dialog title={title} close={close}>
      <form class="dialog-form" onSubmit={(event) => void confirm(event)}>
        <p>{text}</p>
        <Problem tribe={tribe} />
        <Actions close={close} label={label} off={tribe.busy.value} danger />
      </form>
    </Dialog>
  );
}

function isUser(peer: Peer): peer is IMUserID {
  return !isTribe(peer);
}
