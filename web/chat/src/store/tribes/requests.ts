import {
  type BridgeClient,
  type IMUserID,
  type TribeVerifyMsg,
  TribeVerifyType,
} from "@imsdkbridge/client";
import { computed, signal } from "@preact/signals";
import { textOf } from "../../text/reasons.ts";
import { samePeer } from "../peers.ts";
import { Joined } from "./joined.ts";

const pageSize = 30;

/** What can be decided about a request. */
export type Decision = "allow" | "refuse" | "block";

/** Requests to join, and invitations: those that wait for this account, and what became of others. */
export class Requests {
  readonly status = signal<"loading" | "ready" | "failed">("loading");
  readonly problem = signal("");
  /** Newest first. */
  readonly all = signal<readonly TribeVerifyMsg[]>([]);
  readonly hasMore = signal(false);
  readonly waiting = computed(() => this.all.value.filter(isOpen).length);

  readonly #client: BridgeClient;
  readonly #refresh = new Joined(() => this.#load());
  #generation = 0;

  constructor(client: BridgeClient) {
    this.#client = client;
  }

  /** Loads the newest ones, or as many as were shown. */
  refresh(): Promise<void> {
    return this.#refresh.run();
  }

  /** Loads a page of older ones. */
  async more(): Promise<void> {
    const oldest = this.all.value.at(-1);
    if (!oldest) return;
    const generation = this.#generation;
    try {
      const page = await this.#page(pageSize, oldest.msgid);
      if (generation !== this.#generation) return;
      const known = new Set(this.all.value.map(({ msgid }) => msgid));
      this.all.value = [...this.all.value, ...page.filter(({ msgid }) => !known.has(msgid))];
    } catch (error) {
      this.problem.value = textOf(error);
    }
  }

  /** Decides; gives why it could not be done, or nothing. */
  async decide(request: TribeVerifyMsg, decision: Decision, words: string): Promise<string> {
    const { fromid, tribeid, msgid, type } = request;
    const action = { fromid, tribeid, msgid, authinfo: words };
    const { tribemgr } = this.#client;
    const invitation = type === TribeVerifyType.kVerifyInvited;
    try {
      if (decision === "block") await tribemgr.AddToTribeBlack(action);
      else if (decision === "allow" && invitation) await tribemgr.AllowInviteJoinTribe(action);
      else if (decision === "allow") await tribemgr.AllowJoinTribe(action);
      else if (invitation) await tribemgr.RefuseInviteJoinTribe(action);
      else await tribemgr.RefuseJoinTribe(action);
      return "";
    } catch (error) {
      return textOf(error);
    } finally {
      // Somebody else may have been faster: then this shows who.
      await this.refresh();
    }
  }

  /** Takes one off the account's own list; gives why it could not be done, or nothing. */
  async remove({ fromid, tribeid, msgid }: TribeVerifyMsg): Promise<string> {
    try {
      await this.#client.tribemgr.DeleteTribeVerifyMsgs({ fromid, tribeid, msgid });
      this.all.value = this.all.value.filter((request) => request.msgid !== msgid);
      return "";
    } catch (error) {
      return textOf(error);
    }
  }

  /** Somebody became a member: another manager may have decided what waits here. */
  settled(tribeid: string, user: IMUserID): void {
    const waits = (request: TribeVerifyMsg) =>
      isOpen(request) && request.tribeid === tribeid && samePeer(request.fromid, user);
    if (this.all.value.some(waits)) void this.refresh();
  }

  clear(): void {
    this.#generation++;
    this.all.value = [];
    this.status.value = "loading";
  }

  async #load(): Promise<void> {
    const generation = this.#generation;
    try {
      const newest = await this.#page(Math.max(pageSize, this.all.value.length), "");
      if (generation !== this.#generation) return;
      this.all.value = newest;
      this.problem.value = "";
      this.status.value = "ready";
    } catch (error) {
      if (generation !== this.#generation) return;
      this.problem.value = textOf(error);
      if (this.status.value === "loading") this.status.value = "failed";
    }
  }

  /** One page, newest first. */
  async #page(count: number, before: string): Promise<TribeVerifyMsg[]> {
    const request = { count, gohistory: 1, ...(before && { msgid: before }) };
    const { msgs } = await this.#client.tribemgr.GetTribeVerifyMsgs(request);
    this.hasMore.value = msgs.length >= count;
    return [...msgs].reverse();
  }
}

/** Whether it waits for a decision of this account. */
export function isOpen({ type, managerid }: TribeVerifyMsg): boolean {
  const asks = type === TribeVerifyType.kVerifyJoinAsked || type === TribeVerifyType.kVerifyInvited;
  return asks && managerid.nick === "";
}
