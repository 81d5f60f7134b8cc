import type { IMListedContact } from "@imsdkbridge/client";
import type { JSX } from "preact";
import { useRef, useState } from "preact/hooks";
import { isThere, type ContactRow } from "../../store/contacts/contact_list.ts";
import { keyOf } from "../../store/peers.ts";
import { contactName } from "../../text/contacts.ts";
import { Avatar } from "../avatar.tsx";
import { useStore } from "../context.ts";
import { Menu, type MenuItem } from "../menu.tsx";
import { UnreadBadge } from "../unread_badge.tsx";
import { useVirtualList } from "../use_virtual_list.ts";

const contactHeight = 56;
const groupHeight = 34;

/**
 * Groups and contacts, of which only those in sight exist as elements. Arrow keys move, Enter folds
 * a group or opens a chat, the menu key (or Shift+F10) offers what else can be done.
 */
export function ContactRows({ rows }: { rows: readonly ContactRow[] }): JSX.Element {
  const store = useStore();
  const box = useRef<HTMLDivElement>(null);
  const [at, setAt] = useState(0);
  const [menu, setMenu] = useState<{ listed: IMListedContact; x: number; y: number } | undefined>();
  const list = useVirtualList({
    count: rows.length,
    getScrollElement: () => box.current,
    estimateSize: (index) => (rows[index]!.kind === "group" ? groupHeight : contactHeight),
    getItemKey: (index) => keyOfRow(rows[index]!),
    overscan: 12,
  });
  const current = Math.min(at, rows.length - 1);
  const open = (row: ContactRow) => {
    if (row.kind === "group") return store.contacts.list.fold(row.groupid);
    const { appkey, nick } = row.listed.userid;
    store.startChat({ appkey, nick });
  };
  const offer = (row: ContactRow, place: { x: number; y: number }) => {
    if (row.kind === "contact") setMenu({ listed: row.listed, ...place });
  };
  const onKeyDown = (event: KeyboardEvent) => {
    const steps: Record<string, number> = {
      ArrowDown: current + 1,
      ArrowUp: current - 1,
      PageDown: current + 10,
      PageUp: current - 10,
      Home: 0,
      End: rows.length - 1,
    };
    const step = steps[event.key];
    const row = rows[current]!;
    if (step !== undefined) {
      const next = Math.min(Math.max(step, 0), rows.length - 1);
      setAt(next);
      list.scrollToIndex(next);
    } else if (event.key === "Enter" || event.key === " ") {
      open(row);
    } else if (event.key === "ContextMenu" || (event.key === "F10" && event.shiftKey)) {
      const { left, bottom } = box
        .current!.querySelector(`[data-index="${current}"]`)!
        .getBoundingClientRect();
      offer(row, { x: left + 60, y: bottom });
    } else {
      return;
    }
    event.preventDefault();
  };
  return (
    <>
      <div
        class="members contacts"
        ref={box}
        role="listbox"
        aria-label="Contacts"
        aria-activedescendant={`contact-${current}`}
        tabIndex={0}
        onKeyDown={onKeyDown}
      >
        <div class="members-rows" style={{ height: `${list.getTotalSize()}px` }}>
          {list.getVirtualItems().map(({ index, start, size }) => {
            const row = rows[index]!;
            return (
              <div
                key={keyOfRow(row)}
                id={`contact-${index}`}
                class={`${row.kind === "group" ? "member contact-group" : "member"}${index === current ? " current" : ""}`}
                role="option"
                aria-selected={index === current}
                aria-setsize={rows.length}
                aria-posinset={index + 1}
                data-index={index}
                data-contact={row.kind === "contact" ? row.listed.userid.nick : undefined}
                style={{ height: `${size}px`, transform: `translateY(${start}px)` }}
                onClick={() => (setAt(index), open(row))}
                onContextMenu={(event) => {
                  event.preventDefault();
                  setAt(index);
                  offer(row, { x: event.clientX, y: event.clientY });
                }}
              >
                {row.kind === "group" ? <GroupLine {...row} /> : <ContactLine {...row} />}
              </div>
            );
          })}
        </div>
      </div>
      {menu && <ContactMenu {...menu} close={() => setMenu(undefined)} />}
    </>
  );
}

function keyOfRow(row: ContactRow): string {
  return row.kind === "group" ? `group ${row.groupid}` : keyOf(row.listed.userid);
}

type Of<Kind> = Extract<ContactRow, { kind: Kind }>;

function GroupLine({ groupid, name, online, count }: Of<"group">): JSX.Element {
  const folded = useStore().contacts.list.folded.value.has(groupid);
  return (
    <>
      <span class="contact-fold" aria-hidden="true">
        {folded ? "▸" : "▾"}
      </span>
      <b class="conversation-name" dir="auto">
        {name}
      </b>
      <span class="soft">
        {online} of {count}
        <span class="visually-hidden">{folded ? " are there, folded" : " are there"}</span>
      </span>
    </>
  );
}

function ContactLine({ listed }: Of<"contact">): JSX.Element {
  const { conversations } = useStore();
  const there = isThere(listed);
  const { nick, appkey } = listed.userid;
  const name = contactName(listed.userid);
  const cid = { appkey, nick };
  return (
    <>
      <span class={there ? "presence online" : "presence"}>
        <Avatar nick={name} />
      </span>
      <span class="conversation-lines">
        <span class="conversation-line">
          <span class="conversation-name" dir="auto">
            {name}
          </span>
          {listed.asterisk === 1 && <span class="tag">Favourite</span>}
        </span>
        <span class="conversation-line">
          <span class="conversation-preview">
            {name !== nick && `${nick} · `}
            {there ? "online" : "offline"}
          </span>
          <UnreadBadge cid={cid} unread={conversations.unreadOf(cid)} />
        </span>
      </span>
    </>
  );
}

interface ContactMenuProps {
  listed: IMListedContact;
  x: number;
  y: number;
  close: () => void;
}

/** What a person may do with a contact. */
function ContactMenu({ listed, ...place }: ContactMenuProps): JSX.Element {
  const store = useStore();
  const { appkey, nick } = listed.userid;
  const user = { appkey, nick };
  const marked = listed.asterisk === 1;
  const items: MenuItem[] = [
    { label: "Write to them", icon: "chat", run: () => store.startChat(user) },
    {
      label: marked ? "No favourite any more" : "Make a favourite",
      icon: marked ? "bell-off" : "bell",
      run: () => void store.contacts.mark(user, !marked),
    },
    {
      label: "Move to a group…",
      icon: "forward",
      run: () => void (store.dialog.value = { kind: "contact-move", listed }),
    },
    {
      label: "Remove…",
      icon: "leave",
      danger: true,
      run: () => void (store.dialog.value = { kind: "contact-remove", listed }),
    },
    {
      label: "Remove and block…",
      icon: "trash",
      danger: true,
      run: () => void (store.dialog.value = { kind: "contact-block", listed }),
    },
  ];
  return <Menu label={contactName(listed.userid)} items={items} {...place} />;
}
