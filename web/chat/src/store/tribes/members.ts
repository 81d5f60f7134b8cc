import {
  type BridgeClient,
  type IMTribeMember,
  type IMUserID,
  TribeMemberBasicStatus,
} from "@imsdkbridge/client";
import { computed, signal } from "@preact/signals";
import { textOf } from "../../text/reasons.ts";
import { keyOf } from "../peers.ts";

/** Milliseconds in which changes of single members are gathered before the list is made anew. */
const gathering = 150;

/** The members of one tribe: who they are, who is online, and which of them a person looks for. */
export class Members {
  readonly status = signal<"loading" | "ready" | "failed">("loading");
  readonly problem = signal("");
  readonly total = signal(0);
  readonly online = signal(0);
  readonly query = signal("");
  readonly #all = signal<ReadonlyMap<string, IMTribeMember>>(new Map());

  /** Those online first, then by level and name. */
  readonly #sorted = computed(() => sorted(this.#all.value.values()));
  /** Those whose names fit the query. */
  readonly shown = computed(() => {
    const query = this.query.value.trim().toLowerCase();
    const all = this.#sorted.value;
    return query ? all.filter(({ names }) => names.includes(query)) : all;
  });

  readonly #client: BridgeClient;
  readonly #tribeid: string;
  #changes = new Map<string, (old: IMTribeMember | undefined) => IMTribeMember | undefined>();
  #timer: ReturnType<typeof setTimeout> | undefined;

  constructor(client: BridgeClient, tribeid: string) {
    this.#client = client;
    this.#tribeid = tribeid;
  }

  /** Loads all of them; from then on the host tells who comes online. */
  async load(): Promise<void> {
    if (this.status.value === "failed") this.status.value = "loading";
    try {
      const roster = await this.#client.tribemgr.GetTribeMemberList(
        { tribeid: this.#tribeid },
        { timeout: 60_000 },
      );
      this.#changes.clear();
      this.#all.value = new Map(roster.memberlist.map((member) => [keyOf(member), member]));
      this.total.value = roster.total;
      this.online.value = roster.online;
      this.status.value = "ready";
    } catch (error) {
      this.problem.value = textOf(error);
      if (this.status.value === "loading") this.status.value = "failed";
    }
  }

  /** Whom a user is here; not for those who are no members. */
  find(user: IMUserID): IMTribeMember | undefined {
    return this.#all.value.get(keyOf(user));
  }

  joined(member: IMTribeMember): void {
    this.#change(member, () => member);
  }

  left(user: IMUserID): void {
    this.#change(user, () => undefined);
  }

  /** Carries a change of a member over, if it is one. */
  patch(user: IMUserID, change: Partial<IMTribeMember>): void {
    this.#change(user, (old) => old && { ...old, ...change });
  }

  count(total: number, online: number): void {
    this.total.value = total;
    this.online.value = online;
  }

  /** Ends what is pending; for a tribe that is not shown any more. */
  stop(): void {
    clearTimeout(this.#timer);
  }

  #change(
    user: IMUserID,
    change: (old: IMTribeMember | undefined) => IMTribeMember | undefined,
  ): void {
    const key = keyOf(user);
    const before = this.#changes.get(key);
    this.#changes.set(key, before ? (old) => change(before(old)) : change);
    this.#timer ??= setTimeout(() => this.#apply(), gathering);
  }

  #apply(): void {
    this.#timer = undefined;
    const all = new Map(this.#all.value);
    for (const [key, change] of this.#changes) {
      const member = change(all.get(key));
      if (member) all.set(key, member);
      else all.delete(key);
    }
    this.#changes.clear();
    this.#all.value = all;
  }
}

/** A member with the text that searches look into. */
export interface ListedMember {
  member: IMTribeMember;
  names: string;
}

function sorted(members: Iterable<IMTribeMember>): ListedMember[] {
  const listed = Array.from(members, (member) => ({
    member,
    names: `${member.display}\n${member.nick}`.toLowerCase(),
  }));
  const rank = ({ status, level }: IMTribeMember) =>
    Number(status === TribeMemberBasicStatus.kMemberOnline) * 10 + level;
  return listed.sort(
    (a, b) =>
      rank(b.member) - rank(a.member) || (a.names < b.names ? -1 : Number(a.names > b.names)),
  );
}
