import type { JSX } from "preact";
import { useEffect } from "preact/hooks";
import { fullTime } from "../text/time.ts";
import { useStore } from "./context.ts";
import { Dialog } from "./dialog.tsx";

/** What the host and the server do for this account. */
export function SettingsDialog({ close }: { close: () => void }): JSX.Element {
  const { translations, roaming } = useStore();
  useEffect(() => void roaming.load(), []);
  const since = roaming.since.value;
  return (
    <Dialog title="Settings" close={close}>
      <Setting
        name="Translate messages"
        words="“Translate” in a message's menu shows its translation below it."
        problem={translations.problem.value}
        on={translations.enabled.value}
        set={(on) => translations.setEnabled(on)}
      />
      <Setting
        name="History from the server"
        words={
          !roaming.enabled.value
            ? "Only messages on this device are shown. Switched on, it begins anew from then."
            : since
              ? `Messages can be fetched on any device, those since ${fullTime(since)}.`
              : "All messages can be fetched on any device."
        }
        problem={roaming.problem.value}
        on={roaming.enabled.value}
        set={(on) => roaming.setEnabled(on)}
      />
    </Dialog>
  );
}

interface SettingProps {
  name: string;
  words: string;
  problem: string;
  on: boolean;
  set: (on: boolean) => Promise<void>;
}

function Setting({ name, words, problem, on, set }: SettingProps): JSX.Element {
  return (
    <div>
      <label class="setting">
        <span>
          <b>{name}</b>
          <span class="soft">{words}</span>
        </span>
        <input
          type="checkbox"
          role="switch"
          class="switch"
          aria-label={name}
          checked={on}
          onChange={(event) => {
            // The switch shows what holds, not what was asked for.
            event.currentTarget.checked = on;
            void set(!on);
          }}
        />
      </label>
      <p class="problem" role="alert">
        {problem}
      </p>
    </div>
  );
}
