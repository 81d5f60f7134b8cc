import type { IMTribeMember } from "@imsdkbridge/client";
import { TribeMemberBasicStatus, TribeMemberLevel } from "@imsdkbridge/client";
import type { JSX } from "preact";
import { useRef, useState } from "preact/hooks";
import type { OpenTribe } from "../../store/tribes/open_tribe.ts";
import { keyOf, samePeer } from "../../store/peers.ts";
import { levelWord, nameOf } from "../../text/tribes.ts";
import { Avatar } from "../avatar.tsx";
import { useStore } from "../context.ts";
import { Menu, type MenuItem } from "../menu.tsx";
import { Notice } from "../notice.tsx";
import { useVirtualList } from "../use_virtual_list.ts";

const rowHeight = 56;

/** The members, of whom only those in sight exist as elements. Arrow keys move, Enter opens. */
export function MemberList({ tribe }: { tribe: OpenTribe }): JSX.Element {
  const { members } = tribe;
  const shown = members.shown.value;
  const box = useRef<HTMLDivElement>(null);
  const [at, setAt] = useState(0);
  const [menu, setMenu] = useState<{ member: IMTribeMember; x: number; y: number } | undefined>();
  const list = useVirtualList({
    count: shown.length,
    getScrollElement: () => box.current,
    estimateSize: () => rowHeight,
    overscan: 12,
  });
  const current = Math.min(at, shown.length - 1);
  const open = (member: IMTribeMember, row: Element) => {
    const { left, bottom } = row.getBoundingClientRect();
    setMenu({ member, x: left + 60, y: bottom });
  };
  const onKeyDown = (event: KeyboardEvent) => {
    const steps: Record<string, number> = {
      ArrowDown: current + 1,
      ArrowUp: current - 1,
      PageDown: current + 10,
      PageUp: current - 10,
      Home: 0,
      End: shown.length - 1,
    };
    const step = steps[event.key];
    const row = box.current?.querySelector(`[data-index="${current}"]`);
    const member = shown[current]?.member;
    if (step !== undefined) {
      const next = Math.min(Math.max(step, 0), shown.length - 1);
      setAt(next);
      list.scrollToIndex(next);
    } else if ((event.key === "Enter" || event.key === " ") && row && member) {
      open(member, row);
    } else {
      return;
    }
    event.preventDefault();
  };
  return (
    <>
      <div class="tribe-search">
        <input
          class="field"
          aria-label="Find a member"
          placeholder="Find a member"
          spellcheck={false}
          value={members.query.value}
          onInput={(event) => {
            members.query.value = event.currentTarget.value;
            setAt(0);
          }}
          onKeyDown={(event) => event.key === "Escape" && void (members.query.value = "")}
        />
      </div>
      {shown.length === 0 ? (
        <div class="centered">
          <NoMembers tribe={tribe} />
        </div>
      ) : (
        <div
          class="members"
          ref={box}
          role="listbox"
          aria-label="Members"
          aria-activedescendant={`member-${current}`}
          tabIndex={0}
          onKeyDown={onKeyDown}
        >
          <div class="members-rows" style={{ height: `${list.getTotalSize()}px` }}>
            {list.getVirtualItems().map(({ index, start }) => {
              const { member } = shown[index]!;
              return (
                <div
                  key={keyOf(member)}
                  id={`member-${index}`}
                  class={index === current ? "member current" : "member"}
                  role="option"
                  aria-selected={index === current}
                  aria-setsize={shown.length}
                  aria-posinset={index + 1}
                  data-index={index}
                  data-nick={member.nick}
                  style={{ height: `${rowHeight}px`, transform: `translateY(${start}px)` }}
                  onClick={(event) => (setAt(index), open(member, event.currentTarget))}
                >
                  <MemberLine tribe={tribe} member={member} />
                </div>
              );
            })}
          </div>
        </div>
      )}
      {menu && <MemberMenu tribe={tribe} {...menu} close={() => setMenu(undefined)} />}
    </>
  );
}

function MemberLine({ tribe, member }: { tribe: OpenTribe; member: IMTribeMember }): JSX.Element {
  const online = member.status === TribeMemberBasicStatus.kMemberOnline;
  const name = nameOf(member);
  const followed = tribe.attention.value.some((user) => samePeer(user, member));
  const word = levelWord(member.level);
  return (
    <>
      <span class={online ? "presence online" : "presence"}>
        <Avatar nick={name} />
      </span>
      <span class="conversation-lines">
        <span class="conversation-line">
          <span class="conversation-name" dir="auto">
            {name}
            {samePeer(member, tribe.me) && <span class="soft"> (you)</span>}
          </span>
          {followed && <span class="tag">Followed</span>}
          {word && <span class="tag">{word}</span>}
        </span>
        <span class="conversation-preview">
          {name !== member.nick && `${member.nick} · `}
          {online ? "online" : "offline"}
        </span>
      </span>
    </>
  );
}

function NoMembers({ tribe }: { tribe: OpenTribe }): JSX.Element {
  const { members } = tribe;
  switch (members.status.value) {
    case "loading":
      return <Notice spinner title="Loading members…" />;
    case "failed":
      return (
        <Notice
          icon="warning"
          title="The members could not be loaded"
          text={members.problem.value}
          action={{ label: "Try again", run: () => void members.load() }}
        />
      );
    case "ready":
      return <Notice icon="search" title="No member of that name" />;
  }
}

interface MemberMenuProps {
  tribe: OpenTribe;
  member: IMTribeMember;
  x: number;
  y: number;
  close: () => void;
}

/** What a person may do with a member. */
function MemberMenu({ tribe, member, ...place }: MemberMenuProps): JSX.Element {
  const store = useStore();
  const name = nameOf(member);
  const self = samePeer(member, tribe.me);
  const above = tribe.isAbove(member);
  const followed = tribe.attention.value.some((user) => samePeer(user, member));
  const { appkey, nick } = member;
  const confirm = (title: string, text: string, label: string, run: () => Promise<boolean>) => {
    store.dialog.value = { kind: "tribe-confirm", tribe, title, text, label, run };
  };
  const isManager = member.level === TribeMemberLevel.kTribeManager;
  const items: (MenuItem | false)[] = [
    !self && {
      label: "Write to them",
      icon: "chat",
      run: () => {
        store.section.value = "chats";
        store.startChat({ appkey, nick });
      },
    },
    !self && {
      label: followed ? "Do not follow any more" : "Follow",
      icon: followed ? "bell-off" : "bell",
      run: () => void tribe.setAttention({ appkey, nick }, !followed),
    },
    (above || (self && !tribe.closed.value)) && {
      label: "Name in this tribe…",
      icon: "copy",
      run: () => void (store.dialog.value = { kind: "tribe-rename-member", tribe, member }),
    },
    above &&
      tribe.isOwner && {
        label: isManager ? "Make an ordinary member" : "Make an administrator",
        icon: isManager ? "down" : "check",
        run: () =>
          void tribe.setLevel(
            member,
            isManager ? TribeMemberLevel.kTribeMember : TribeMemberLevel.kTribeManager,
          ),
      },
    above &&
      tribe.isOwner && {
        label: "Hand the tribe over…",
        icon: "forward",
        run: () =>
          confirm(
            `Hand the tribe over to ${name}?`,
            `${name} will own it; you stay as an administrator.`,
            "Hand over",
            () => tribe.transfer(member),
          ),
      },
    above && {
      label: "Remove from the tribe…",
      icon: "leave",
      danger: true,
      run: () =>
        confirm(
          `Remove ${name}?`,
          `${name} reads nothing more here, and may join again.`,
          "Remove",
          () => tribe.kick(member),
        ),
    },
    above &&
      !tribe.isMultiChat && {
        label: "Remove and block…",
        icon: "trash",
        danger: true,
        run: () =>
          confirm(
            `Remove and block ${name}?`,
            `${name} reads nothing more here and cannot join until taken off the black list.`,
            "Remove and block",
            async () => (await tribe.kick(member)) && tribe.block(member),
          ),
      },
  ];
  const offered = items.filter((item): item is MenuItem => item !== false);
  return <Menu label={name} items={offered} {...place} />;
}
