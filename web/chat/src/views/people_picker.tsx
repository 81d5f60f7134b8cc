import type { JSX } from "preact";
import { useState } from "preact/hooks";
import { keyOf, type Peer, isTribe } from "../store/peers.ts";
import { appkey } from "../store/users.ts";
import { Avatar } from "./avatar.tsx";
import { useStore } from "./context.ts";

interface PeoplePickerProps {
  people: readonly Peer[];
  setPeople: (people: readonly Peer[]) => void;
  /** Whether what is typed first goes here. */
  focus?: boolean;
  /** Whether tribes cannot be chosen. */
  usersOnly?: boolean;
}

/** Chooses several people: from the conversations, or by a name that is typed in full. */
export function PeoplePicker(props: PeoplePickerProps): JSX.Element {
  const { people, setPeople, focus = true, usersOnly = false } = props;
  const store = useStore();
  const [query, setQuery] = useState("");
  const name = query.trim();
  const nameOf = (cid: Peer) => store.names.of(cid);
  const known = store.conversations.sorted.value
    .map(({ cid }) => cid)
    .filter((cid) => !store.faces.isVirtual(cid) && !store.names.whyBarred(cid))
    .filter((cid) => !usersOnly || !isTribe(cid));
  const strangers = people.filter((cid) => !known.some((other) => keyOf(other) === keyOf(cid)));
  const all = [...strangers, ...known];
  const fitting = all.filter((cid) => nameOf(cid).toLowerCase().includes(name.toLowerCase()));
  const fresh =
    name && !all.some((cid) => nameOf(cid) === name) ? { appkey, nick: name } : undefined;
  const chosen = new Set(people.map(keyOf));
  const toggle = (cid: Peer) => {
    const rest = people.filter((other) => keyOf(other) !== keyOf(cid));
    setPeople(rest.length < people.length ? rest : [...people, cid]);
  };
  return (
    <div class="people">
      <input
        class="field"
        aria-label="Find or name somebody"
        placeholder="Find or name somebody"
        autoCapitalize="none"
        spellcheck={false}
        autofocus={focus}
        value={query}
        onInput={(event) => setQuery(event.currentTarget.value)}
        onKeyDown={(event) => {
          const best = fitting.find((cid) => nameOf(cid) === name) ?? fitting[0] ?? fresh;
          if (event.key !== "Enter" || !name || !best) return;
          event.preventDefault();
          toggle(best);
          setQuery("");
        }}
      />
      <ul class="people-list">
        {(fresh ? [...fitting, fresh] : fitting).map((cid) => (
          <li key={keyOf(cid)}>
            <label class="person">
              <input
                type="checkbox"
                checked={chosen.has(keyOf(cid))}
                onChange={() => toggle(cid)}
              />
              <Avatar nick={nameOf(cid)} />
              {nameOf(cid)}
              {isTribe(cid) && <span class="soft">tribe</span>}
              {cid === fresh && <span class="soft">not in the list yet</span>}
            </label>
          </li>
        ))}
      </ul>
    </div>
  );
}
