import type { BridgeClient, IMUserID } from "@imsdkbridge/client";
import { textOf } from "../../text/reasons.ts";
import { contactRequestLine } from "../../text/contacts.ts";
import type { Toasts } from "../toasts.ts";
import { ContactList } from "./contact_list.ts";
import { ContactRequests, comesFromOthers } from "./contact_requests.ts";
import { ContactHostCalls } from "./host_calls.ts";

/** The account's contacts: the list, the requests, and what can be done with them. */
export class Contacts {
  readonly list: ContactList;
  readonly requests: ContactRequests;
  readonly #host: ContactHostCalls;
  readonly #toasts: Toasts;

  constructor(client: BridgeClient, toasts: Toasts) {
    this.#host = new ContactHostCalls(client);
    this.#toasts = toasts;
    this.list = new ContactList(client, this.#host);
    this.requests = new ContactRequests(client);
    client.on("onContactVerifyMsg", (message) => {
      // The account's own decisions come back, too.
      if (comesFromOthers(message)) toasts.show(`${contactRequestLine(message)}.`);
    });
  }

  /** Loads what the account has. */
  async enter(): Promise<void> {
    await Promise.all([this.list.load(), this.requests.refresh()]);
  }

  clear(): void {
    this.list.clear();
    this.requests.clear();
  }

  search(key: string): ReturnType<ContactHostCalls["search"]> {
    return this.#host.search(key);
  }

  /** Asks somebody; gives why it could not be done, or nothing. */
  async ask(user: IMUserID, groupid: string, words: string): Promise<string> {
    try {
      await this.#host.ask(user, groupid, words);
      this.#toasts.show(`${user.nick} was asked.`);
      return "";
    } catch (error) {
      return textOf(error);
    }
  }

  mark(user: IMUserID, on: boolean): Promise<boolean> {
    return this.#try(() => this.#host.mark(user, on));
  }
  move(user: IMUserID, groupid: string): Promise<boolean> {
    return this.#try(() => this.#host.move(user, groupid));
  }
  /** Moves somebody to a group that is made for it. */
  moveToNew(user: IMUserID, name: string): Promise<boolean> {
    return this.#try(async () => this.#host.move(user, await this.#host.addGroup(name)));
  }
  remove(user: IMUserID): Promise<boolean> {
    return this.#try(() => this.#host.remove(user));
  }
  /** Takes somebody off the list, and lets nothing of theirs through any more. */
  block(user: IMUserID): Promise<boolean> {
    return this.#try(async () => {
      await this.#host.setBlack(user, true);
      await this.#host.remove(user);
    });
  }

  /** Whether it was done; a toast tells why not. */
  async #try(work: () => Promise<unknown>): Promise<boolean> {
    try {
      await work();
      return true;
    } catch (error) {
      this.#toasts.problem(`That could not be done: ${textOf(error)}.`);
      return false;
    }
  }
}
