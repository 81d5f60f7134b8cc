import type { JSX } from "preact";
import { useEffect, useState } from "preact/hooks";
import type { OpenTribe } from "../../store/tribes/open_tribe.ts";
import type { NumberSetting } from "../../store/tribes/tribe_settings.ts";
import { textOf } from "../../text/reasons.ts";
import { joinWords, remindWords } from "../../text/tribes.ts";
import { TextField } from "./about_tribe.tsx";

const joinByPassword = 1;

/** What is set of the account in the tribe, and of the tribe. */
export function TribeSettingsView({ tribe }: { tribe: OpenTribe }): JSX.Element {
  const { facts, classes } = tribe.settings;
  const { nickname, remind, auth, history, visitors, atAll, visitorCount, info } = facts.value;
  const choice = (
    setting: NumberSetting,
    label: string,
    value: number | undefined,
    words: readonly string[],
    may: boolean,
  ) => <Choice {...{ tribe, setting, label, value, words, may }} />;
  return (
    <div class="tribe-page">
      <h3 class="tribe-head">For you</h3>
      <TextField
        tribe={tribe}
        setting="nickname"
        label="My name in this tribe"
        text={nickname}
        most={64}
        may={!tribe.closed.value}
      />
      {choice("remind", "Messages that count", remind, remindWords, true)}
      <h3 class="tribe-head">For everybody</h3>
      {!tribe.isMultiChat && (
        <>
          {choice("auth", "Who may join", auth, joinWords, tribe.mayManage)}
          {tribe.isManager && auth === joinByPassword && <JoinPassword tribe={tribe} />}
        </>
      )}
      {choice("history", "New members see older messages", history, ["No", "Yes"], tribe.mayManage)}
      {choice(
        "atAll",
        "Who may mention all at once",
        atAll,
        ["Managers", "Everybody"],
        tribe.mayManage,
      )}
      {!tribe.isMultiChat &&
        choice("visitors", "Strangers may look at it", visitors, ["No", "Yes"], tribe.mayManage)}
      {info && classes.value.length > 0 && (
        <Choice
          tribe={tribe}
          setting="class"
          label="Class"
          value={info.classtype}
          words={classes.value.map(({ name }) => name)}
          numbers={classes.value.map(({ index }) => index)}
          may={tribe.mayManage}
        />
      )}
      {visitorCount !== undefined && !tribe.isMultiChat && (
        <div class="tribe-line">
          <span class="conversation-lines">
            {visitorCount === 1 ? "1 visitor" : `${visitorCount} visitors`} lately
          </span>
          {tribe.mayManage && visitorCount > 0 && (
            <button type="button" class="button" onClick={() => void tribe.clearVisitors()}>
              Clear
            </button>
          )}
        </div>
      )}
    </div>
  );
}

interface ChoiceProps {
  tribe: OpenTribe;
  setting: NumberSetting;
  label: string;
  value: number | undefined;
  words: readonly string[];
  /** The number of each word, when it is not its place. */
  numbers?: readonly number[];
  may: boolean;
}

/** One of several values. Shown is what holds, not what was asked for. */
function Choice(props: ChoiceProps): JSX.Element | null {
  const { tribe, setting, label, value, words, numbers = words.map((_, at) => at), may } = props;
  if (value === undefined) return null;
  return (
    <label class="setting">
      <b>{label}</b>
      {may ? (
        <select
          class="field"
          aria-label={label}
          disabled={tribe.busy.value}
          value={String(value)}
          onChange={(event) => {
            const wanted = Number(event.currentTarget.value);
            event.currentTarget.value = String(value);
            void tribe.setNumber(setting, wanted);
          }}
        >
          {words.map((word, at) => (
            <option key={word} value={String(numbers[at])}>
              {word}
            </option>
          ))}
        </select>
      ) : (
        <span>{words[numbers.indexOf(value)]}</span>
      )}
    </label>
  );
}

function JoinPassword({ tribe }: { tribe: OpenTribe }): JSX.Element {
  const [known, setKnown] = useState<{ text: string; problem: string } | undefined>(undefined);
  const load = async () => {
    try {
      setKnown({ text: await tribe.settings.password(), problem: "" });
    } catch (error) {
      setKnown({ text: "", problem: textOf(error) });
    }
  };
  const facts = tribe.settings.facts.value;
  useEffect(() => void load(), [facts]);
  if (known?.problem) return <p class="problem">{known.problem}</p>;
  return (
    <TextField
      tribe={tribe}
      setting="password"
      label="Password to join by"
      text={known?.text ?? ""}
      most={64}
      may={tribe.mayManage}
    />
  );
}
