import type { JSX } from "preact";
import { ConnectionBanner } from "./connection_banner.tsx";
import { useStore } from "./context.ts";
import { ConversationPane } from "./conversation_pane.tsx";
import { Notice } from "./notice.tsx";
import { Sidebar } from "./sidebar.tsx";
import { SignIn } from "./sign_in.tsx";

/** The whole page. */
export function App(): JSX.Element {
  const store = useStore();
  return (
    <>
      <Screen />
      <div class="visually-hidden" role="status" aria-live="polite">
        {store.announcement.value}
      </div>
    </>
  );
}

function Screen(): JSX.Element {
  const { connection, session, ...store } = useStore();
  const { state, reason } = connection.value;
  if (state === "refused") return <Refused reason={reason} />;
  if (session.status.value === "starting") return <Starting />;
  if (session.status.value !== "signedin") return <SignIn />;
  const cid = store.active.value;
  return (
    <div class={cid ? "chat has-conversation" : "chat"}>
      <ConnectionBanner />
      <Sidebar />
      <main class="pane">{cid ? <ConversationPane cid={cid} /> : <NothingOpen />}</main>
    </div>
  );
}

function Starting(): JSX.Element {
  const store = useStore();
  const waiting = store.connection.value.state === "reconnecting";
  return (
    <div class="centered">
      {waiting ? (
        <Notice
          icon="warning"
          title="The host cannot be reached"
          text="It may not be running. This page keeps trying."
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
        text={`It said: ${reason}. Open the address that the host printed when it started.`}
        action={{ label: "Try again", run: () => store.reconnect() }}
      />
    </div>
  );
}

function NothingOpen(): JSX.Element {
  return (
    <div class="centered">
      <Notice icon="chat" title="No conversation open" text="Choose one, or start a new chat." />
    </div>
  );
}
