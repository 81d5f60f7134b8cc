import type { IMContactVerifyMsg } from "@imsdkbridge/client";
import type { JSX } from "preact";
import { useEffect, useState } from "preact/hooks";
import { isUndecided, type ContactDecision } from "../../store/contacts/contact_requests.ts";
import { contactRequestLine } from "../../text/contacts.ts";
import { fullTime, listTime } from "../../text/time.ts";
import { Avatar } from "../avatar.tsx";
import { useStore } from "../context.ts";
import { Dialog } from "../dialog.tsx";
import { Icon } from "../icons.tsx";
import { Notice } from "../notice.tsx";

/** Requests to become a contact, and what became of them. */
export function ContactRequestsDialog({ close }: { close: () => void }): JSX.Element {
  const { requests } = useStore().contacts;
  useEffect(() => void requests.refresh(), []);
  const all = requests.all.value;
  return (
    <Dialog title="Contact requests" close={close} wide>
      {all.length === 0 ? (
        <None />
      ) : (
        <ul class="plain-list requests" aria-label="Requests">
          {all.map((request) => (
            <Request key={request.msgid} request={request} />
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
  const { requests } = useStore().contacts;
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

const decisions: readonly { decision: ContactDecision; label: string; kind: string }[] = [
  { decision: "report", label: "Report", kind: "button" },
  { decision: "ignore", label: "Put aside", kind: "button" },
  { decision: "block", label: "Refuse and block", kind: "button" },
  { decision: "refuse", label: "Refuse", kind: "button" },
  { decision: "agree", label: "Allow", kind: "button" },
  { decision: "add", label: "Allow and add", kind: "button primary" },
];

function Request({ request }: { request: IMContactVerifyMsg }): JSX.Element {
  const { requests } = useStore().contacts;
  const [words, setWords] = useState("");
  const [busy, setBusy] = useState(false);
  const [problem, setProblem] = useState("");
  const open = isUndecided(request);
  const time = new Date(Number(request.msgtime));
  const run = async (work: () => Promise<string>) => {
    setBusy(true);
    setProblem(await work());
    setBusy(false);
  };
  return (
    <li class={open ? "request open" : "request"} data-request={request.msgid}>
      <Avatar nick={request.fromname || request.fromid.nick} />
      <div class="conversation-lines">
        <span class="conversation-line">
          <b class="conversation-name" dir="auto">
            {contactRequestLine(request)}
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
        {request.fromname !== request.fromid.nick && (
          <span class="soft">{request.fromid.nick}</span>
        )}
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
            <div class="dialog-actions wrap">
              {decisions.map(({ decision, label, kind }) => (
                <button
                  key={decision}
                  type="button"
                  class={kind}
                  disabled={busy}
                  onClick={() => void run(() => requests.decide(request, decision, words.trim()))}
                >
                  {label}
                </button>
              ))}
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
