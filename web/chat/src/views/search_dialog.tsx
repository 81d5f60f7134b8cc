import type { JSX } from "preact";
import { useEffect, useRef, useState } from "preact/hooks";
import { keyOf, samePeer, type Peer, type ChatMessage } from "../store/peers.ts";
import { hitLine } from "../text/line.ts";
import { timeOf } from "../text/rows.ts";
import { fullTime, listTime } from "../text/time.ts";
import { Avatar } from "./avatar.tsx";
import { useStore } from "./context.ts";
import { Dialog } from "./dialog.tsx";
import { Icon } from "./icons.tsx";
import { LineText } from "./line_text.tsx";
import { Notice } from "./notice.tsx";

/** The search over all conversations: people by name, and messages. Arrow keys move. */
export function SearchDialog({ close }: { close: () => void }): JSX.Element {
  const store = useStore();
  const { search } = store.globalSearch;
  const results = useRef<HTMLDivElement>(null);
  useEffect(() => () => store.globalSearch.clear(), []);
  const { keywords } = search;
  const query = search.query.value.trim().toLowerCase();
  const people = store.conversations.sorted.value
    .map(({ cid }) => cid)
    .filter((cid) => query && store.names.of(cid).toLowerCase().includes(query));

  // Enter may come before the hits.
  const [waiting, setWaiting] = useState(false);
  const searching = search.status.value === "searching";
  const openFirst = () => results.current?.querySelector<HTMLElement>(".result")?.click();
  useEffect(() => {
    if (!waiting || searching) return;
    setWaiting(false);
    openFirst();
  }, [waiting, searching]);

  const onKeyDown = (event: KeyboardEvent) => {
    const by = event.key === "ArrowDown" ? 1 : event.key === "ArrowUp" ? -1 : 0;
    if (by === 0) return;
    event.preventDefault();
    const all = [...results.current!.querySelectorAll<HTMLElement>(".result")];
    const at = all.indexOf(document.activeElement as HTMLElement);
    all[Math.min(Math.max(at + by, 0), all.length - 1)]?.focus();
  };

  return (
    <Dialog title="Search everywhere" close={close} wide>
      <div class="global-search" onKeyDown={onKeyDown}>
        <input
          class="field"
          aria-label="Search all conversations"
          placeholder="Names and messages"
          autofocus
          value={search.query.value}
          onInput={(event) => {
            setWaiting(false);
            store.globalSearch.setQuery(event.currentTarget.value);
          }}
          onKeyDown={(event) => {
            if (event.key !== "Enter" || event.isComposing) return;
            event.preventDefault();
            search.hurry();
            setWaiting(true);
          }}
        />
        <Narrowing />
        <div class="results" ref={results}>
          {people.map((cid) => (
            <button
              key={keyOf(cid)}
              type="button"
              class="result"
              onClick={() => (close(), store.open(cid))}
            >
              <Avatar nick={store.names.of(cid)} />
              <span class="result-name">{store.names.of(cid)}</span>
            </button>
          ))}
          {search.hits.value.map((message) => (
            <Hit
              key={`${keyOf(message.cid)} ${message.msgid}`}
              message={message}
              open={() => (close(), void store.jumpTo(message.cid, message.msgid, keywords))}
            />
          ))}
          <State people={people.length} />
        </div>
      </div>
    </Dialog>
  );
}

/** The conversations with hits; choosing one narrows the list to it. */
function Narrowing(): JSX.Element | null {
  const { globalSearch, names } = useStore();
  const only = globalSearch.only.value;
  if (globalSearch.cids.value.length < 2) return null;
  const chip = (cid: Peer | undefined) => (
    <button
      key={cid ? keyOf(cid) : "all"}
      type="button"
      class="chip small"
      aria-pressed={cid ? samePeer(cid, only) : !only}
      onClick={() => globalSearch.narrow(cid)}
    >
      {cid ? names.of(cid) : "Everywhere"}
    </button>
  );
  return (
    <div class="narrowing" role="group" aria-label="Conversations with hits">
      {[undefined, ...globalSearch.cids.value].map(chip)}
    </div>
  );
}

function Hit({ message, open }: { message: ChatMessage; open: () => void }): JSX.Element {
  const { globalSearch, names, session } = useStore();
  const { keywords } = globalSearch.search;
  const mine = samePeer(message.fromid, session.me.value);
  return (
    <button type="button" class="result" onClick={open}>
      <Avatar nick={names.of(message.cid)} />
      <span class="result-lines">
        <span class="result-line">
          <span class="result-name">{names.of(message.cid)}</span>
          <time class="soft" title={fullTime(timeOf(message))}>
            {listTime(timeOf(message), new Date())}
          </time>
        </span>
        <span class="result-text" dir="auto">
          <LineText line={hitLine(message, mine, keywords, names.ofSender(message))} />
        </span>
      </span>
    </button>
  );
}

function State({ people }: { people: number }): JSX.Element | null {
  const { globalSearch } = useStore();
  const { search } = globalSearch;
  const hits = search.hits.value.length;
  switch (search.status.value) {
    case "idle":
      if (people > 0) return null;
      return <Notice icon="search" title="Type a word or a name" />;
    case "searching":
      return (
        <p class="results-state" role="status">
          <span class="spinner" aria-hidden="true" /> Searching…
        </p>
      );
    case "failed":
      return (
        <Notice
          icon="warning"
          title="The messages could not be searched"
          text={search.problem.value}
          action={{ label: "Try again", run: () => void search.retry() }}
        />
      );
    case "ready":
      if (hits === 0) {
        return people > 0 ? null : <Notice icon="search" title="Nothing was found" />;
      }
      return (
        <p class="results-state" role="status">
          {hits < search.total.value
            ? `${hits} of ${search.total.value} messages`
            : `${hits} found`}
          {search.hasMore && (
            <button type="button" class="link-button" onClick={() => void search.more()}>
              <Icon name="down" /> Show more
            </button>
          )}
        </p>
      );
  }
}
