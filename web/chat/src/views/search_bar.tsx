import type { JSX } from "preact";
import { useRef } from "preact/hooks";
import { isTribe, type Peer } from "../store/peers.ts";
import { useStore } from "./context.ts";
import { Icon } from "./icons.tsx";
import { useReturnFocus } from "./use_return_focus.ts";

/** The search in a conversation. Enter goes to the next older hit, Shift+Enter to the newer one. */
export function SearchBar(): JSX.Element {
  const { search: finder } = useStore();
  const { search, at } = finder;
  const field = useRef<HTMLInputElement>(null);
  // What is typed next is meant for the field.
  useReturnFocus(() => field.current?.focus());
  const total = search.total.value;
  const none = search.status.value === "idle" || total === 0;
  const onKeyDown = (event: KeyboardEvent) => {
    if (event.key === "Escape") finder.close();
    else if (event.key === "Enter" || event.key === "ArrowUp" || event.key === "ArrowDown") {
      const newer = event.key === "ArrowDown" || (event.key === "Enter" && event.shiftKey);
      void finder.step(newer ? -1 : 1);
    } else return;
    event.preventDefault();
  };
  const step = (icon: "previous" | "next", by: 1 | -1, label: string, off: boolean) => (
    <button
      type="button"
      class="icon-button"
      title={label}
      aria-label={label}
      disabled={off}
      onClick={() => void finder.step(by)}
    >
      <Icon name={icon} />
    </button>
  );
  const cid = finder.cid.value;
  return (
    <div class="search-bar" role="search">
      <Icon name="search" />
      <input
        ref={field}
        class="field"
        aria-label="Search in this conversation"
        placeholder="Search in this conversation"
        value={search.query.value}
        onInput={(event) => finder.setQuery(event.currentTarget.value)}
        onKeyDown={onKeyDown}
      />
      {cid && isTribe(cid) && <TribeFilters cid={cid} onKeyDown={onKeyDown} />}
      <span class="search-count" role="status">
        {words()}
      </span>
      {search.status.value === "failed" && (
        <button type="button" class="link-button" onClick={() => void search.retry()}>
          Try again
        </button>
      )}
      {step("previous", 1, "Older hit", none || at.value >= total - 1)}
      {step("next", -1, "Newer hit", none || at.value <= 0)}
      <button
        type="button"
        class="icon-button"
        title="Close the search"
        aria-label="Close the search"
        onClick={() => finder.close()}
      >
        <Icon name="close" />
      </button>
    </div>
  );

  function words(): string {
    switch (search.status.value) {
      case "idle":
        return "";
      case "searching":
        return total > 0 ? `${at.value + 1} of ${total}` : "Searching…";
      case "failed":
        return `Not searched: ${search.problem.value}.`;
      case "ready":
        return total > 0 ? `${Math.max(at.value + 1, 1)} of ${total}` : "No hits";
    }
  }
}

interface TribeFiltersProps {
  cid: Peer;
  onKeyDown: (event: KeyboardEvent) => void;
}

/** Whose messages of a tribe are searched, and whether only those that mention the account. */
function TribeFilters({ cid, onKeyDown }: TribeFiltersProps): JSX.Element {
  const { search: finder, threads } = useStore();
  const senders = new Set(threads.of(cid).value.messages.map(({ fromid }) => fromid.nick));
  return (
    <>
      <input
        class="field search-from"
        list="search-senders"
        aria-label="From"
        placeholder="From anybody"
        autoCapitalize="none"
        spellcheck={false}
        value={finder.from.value}
        onInput={(event) => finder.narrow(event.currentTarget.value, finder.mentions.value)}
        onKeyDown={onKeyDown}
      />
      <datalist id="search-senders">
        {[...senders].map((nick) => (
          <option key={nick} value={nick} />
        ))}
      </datalist>
      <button
        type="button"
        class="chip small"
        aria-pressed={finder.mentions.value}
        onClick={() => finder.narrow(finder.from.value, !finder.mentions.value)}
      >
        Mentions me
      </button>
    </>
  );
}
