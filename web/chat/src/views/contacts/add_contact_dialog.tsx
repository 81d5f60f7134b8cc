import type { IMContact } from "@imsdkbridge/client";
import type { JSX } from "preact";
import { useEffect, useState } from "preact/hooks";
import { noGroup } from "../../store/contacts/contact_list.ts";
import { keyOf, samePeer } from "../../store/peers.ts";
import { contactName } from "../../text/contacts.ts";
import { textOf } from "../../text/reasons.ts";
import { Avatar } from "../avatar.tsx";
import { useStore } from "../context.ts";
import { Dialog } from "../dialog.tsx";
import { Actions } from "../dialog_actions.tsx";
import { GroupSelect } from "./group_select.tsx";

const typingPause = 200;

/** Looks for people and asks one of them. */
export function AddContactDialog({ close }: { close: () => void }): JSX.Element {
  const { contacts, session } = useStore();
  const [query, setQuery] = useState("");
  const [found, setFound] = useState<readonly IMContact[] | undefined>();
  const [chosen, setChosen] = useState<IMContact | undefined>();
  const [groupid, setGroupid] = useState(noGroup);
  const [words, setWords] = useState("");
  const [busy, setBusy] = useState(false);
  const [problem, setProblem] = useState("");
  const key = query.trim();

  useEffect(() => {
    setFound(undefined);
    setProblem("");
    if (!key) return;
    let current = true;
    const timer = setTimeout(() => {
      void contacts.search(key).then(
        (all) => current && setFound(all.filter((user) => !samePeer(user, session.me.value))),
        (error: unknown) => current && setProblem(textOf(error)),
      );
    }, typingPause);
    return () => {
      current = false;
      clearTimeout(timer);
    };
  }, [key]);

  const ask = async (event: Event) => {
    event.preventDefault();
    if (!chosen) return;
    setBusy(true);
    const { appkey, nick } = chosen;
    const refusal = await contacts.ask({ appkey, nick }, groupid, words.trim());
    setBusy(false);
    setProblem(refusal);
    if (!refusal) close();
  };
  return (
    <Dialog title="Add a contact" close={close}>
      <form class="dialog-form" onSubmit={(event) => void ask(event)}>
        <input
          class="field"
          aria-label="Find somebody by name"
          placeholder="Find somebody by name"
          autoCapitalize="none"
          spellcheck={false}
          autofocus
          value={query}
          onInput={(event) => {
            setQuery(event.currentTarget.value);
            setChosen(undefined);
          }}
        />
        <ul class="people-list" aria-label="Found">
          {(found ?? []).map((user) => (
            <li key={keyOf(user)}>
              <label class="person">
                <input
                  type="radio"
                  name="found"
                  checked={chosen === user}
                  disabled={contacts.list.has(user)}
                  onChange={() => setChosen(user)}
                />
                <Avatar nick={contactName(user)} />
                <span dir="auto">{contactName(user)}</span>
                {contactName(user) !== user.nick && <span class="soft">{user.nick}</span>}
                {contacts.list.has(user) && <span class="tag">A contact already</span>}
              </label>
            </li>
          ))}
        </ul>
        {found?.length === 0 && <p class="soft">Nobody of that name.</p>}
        {chosen && (
          <>
            <GroupSelect groupid={groupid} setGroupid={setGroupid} />
            <input
              class="field"
              aria-label="Words for them"
              placeholder="Words for them"
              maxLength={512}
              dir="auto"
              value={words}
              onInput={(event) => setWords(event.currentTarget.value)}
            />
          </>
        )}
        <p class="problem" role="alert">
          {problem && `That could not be done: ${problem}.`}
        </p>
        <Actions close={close} label="Ask" off={!chosen || busy} />
      </form>
    </Dialog>
  );
}
