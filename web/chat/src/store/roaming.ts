import { type BridgeClient, IMRoaming } from "@imsdkbridge/client";
import { signal } from "@preact/signals";
import { textOf } from "../text/reasons.ts";

/** Whether the server hands out the account's history, and from when on. */
export class Roaming {
  readonly enabled = signal(false);
  /** The server gives nothing older; none when it gives all, or roaming is off. */
  readonly since = signal<Date | undefined>(undefined);
  readonly problem = signal("");

  readonly #client: BridgeClient;
  readonly #changed: () => void;

  /** `changed` is told about each change made here. */
  constructor(client: BridgeClient, changed: () => void) {
    this.#client = client;
    this.#changed = changed;
  }

  /** Learns what holds now. */
  async load(): Promise<void> {
    this.problem.value = "";
    try {
      const { roamstatus, opentime } = await this.#client.singlemsg.GetRoamStatus({});
      this.enabled.value = roamstatus === IMRoaming.kRoamingOn;
      const bounded = roamstatus === 1 && Number(opentime) > 0;
      this.since.value = bounded ? new Date(Number(opentime)) : undefined;
    } catch (error) {
      this.problem.value = `The server's history is not known: ${textOf(error)}.`;
    }
  }

  /** Switches roaming on or off; switched on, it begins with what comes from now on. */
  async setEnabled(enable: boolean): Promise<void> {
    try {
      await this.#client.singlemsg.SetRoamStatus({
        roamstatus: enable ? IMRoaming.kRoamingOn : IMRoaming.kRoamingOff,
      });
      this.#changed();
      await this.load();
    } catch (error) {
      this.problem.value = `The setting was not changed: ${textOf(error)}.`;
    }
  }
}
