import type { JSX } from "preact";
import { useEffect, useState } from "preact/hooks";
import type { ChatStore } from "../store/chat_store.ts";
import { ConnectionBanner } from "./connection_banner.tsx";
import { useStore } from "./context.ts";
import { ConversationPane } from "./conversation_pane.tsx";
import { Dialogs } from "./dialogs.tsx";
import { Notice } from "./notice.tsx";
import { PictureViewer } from "./picture_viewer.tsx";
import { Sidebar } from "./sidebar.tsx";
import { SignIn } from "./sign_in.tsx";
import { ToastStack } from "./toasts.tsx";
import { TribePane } from "./tribes/tribe_pane.tsx";
import { useLeaveQuestion } from "./use_leave_question.ts";

/** Milliseconds that a shaken window is marked. */
const shakeTime = 900;

/** The whole page. */
export function App(): JSX.Element {
  const store = useStore();
  return (
    <>
      <Screen />
      <ToastStack />
      <div class="visually-hidden" role="status" aria-live="polite">
        {store.announcement.value}
      </div>
    </>
  );
}

function Screen(): JSX.Element {
  const { connection, session } = useStore();
  const { state, reason } = connection.value;
  if (state === "refused") return <Refused reason={reason} />;
  if (session.status.value === "starting") return <Starting />;
  if (session.status.value !== "signedin") return <SignIn />;
  return <Chat />;
}

function Chat(): JSX.Element {
  const store = useStore();
  const cid = store.active.value;
  const tribe = store.tribes.open.value;
  const shaking = useShaking(store);
  useShortcuts(store);
  useLeaveQuestion(store.attachments.all.value.length > 0);
  const classes = ["chat", (cid || tribe) && "has-conversation", shaking && "shaking"];
  return (
    <div class={classes.filter(Boolean).join(" ")}>
      <ConnectionBanner />
      <Sidebar />
      <main class="pane">
        {tribe ? (
          <TribePane key={tribe.tribeid} tribe={tribe} />
        ) : cid ? (
          <ConversationPane cid={cid} />
        ) : (
          <NothingOpen />
        )}
      </main>
      <Dialogs />
      <PictureViewer />
    </div>
  );
}

function useShaking({ shaking }: ChatStore<File>): boolean {
  const [on, setOn] = useState(false);
  const count = shaking.count.value;
  const [seen] = useState(count);
  useEffect(() => {
    if (count === seen) return undefined;
    setOn(true);
    const timer = setTimeout(() => setOn(false), shakeTime);
    return () => clearTimeout(timer);
  }, [count]);
  return on;
}

/** Ctrl+F searches the conversation, Ctrl+K everywhere; Escape ends the choice of messages. */
function useShortcuts(store: ChatStore<File>): void {
  useEffect(() => {
    const onKeyDown = (event: KeyboardEvent) => {
      if (event.key === "Escape" && !store.dialog.value) store.selection.end();
      if (!(event.ctrlKey || event.metaKey) || event.altKey || event.shiftKey) return;
      const cid = store.active.value;
      const searchable = cid && !store.faces.isVirtual(cid);
      if (event.key === "k") store.dialog.value = { kind: "search" };
      else if (event.key === "f" && searchable) store.search.open(cid);
      else return;
      event.preventDefault();
    };
    addEventListener("keydown", onKeyDown);
    return () => removeEventListener("keydown", onKeyDown);
  }, [store]);
}

function Starting(): JSX.Element {
  const store = useStore();
  const { state, reason } = store.connection.value;
  return (
    <div class="centered">
      {state === "reconnecting" ? (
        <Notice
          icon="warning"
          title={reason ? "The host does not take this page" : "The host cannot be reached"}
          text={`${reason ? `It said: ${reason}.` : "It may not be running."} This page keeps trying.`}
          action={{ label: "Try now", run: () => store.reconnect() }}
        />
      ) : (
        <Notice spinner title="Connecting…" />
      )}
    </div>
  );
}

function Refused({ reason }: { reason: string }): JSX.Element {
  const store = useStore();
  return (
    <div class="centered" role="alert">
      <Notice
        icon="warning"
        title="The host refused this page"
        text={`${reason && `It said: ${reason}. `}Open the address that the host printed when it started.`}
        action={{ label: "Try again", run: () => store.reconnect() }}
      />
    </div>
  );
}

function NothingOpen(): JSX.Element {
  return (
    <div class="centered">
      <Notice
        icon="chat"
        title="No conversation open"
        text="Choose a chat or a tribe, or start a new one."
      />
    </div>
  );
}
