import { TribeVerifyType, type TribeVerifyMsg } from "@imsdkbridge/client";
import type { JSX } from "preact";
import { useEffect, useState } from "preact/hooks";
import { isOpen, type Decision } from "../../store/tribes/requests.ts";
import { requestLine } from "../../text/tribes.ts";
import { fullTime, listTime } from "../../text/time.ts";
import { Avatar } from "../avatar.tsx";
import { useStore } from "../context.ts";
import { Dialog } from "../dialog.tsx";
import { Icon } from "../icons.tsx";
import { Notice } from "../notice.tsx";

/** Requests to join the account's tribes, and invitations, with what became of them. */
export function RequestsDialog({ close }: { close: () => void }): JSX.Element {
  const { requests } = useStore().tribes;
  useEffect(() => void requests.refresh(), []);
  const all = requests.all.value;
  return (
    <Dialog title="Requests and invitations" close={close} wide>
      {all.length === 0 ? (
        <None />
      ) : (
        <ul class="plain-list requests" aria-label="Requests">
          {all.map((request) => (
            <Request key={`${request.tribeid} ${request.msgid}`} request={request} />
          ))}
          {requests.hasMore.value && (
            <li>
              <button type="button" class="link-button" onClick={() => void requests.more()}>
                <Icon name="down" /> Show older ones
              </button>
            </li>
          )}
        </ul>
      )}
      <p class="problem" role="alert">
        {all.length > 0 && requests.problem.value}
      </p>
    </Dialog>
  );
}

function None(): JSX.Element {
  const { requests } = useStore().tribes;
  switch (requests.status.value) {
    case "loading":
      return <Notice spinner title="Loading requests…" />;
    case "failed":
      return (
        <Notice
          icon="warning"
          title="The requests could not be loaded"
          text={requests.problem.value}
          action={{ label: "Try again", run: () => void requests.refresh() }}
        />
      );
    case "ready":
      return <Notice icon="check" title="Nothing waits for you" />;
  }
}

function Request({ request }: { request: TribeVerifyMsg }): JSX.Element {
  const { requests } = useStore().tribes;
  const [words, setWords] = useState("");
  const [busy, setBusy] = useState(false);
  const [problem, setProblem] = useState("");
  const open = isOpen(request);
  const invitation = request.type === TribeVerifyType.kVerifyInvited;
  const time = new Date(request.msgtime);
  const run = async (work: () => Promise<string>) => {
    setBusy(true);
    setProblem(await work());
    setBusy(false);
  };
  const decide = (decision: Decision) =>
    void run(() => requests.decide(request, decision, words.trim()));
  const button = (decision: Decision, label: string, kind: string) => (
    <button type="button" class={kind} disabled={busy} onClick={() => decide(decision)}>
      {label}
    </button>
  );
  return (
    <li class={open ? "request open" : "request"} data-request={request.msgid}>
      <Avatar nick={request.fromid.nick} />
      <div class="conversation-lines">
        <span class="conversation-line">
          <b class="conversation-name" dir="auto">
            {requestLine(request)}
          </b>
          <time class="soft" title={fullTime(time)}>
            {listTime(time, new Date())}
          </time>
          <button
            type="button"
            class="icon-button small"
            aria-label="Take it off the list"
            title="Take it off the list"
            disabled={busy}
            onClick={() => void run(() => requests.remove(request))}
          >
            <Icon name="close" />
          </button>
        </span>
        <span class="soft" dir="auto">
          {request.tribename || "Tribe"} · No. {request.tribeid}
        </span>
        {request.authinfo && (
          <p class="dialog-quote" dir="auto">
            {request.authinfo}
          </p>
        )}
        {open && (
          <>
            <input
              class="field"
              aria-label="Words that go back"
              placeholder="Words that go back"
              dir="auto"
              maxLength={512}
              value={words}
              onInput={(event) => setWords(event.currentTarget.value)}
            />
            <div class="dialog-actions">
              {!invitation && button("block", "Refuse and block", "button")}
              {button("refuse", invitation ? "Decline" : "Refuse", "button")}
              {button("allow", invitation ? "Accept" : "Let in", "button primary")}
            </div>
          </>
        )}
        <p class="problem" role="alert">
          {problem}
        </p>
      </div>
    </li>
  );
}
