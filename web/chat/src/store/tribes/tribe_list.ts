import { type BridgeClient, IMTribeType, type TribeMemberLevel } from "@imsdkbridge/client";
import { batch, computed, signal } from "@preact/signals";
import { textOf } from "../../text/reasons.ts";
import { Joined } from "./joined.ts";

/** One of the account's tribes, in short. */
export interface Tribe {
  tribeid: string;
  name: string;
  type: IMTribeType;
  level: TribeMemberLevel;
}

/** The account's tribes. */
export class TribeList {
  readonly status = signal<"loading" | "ready" | "failed">("loading");
  readonly problem = signal("");
  readonly all = signal<ReadonlyMap<string, Tribe>>(new Map());
  /** Names of those, and of others that the account was in since it signed in, by number. */
  readonly names = signal<ReadonlyMap<string, string>>(new Map());
  /** Those that are known to be closed: the host tells of the change, and in refusals. */
  readonly closed = signal<ReadonlySet<string>>(new Set());
  readonly sorted = computed(() =>
    [...this.all.value.values()].sort((a, b) => a.name.localeCompare(b.name)),
  );

  /** Which of a tribe's messages count, by number; of those that were asked for. */
  readonly #reminds = signal<ReadonlyMap<string, number>>(new Map());
  readonly #asked = new Set<string>();

  readonly #client: BridgeClient;
  readonly #refresh = new Joined(() => this.#ask());
  /** Grows when the account changes, so that answers meant for the one before are dropped. */
  #generation = 0;

  constructor(client: BridgeClient) {
    this.#client = client;
  }

  /** Logs into the account's tribes and loads their list; what is known stays meanwhile. */
  async load(): Promise<void> {
    const generation = this.#generation;
    if (this.status.value === "failed") this.status.value = "loading";
    try {
      await this.#client.tribemgr.InitTribe({});
      await this.#refresh.run();
      if (generation === this.#generation) this.status.value = "ready";
    } catch (error) {
      if (generation !== this.#generation) return;
      this.problem.value = textOf(error);
      if (this.status.value === "loading") this.status.value = "failed";
    }
  }

  /** Brings the list up to date after something happened. */
  async refresh(): Promise<void> {
    if (this.status.value !== "ready") return;
    // When it fails, the list is as it was; the next event or connection asks again.
    await this.#refresh.run().catch(() => undefined);
  }

  /** Whether a tribe's messages come without a sound; asks the host where need be. */
  isQuiet(tribeid: string): boolean {
    if (!this.#asked.has(tribeid)) {
      this.#asked.add(tribeid);
      void this.#client.tribemgr.GetMsgRemindType({ tribeid }).then(
        ({ num }) => this.setRemind(tribeid, num),
        () => this.#asked.delete(tribeid),
      );
    }
    return (this.#reminds.value.get(tribeid) ?? 0) > 0;
  }

  setRemind(tribeid: string, remind: number): void {
    this.#asked.add(tribeid);
    this.#reminds.value = new Map(this.#reminds.value).set(tribeid, remind);
  }

  markClosed(tribeid: string, closed: boolean): void {
    if (this.closed.value.has(tribeid) === closed) return;
    const all = new Set(this.closed.value);
    if (closed) all.add(tribeid);
    else all.delete(tribeid);
    this.closed.value = all;
  }

  clear(): void {
    this.#generation++;
    this.all.value = new Map();
    this.names.value = new Map();
    this.closed.value = new Set();
    this.#asked.clear();
    this.#reminds.value = new Map();
    this.status.value = "loading";
  }

  async #ask(): Promise<void> {
    const generation = this.#generation;
    const { tribelist } = await this.#client.tribemgr.GetShallowTribeList({});
    if (generation !== this.#generation) return;
    const tribes = tribelist.map(({ mylevel, tribeid, type }) => {
      const { tribeid: id, display } = tribeid;
      return { tribeid: id, name: display, type, level: mylevel };
    });
    const names = tribes.map(({ tribeid, name }) => [tribeid, name] as const);
    batch(() => {
      this.all.value = new Map(tribes.map((tribe) => [tribe.tribeid, tribe]));
      this.names.value = new Map([...this.names.value, ...names]);
    });
  }
}
