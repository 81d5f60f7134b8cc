import type { JSX } from "preact";
import { useState } from "preact/hooks";
import type { OpenTribe } from "../../store/tribes/open_tribe.ts";
import type { TextSetting } from "../../store/tribes/tribe_settings.ts";
import { Notice } from "../notice.tsx";

/** What the tribe says of itself; who may, changes it in its place. */
export function AboutTribe({ tribe }: { tribe: OpenTribe }): JSX.Element {
  const { settings } = tribe;
  const { info, bulletin } = settings.facts.value;
  if (!info) {
    return (
      <div class="centered">
        {settings.status.value === "failed" ? (
          <Notice
            icon="warning"
            title="The tribe could not be loaded"
            text={settings.problem.value}
            action={{ label: "Try again", run: () => void settings.load() }}
          />
        ) : (
          <Notice spinner title="Loading the tribe…" />
        )}
      </div>
    );
  }
  const classname = settings.classes.value.find(({ index }) => index === info.classtype)?.name;
  return (
    <div class="tribe-page">
      <TextField
        tribe={tribe}
        setting="name"
        label="Name"
        text={info.tribename}
        most={128}
        may={tribe.mayRename}
      />
      <TextField
        tribe={tribe}
        setting="bulletin"
        label="Bulletin"
        text={bulletin}
        most={4096}
        may={tribe.mayManage}
        long
      />
      <TextField
        tribe={tribe}
        setting="description"
        label="Description"
        text={info.des}
        most={1024}
        may={tribe.mayManage}
        long
      />
      <dl class="facts">
        <dt>Number</dt>
        <dd>{info.tribeid}</dd>
        <dt>Owner</dt>
        <dd dir="auto">{info.ownid.nick}</dd>
        {classname && (
          <>
            <dt>Class</dt>
            <dd>{classname}</dd>
          </>
        )}
        <dt>Level</dt>
        <dd>{info.level}</dd>
      </dl>
    </div>
  );
}

interface TextFieldProps {
  tribe: OpenTribe;
  setting: TextSetting;
  label: string;
  text: string;
  /** Letters at most. */
  most: number;
  may: boolean;
  long?: boolean;
}

/** A text that is read, and in its place edited. Escape gives the changes up. */
export function TextField(props: TextFieldProps): JSX.Element {
  const { tribe, setting, label, text, most, may, long } = props;
  const [draft, setDraft] = useState<string | undefined>(undefined);
  const save = async (event?: Event) => {
    event?.preventDefault();
    if (draft === undefined) return;
    if (draft === text || (await tribe.setText(setting, draft))) setDraft(undefined);
  };
  if (draft === undefined) {
    return (
      <section class="tribe-text">
        <h3>{label}</h3>
        {may && (
          <button
            type="button"
            class="link-button"
            aria-label={`Change the ${label.toLowerCase()}`}
            onClick={() => setDraft(text)}
          >
            Change
          </button>
        )}
        <p dir="auto" class={text ? "tribe-words" : "tribe-words soft"}>
          {text || "None"}
        </p>
      </section>
    );
  }
  const field = {
    class: "field",
    "aria-label": label,
    dir: "auto",
    maxLength: most,
    ref: takeFocus,
    value: draft,
    onInput: (event: { currentTarget: { value: string } }) => setDraft(event.currentTarget.value),
    onKeyDown: (event: KeyboardEvent) => event.key === "Escape" && setDraft(undefined),
  } as const;
  return (
    <form class="tribe-text editing" onSubmit={(event) => void save(event)}>
      <h3>{label}</h3>
      {long ? <textarea rows={5} {...field} /> : <input {...field} />}
      <footer class="dialog-actions">
        <button type="button" class="button" onClick={() => setDraft(undefined)}>
          Cancel
        </button>
        <button type="submit" class="button primary" disabled={tribe.busy.value}>
          Save
        </button>
      </footer>
    </form>
  );
}

/** What is typed next is meant for the field that has come. */
const takeFocus = (field: HTMLElement | null) => field?.focus();
