import { readBody } from "@imsdkbridge/client";
import type { JSX } from "preact";
import { actionsFor, type Action } from "../text/actions.ts";
import { plainText } from "../text/body.ts";
import type { ChatStore } from "../store/chat_store.ts";
import { useStore } from "./context.ts";
import { Menu, type MenuItem } from "./menu.tsx";
import { openPicture } from "./picture_link.ts";
import type { ChatMessage } from "../store/peers.ts";

/** A message whose menu is wanted, and where. */
export interface MenuWish {
  message: ChatMessage;
  mine: boolean;
  x: number;
  y: number;
  /** The message's element; the focus comes back to it. */
  from: HTMLElement | null;
}

/** What can be done with one message. */
export function MessageMenu({ wish, close }: { wish: MenuWish; close: () => void }): JSX.Element {
  const store = useStore();
  const { message, mine, x, y } = wish;
  const readOnly = store.faces.isVirtual(message.cid);
  const actions = actionsFor(message, { mine, readOnly, now: Date.now() });
  const items = actions.map((action) => menuItem(action, message, store));
  return <Menu label="Message" items={items} x={x} y={y} close={close} />;
}

function menuItem(action: Action, message: ChatMessage, store: ChatStore<File>): MenuItem {
  const { cid, msgid } = message;
  switch (action) {
    case "open": {
      const part = readBody(message.msgbody).find(({ kind }) => kind === "picture");
      const path = part?.kind === "picture" ? part.path : "";
      const run = () => openPicture(store, message, path, 0);
      return { label: "Open picture", icon: "picture", run };
    }
    case "copy":
      return { label: "Copy text", icon: "copy", run: () => void copy(message, store) };
    case "translate":
      return {
        label: "Translate",
        icon: "translate",
        run: () => void store.translations.translate(message),
      };
    case "forward": {
      const run = () => void (store.dialog.value = { kind: "forward", messages: [message] });
      return { label: "Forward…", icon: "forward", run };
    }
    case "withdraw":
      return { label: "Withdraw", icon: "undo", run: () => void store.actions.withdraw(message) };
    case "resend":
      return { label: "Send again", icon: "retry", run: () => void store.actions.resend(message) };
    case "select":
      return { label: "Select", icon: "select", run: () => store.selection.start(message) };
    case "delete": {
      const run = () => void (store.dialog.value = { kind: "delete", cid, msgids: [msgid] });
      return { label: "Delete…", icon: "trash", danger: true, run };
    }
  }
}

async function copy(message: ChatMessage, { toasts }: ChatStore<File>): Promise<void> {
  try {
    await navigator.clipboard.writeText(plainText(message));
    toasts.show("Copied");
  } catch {
    toasts.problem("The browser did not allow copying.");
  }
}
