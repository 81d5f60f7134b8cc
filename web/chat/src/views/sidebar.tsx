import type { ComponentProps, JSX } from "preact";
import { useState } from "preact/hooks";
import type { Section } from "../store/chat_store.ts";
import { appkey } from "../store/users.ts";
import { Avatar } from "./avatar.tsx";
import { ContactSidebar } from "./contacts/contact_sidebar.tsx";
import { useStore } from "./context.ts";
import { ConversationList } from "./conversation_list.tsx";
import { Icon } from "./icons.tsx";
import { TribeSidebar } from "./tribes/tribe_sidebar.tsx";

/** The left column: who is signed in, a field for a new chat, and the conversations. */
export function Sidebar(): JSX.Element {
  const { session, dialog, section } = useStore();
  const nick = session.me.value?.nick ?? "";
  return (
    <aside class="sidebar">
      <header class="bar">
        <Avatar nick={nick} />
        <h1 class="bar-title" title={nick}>
          {nick}
        </h1>
        <Tool
          icon="search"
          label="Search everywhere"
          keys=" (Ctrl+K)"
          run={() => void (dialog.value = { kind: "search" })}
        />
        <Tool
          icon="broadcast"
          label="Write to several people"
          run={() => void (dialog.value = { kind: "broadcast" })}
        />
        <Tool icon="gear" label="Settings" run={() => void (dialog.value = { kind: "settings" })} />
        <Tool icon="leave" label="Sign out" run={() => void session.signOut()} />
      </header>
      <Sections />
      {section.value === "chats" && (
        <>
          <NewChat />
          <ConversationList />
        </>
      )}
      {section.value === "contacts" && <ContactSidebar />}
      {section.value === "tribes" && <TribeSidebar />}
    </aside>
  );
}

const sections: readonly { name: Section; label: string; counts: string }[] = [
  { name: "chats", label: "Chats", counts: "unread" },
  { name: "contacts", label: "Contacts", counts: "waiting" },
  { name: "tribes", label: "Tribes", counts: "waiting" },
];

/** What the column lists. Arrow keys change. */
function Sections(): JSX.Element {
  const { section, conversations, contacts, tribes } = useStore();
  const counts: Record<Section, number> = {
    chats: conversations.totalUnread.value,
    contacts: contacts.requests.waiting.value,
    tribes: tribes.requests.waiting.value,
  };
  const onKeyDown = (event: KeyboardEvent) => {
    const step = { ArrowLeft: -1, ArrowRight: 1 }[event.key];
    if (!step) return;
    const at = sections.findIndex(({ name }) => name === section.value);
    const next = (at + step + sections.length) % sections.length;
    section.value = sections[next]!.name;
    const tabs = (event.target as HTMLElement).parentElement!.querySelectorAll("button");
    tabs[next]!.focus();
  };
  return (
    <div class="sections" role="tablist" aria-label="What to show" onKeyDown={onKeyDown}>
      {sections.map(({ name, label, counts: what }) => (
        <button
          key={name}
          type="button"
          role="tab"
          class="section"
          aria-selected={section.value === name}
          tabIndex={section.value === name ? 0 : -1}
          onClick={() => void (section.value = name)}
        >
          {label}
          {counts[name] > 0 && (
            <span class="badge" aria-label={`${counts[name]} ${what}`}>
              {counts[name] > 99 ? "99+" : counts[name]}
            </span>
          )}
        </button>
      ))}
    </div>
  );
}

interface ToolProps {
  icon: ComponentProps<typeof Icon>["name"];
  label: string;
  keys?: string;
  run: () => void;
}

function Tool({ icon, label, keys = "", run }: ToolProps): JSX.Element {
  return (
    <button type="button" class="icon-button" title={label + keys} aria-label={label} onClick={run}>
      <Icon name={icon} />
    </button>
  );
}

function NewChat(): JSX.Element {
  const store = useStore();
  const [nick, setNick] = useState("");
  const submit = (event: Event) => {
    event.preventDefault();
    const name = nick.trim();
    if (!name) return;
    setNick("");
    store.startChat({ appkey, nick: name });
  };
  return (
    <form class="new-chat" onSubmit={submit}>
      <input
        aria-label="Start a chat with"
        placeholder="Start a chat with…"
        autoCapitalize="none"
        spellcheck={false}
        value={nick}
        onInput={(event) => setNick(event.currentTarget.value)}
      />
      <button type="submit" class="icon-button" aria-label="Start chat" title="Start chat">
        <Icon name="plus" />
      </button>
    </form>
  );
}
