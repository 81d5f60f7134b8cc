import type { IMUserID } from "@imsdkbridge/client";
import type { JSX } from "preact";
import { useState } from "preact/hooks";
import { appkey, keyOf } from "../store/users.ts";
import { Avatar } from "./avatar.tsx";
import { useStore } from "./context.ts";

interface PeoplePickerProps {
  people: readonly IMUserID[];
  setPeople: (people: readonly IMUserID[]) => void;
  /** Whether what is typed first goes here. */
  focus?: boolean;
}

/** Chooses several people: from the conversations, or by a name that is typed in full. */
export function PeoplePicker(props: PeoplePickerProps): JSX.Element {
  const { people, setPeople, focus = true } = props;
  const store = useStore();
  const [query, setQuery] = useState("");
  const name = query.trim();
  const known = store.conversations.sorted.value
    .map(({ cid }) => cid)
    .filter((cid) => !store.faces.isVirtual(cid));
  const strangers = people.filter((cid) => !known.some((other) => keyOf(other) === keyOf(cid)));
  const all = [...strangers, ...known];
  const fitting = all.filter(({ nick }) => nick.toLowerCase().includes(name.toLowerCase()));
  const fresh = name && !all.some(({ nick }) => nick === name) ? { appkey, nick: name } : undefined;
  const chosen = new Set(people.map(keyOf));
  const toggle = (cid: IMUserID) => {
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
          const best = fitting.find(({ nick }) => nick === name) ?? fitting[0] ?? fresh;
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
              <Avatar nick={cid.nick} />
              {cid.nick}
              {cid === fresh && <span class="soft">not in the list yet</span>}
            </label>
          </li>
        ))}
      </ul>
    </div>
  );
}
