import type { JSX } from "preact";
import { useStore } from "../context.ts";
import { Icon } from "../icons.tsx";
import { Notice } from "../notice.tsx";
import { ContactRows } from "./contact_rows.tsx";

/** The account's contacts by group, with what finds or adds another. */
export function ContactSidebar(): JSX.Element {
  const { dialog, contacts } = useStore();
  const { list, requests } = contacts;
  const waiting = requests.waiting.value;
  return (
    <>
      <div class="new-chat">
        <input
          aria-label="Find a contact"
          placeholder="Find a contact…"
          spellcheck={false}
          value={list.query.value}
          onInput={(event) => void (list.query.value = event.currentTarget.value)}
          onKeyDown={(event) => event.key === "Escape" && void (list.query.value = "")}
        />
        <button
          type="button"
          class="icon-button"
          aria-label="Add a contact"
          title="Add a contact"
          onClick={() => void (dialog.value = { kind: "contact-add" })}
        >
          <Icon name="plus" />
        </button>
      </div>
      <div class="tribe-doors">
        <button
          type="button"
          class="chip small"
          onClick={() => void (dialog.value = { kind: "contact-requests" })}
        >
          Requests
          {waiting > 0 && <span class="badge">{waiting > 99 ? "99+" : waiting}</span>}
        </button>
      </div>
      <ContactsOrWhyNot />
    </>
  );
}

function ContactsOrWhyNot(): JSX.Element {
  const { list } = useStore().contacts;
  const rows = list.rows.value;
  if (rows.length > 0) return <ContactRows rows={rows} />;
  if (list.query.value.trim()) return <Notice icon="search" title="No contact of that name" />;
  switch (list.status.value) {
    case "loading":
      return <Notice spinner title="Loading contacts…" />;
    case "failed":
      return (
        <Notice
          icon="warning"
          title="The contacts could not be loaded"
          text={list.problem.value}
          action={{ label: "Try again", run: () => void list.load() }}
        />
      );
    case "ready":
      return (
        <Notice icon="people" title="No contacts yet" text="Look for somebody with the plus." />
      );
  }
}
