import {
  type BridgeClient,
  type IMContactAction,
  type IMContactVerifyMsg,
  IMContactVerifyType,
} from "@imsdkbridge/client";
import { computed, signal } from "@preact/signals";
import { textOf } from "../../text/reasons.ts";
import { Joined } from "../tribes/joined.ts";

const pageSize = 30;

/** What can be decided about a request. */
export type ContactDecision = "agree" | "add" | "refuse" | "ignore" | "report" | "block";

/** Requests to become a contact, and what became of those that the account sent. */
export class ContactRequests {
  readonly status = signal<"loading" | "ready" | "failed">("loading");
  readonly problem = signal("");
  /** Newest first. */
  readonly all = signal<readonly IMContactVerifyMsg[]>([]);
  readonly hasMore = signal(false);
  readonly waiting = computed(
    () => this.all.value.filter(({ type }) => type === IMContactVerifyType.kContactAsked).length,
  );

  readonly #client: BridgeClient;
  readonly #refresh = new Joined(() => this.#load());
  #generation = 0;

  constructor(client: BridgeClient) {
    this.#client = client;
    client.on("onContactVerifyMsg", () => void this.refresh());
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
      if (generation === this.#generation) this.all.value = [...this.all.value, ...page];
    } catch (error) {
      this.problem.value = textOf(error);
    }
  }

  /** Decides; gives why it could not be done, or nothing. */
  async decide(
    request: IMContactVerifyMsg,
    decision: ContactDecision,
    words: string,
  ): Promise<string> {
    const { contact } = this.#client;
    const action = { ...named(request), authinfo: words };
    const ways: Record<ContactDecision, () => Promise<unknown>> = {
      agree: () => contact.AgreeAddContact(action),
      add: () => contact.AgreeAndAddContact(action),
      refuse: () => contact.RefuseAddContact(action),
      ignore: () => contact.IgnoreAddContact(action),
      report: () => contact.ReportAddContact(action),
      block: () => contact.AddToBlack(action),
    };
    try {
      await ways[decision]();
      return "";
    } catch (error) {
      return textOf(error);
    } finally {
      // Another device may have been faster.
      await this.refresh();
    }
  }

  /** Takes one off the account's own list; gives why it could not be done, or nothing. */
  async remove(request: IMContactVerifyMsg): Promise<string> {
    try {
      await this.#client.contact.DeleteContactVerifyMsgs([named(request)]);
      this.all.value = this.all.value.filter(({ msgid }) => msgid !== request.msgid);
      return "";
    } catch (error) {
      return textOf(error);
    }
  }

  clear(): void {
    this.#generation++;
    this.all.value = [];
    this.status.value = "loading";
  }

  async #load(): Promise<void> {
    const generation = this.#generation;
    try {
      const newest = await this.#page(Math.max(pageSize, this.all.value.length), "0");
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
  async #page(count: number, msgid: string): Promise<IMContactVerifyMsg[]> {
    const request = { count, msgid, gohistory: 1, ignoreboundary: 1 };
    const { result } = await this.#client.contact.GetContactVerifyMsgs(request);
    this.hasMore.value = result.length >= count;
    return [...result].reverse();
  }
}

function named({ fromid, gidinpeergroup, msgid }: IMContactVerifyMsg): IMContactAction {
  const { appkey, nick } = fromid;
  return { fromid: { appkey, nick }, gidinpeergroup, msgid };
}

/** Whether the account may still decide on it. */
export function isUndecided({ type }: IMContactVerifyMsg): boolean {
  const { kContactAsked, kContactIgnored, kContactReported } = IMContactVerifyType;
  return type === kContactAsked || type === kContactIgnored || type === kContactReported;
}

/** Whether it tells something new: a request, or the answer to one of the account's. */
export function comesFromOthers({ type }: IMContactVerifyMsg): boolean {
  const { kContactAsked, kContactAnsweredYes } = IMContactVerifyType;
  return type === kContactAsked || type >= kContactAnsweredYes;
}
