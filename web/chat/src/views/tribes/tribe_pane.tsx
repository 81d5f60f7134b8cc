import type { JSX } from "preact";
import { useState } from "preact/hooks";
import type { OpenTribe } from "../../store/tribes/open_tribe.ts";
import { tribeOf } from "../../store/peers.ts";
import { Avatar } from "../avatar.tsx";
import { useStore } from "../context.ts";
import { Icon } from "../icons.tsx";
import { Menu, type MenuItem } from "../menu.tsx";
import { Notice } from "../notice.tsx";
import { AboutTribe } from "./about_tribe.tsx";
import { BlackList } from "./black_list.tsx";
import { MemberList } from "./member_list.tsx";
import { TribeSettingsView } from "./tribe_settings_view.tsx";

const tabs = {
  members: "Members",
  about: "About",
  settings: "Settings",
  blocked: "Black list",
} as const;
type Tab = keyof typeof tabs;

/** The right side: one tribe, with those who are in it and what is set of it. */
export function TribePane({ tribe }: { tribe: OpenTribe }): JSX.Element {
  const [chosen, setChosen] = useState<Tab>("members");
  const mine = tribe.tribe.value;
  const known = (Object.keys(tabs) as Tab[]).filter(
    (tab) => tab !== "blocked" || (tribe.isManager && !tribe.isMultiChat),
  );
  const tab = known.includes(chosen) ? chosen : "members";
  const move = (event: KeyboardEvent) => {
    const by = event.key === "ArrowRight" ? 1 : event.key === "ArrowLeft" ? -1 : 0;
    if (by === 0) return;
    const next = known[(known.indexOf(tab) + by + known.length) % known.length]!;
    setChosen(next);
    document.getElementById(`tribe-tab-${next}`)?.focus();
  };
  return (
    <>
      <Header tribe={tribe} />
      {!mine ? (
        <Gone />
      ) : (
        <>
          {tribe.closed.value && <ClosedLine tribe={tribe} />}
          <div class="tribe-tabs" role="tablist" aria-label="The tribe" onKeyDown={move}>
            {known.map((name) => (
              <button
                key={name}
                id={`tribe-tab-${name}`}
                type="button"
                role="tab"
                class="section"
                aria-selected={name === tab}
                tabIndex={name === tab ? 0 : -1}
                onClick={() => setChosen(name)}
              >
                {tabs[name]}
              </button>
            ))}
          </div>
          <p class="problem tribe-problem" role="alert">
            {tribe.problem.value && `That was not done: ${tribe.problem.value}.`}
          </p>
          {tab === "members" && <MemberList tribe={tribe} />}
          {tab === "about" && <AboutTribe tribe={tribe} />}
          {tab === "settings" && <TribeSettingsView tribe={tribe} />}
          {tab === "blocked" && <BlackList tribe={tribe} />}
        </>
      )}
    </>
  );
}

function Header({ tribe }: { tribe: OpenTribe }): JSX.Element {
  const store = useStore();
  const [menu, setMenu] = useState<{ x: number; y: number } | undefined>(undefined);
  const { members } = tribe;
  const name = tribe.tribe.value?.name ?? tribe.settings.facts.value.info?.tribename ?? "Tribe";
  const counts =
    members.status.value === "ready" && tribe.tribe.value
      ? `${members.total.value} members, ${members.online.value} online`
      : "";
  const items = menuOf(tribe, name, (dialog) => void (store.dialog.value = dialog));
  return (
    <header class="bar">
      <button
        type="button"
        class="icon-button back"
        aria-label="Back to the tribes"
        onClick={() => store.tribes.hide()}
      >
        <Icon name="back" />
      </button>
      <Avatar nick={name} />
      <div class="bar-lines">
        <h2 class="bar-title" dir="auto">
          {name}
        </h2>
        <span class="bar-line" role="status">
          {counts}
        </span>
      </div>
      <button
        type="button"
        class="icon-button"
        title="Messages"
        aria-label="Messages"
        onClick={() => store.startChat(tribeOf(tribe.tribeid))}
      >
        <Icon name="chat" />
      </button>
      {items.length > 0 && (
        <button
          type="button"
          class="icon-button"
          title="More"
          aria-label="Tribe menu"
          aria-haspopup="menu"
          onClick={({ currentTarget }) => {
            const { right, bottom } = currentTarget.getBoundingClientRect();
            setMenu({ x: right, y: bottom + 4 });
          }}
        >
          <Icon name="more" />
        </button>
      )}
      {menu && <Menu label="Tribe" items={items} {...menu} close={() => setMenu(undefined)} />}
    </header>
  );
}

type Ask = (dialog: NonNullable<ReturnType<typeof useStore>["dialog"]["value"]>) => void;

/** What a person may do with the whole tribe. */
function menuOf(tribe: OpenTribe, name: string, ask: Ask): MenuItem[] {
  if (!tribe.tribe.value) return [];
  const confirm = (
    item: Omit<MenuItem, "run">,
    question: { title: string; text: string; label: string; run: () => Promise<boolean> },
  ): MenuItem => ({ ...item, run: () => ask({ kind: "tribe-confirm", tribe, ...question }) });
  const items: MenuItem[] = [];
  if (tribe.mayRename) {
    items.push({
      label: "Invite people…",
      icon: "plus",
      run: () => ask({ kind: "tribe-invite", tribe }),
    });
  }
  if (!tribe.isOwner) {
    items.push(
      confirm(
        { label: "Leave the tribe…", icon: "leave", danger: true },
        {
          title: `Leave ${name}?`,
          text: "What is written there from now on does not reach you any more.",
          label: "Leave",
          run: () => tribe.quit(),
        },
      ),
    );
  } else if (tribe.closed.value) {
    items.push({ label: "Open the tribe again", icon: "undo", run: () => void tribe.enable() });
  } else {
    items.push(
      confirm(
        { label: "Close the tribe…", icon: "bell-off", danger: true },
        {
          title: `Close ${name}?`,
          text: "Nobody can write, join or change anything until you open it again.",
          label: "Close the tribe",
          run: () => tribe.close(),
        },
      ),
    );
  }
  return items;
}

function ClosedLine({ tribe }: { tribe: OpenTribe }): JSX.Element {
  return (
    <p class="tribe-note" role="status">
      This tribe is closed: it can be read, and nothing in it can be changed.
      {tribe.isOwner && (
        <button type="button" class="link-button" onClick={() => void tribe.enable()}>
          Open it again
        </button>
      )}
    </p>
  );
}

function Gone(): JSX.Element {
  const { tribes } = useStore();
  return (
    <div class="centered">
      {tribes.list.status.value === "loading" ? (
        <Notice spinner title="Loading the tribe…" />
      ) : (
        <Notice
          icon="people"
          title="You are not a member of this tribe any more"
          text="You were removed, or left it in another window."
          action={{ label: "Back to the tribes", run: () => tribes.hide() }}
        />
      )}
    </div>
  );
}
