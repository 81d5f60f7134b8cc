import {
  type BridgeClient,
  IMContactStatus,
  type IMContactGroup,
  type IMListedContact,
  type IMUserID,
} from "@imsdkbridge/client";
import { batch, computed, signal } from "@preact/signals";
import { textOf } from "../../text/reasons.ts";
import { keyOf } from "../peers.ts";
import { Joined } from "../tribes/joined.ts";
import type { ContactHostCalls } from "./host_calls.ts";

/** One line of the list: the head of a group, or a contact. */
export type ContactRow =
  | { kind: "group"; groupid: string; name: string; count: number; online: number }
  | { kind: "contact"; listed: IMListedContact };

/** The identifier of those without a group, and what they stand under. */
export const noGroup = "0";
const others = "Contacts";

/** The account's contacts by group, as they come, go and change. */
export class ContactList {
  readonly status = signal<"loading" | "ready" | "failed">("loading");
  readonly problem = signal("");
  readonly groups = signal<readonly IMContactGroup[]>([]);
  readonly all = signal<ReadonlyMap<string, IMListedContact>>(new Map());
  readonly query = signal("");
  /** Groups whose contacts are not shown. */
  readonly folded = signal<ReadonlySet<string>>(new Set());

  readonly #host: ContactHostCalls;
  readonly #refresh = new Joined(() => this.#ask());
  /** Grows when the account changes, so that answers meant for the one before are dropped. */
  #generation = 0;

  constructor(client: BridgeClient, host: ContactHostCalls) {
    this.#host = host;
    client.on("onContactChanged", ({ contact, removed }) => {
      const all = new Map(this.all.value);
      if (removed) all.delete(keyOf(contact.userid));
      else all.set(keyOf(contact.userid), contact);
      this.all.value = all;
    });
    client.on("onContactStatus", ({ list }) => {
      const all = new Map(this.all.value);
      for (const contact of list) {
        const known = all.get(keyOf(contact));
        if (known) all.set(keyOf(contact), { ...known, userid: contact });
      }
      this.all.value = all;
    });
    client.on("onContactGroupsChanged", () => void this.refresh());
  }

  /** What is shown: groups by name, those who are there first, then by name. */
  readonly rows = computed<ContactRow[]>(() => {
    const query = this.query.value.trim().toLowerCase();
    const groupNames = new Map(
      this.groups.value.map((group) => [group.groupid, this.#path(group)]),
    );
    const byGroup = new Map<string, IMListedContact[]>();
    for (const listed of this.all.value.values()) {
      const { display, nick } = listed.userid;
      if (query && !`${display}\n${nick}`.toLowerCase().includes(query)) continue;
      const group = groupNames.has(listed.groupid) ? listed.groupid : noGroup;
      const members = byGroup.get(group);
      if (members) members.push(listed);
      else byGroup.set(group, [listed]);
    }
    const heads = [...groupNames].sort(([, a], [, b]) => a.localeCompare(b));
    return [...heads, [noGroup, others] as const].flatMap(([groupid, name]) => {
      const members = byGroup.get(groupid) ?? [];
      if (members.length === 0 && (query || groupid === noGroup)) return [];
      const online = members.filter(isThere).length;
      const head = { kind: "group" as const, groupid, name, count: members.length, online };
      if (!query && this.folded.value.has(groupid)) return [head];
      return [head, ...members.sort(order).map((listed) => ({ kind: "contact" as const, listed }))];
    });
  });

  async load(): Promise<void> {
    const generation = this.#generation;
    if (this.status.value === "failed") this.status.value = "loading";
    try {
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
    // When it fails, the list is as it was; the next event or connection asks again.
    if (this.status.value === "ready") await this.#refresh.run().catch(() => undefined);
  }

  has(user: IMUserID): boolean {
    return this.all.value.has(keyOf(user));
  }

  fold(groupid: string): void {
    const folded = new Set(this.folded.value);
    if (!folded.delete(groupid)) folded.add(groupid);
    this.folded.value = folded;
  }

  clear(): void {
    this.#generation++;
    batch(() => {
      this.status.value = "loading";
      this.groups.value = [];
      this.all.value = new Map();
      this.query.value = "";
      this.folded.value = new Set();
    });
  }

  async #ask(): Promise<void> {
    const generation = this.#generation;
    const { groups, contacts } = await this.#host.list();
    if (generation !== this.#generation) return;
    batch(() => {
      this.groups.value = groups;
      this.all.value = new Map(contacts.map((listed) => [keyOf(listed.userid), listed]));
    });
  }

  /** A sub-group goes by both names. */
  #path({ parentid, name }: IMContactGroup): string {
    const parent = this.groups.value.find(({ groupid }) => groupid === parentid);
    return parent ? `${parent.name} / ${name}` : name;
  }
}

/** Whether the account sees that the contact is there. */
export function isThere({ userid }: IMListedContact): boolean {
  return userid.status === IMContactStatus.kContactOnline;
}

function order(a: IMListedContact, b: IMListedContact): number {
  return (
    b.asterisk - a.asterisk ||
    Number(isThere(b)) - Number(isThere(a)) ||
    a.userid.display.localeCompare(b.userid.display)
  );
}
