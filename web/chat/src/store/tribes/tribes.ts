import {
  BridgeError,
  type BridgeClient,
  type IMTribeMember,
  type IMUserID,
  TribeMemberLevel,
  TribeModifyKey,
  type TribeActor,
} from "@imsdkbridge/client";
import { signal } from "@preact/signals";
import { textOf } from "../../text/reasons.ts";
import type { Toasts } from "../toasts.ts";
import { samePeer } from "../peers.ts";
import { type NewTribe, TribeHostCalls } from "./host_calls.ts";
import { OpenTribe } from "./open_tribe.ts";
import { Requests } from "./requests.ts";
import { TribeList } from "./tribe_list.ts";

/** Sub-codes of refusals that the page acts upon. */
const refusals = { closed: 7, wrongPassword: 9 };

/** Everything about tribes but their messages. */
export class Tribes {
  readonly list: TribeList;
  readonly requests: Requests;
  /** The tribe in the pane. */
  readonly open = signal<OpenTribe | undefined>(undefined);

  readonly #client: BridgeClient;
  readonly #host: TribeHostCalls;
  readonly #toasts: Toasts;
  readonly #shown: () => void;
  #me: IMUserID | undefined;

  /** `shown` is called when a tribe comes into the pane. */
  constructor(client: BridgeClient, toasts: Toasts, shown: () => void) {
    this.#client = client;
    this.#toasts = toasts;
    this.#shown = shown;
    this.#host = new TribeHostCalls(client);
    this.list = new TribeList(client);
    this.requests = new Requests(client);
    this.#follow();
  }

  /** An account is signed in, perhaps again. Settles when its tribes are known, or cannot be had. */
  enter(me: IMUserID): Promise<void> {
    this.#me = me;
    void this.requests.refresh();
    void this.open.value?.load();
    return this.list.load();
  }

  clear(): void {
    this.hide();
    this.list.clear();
    this.requests.clear();
  }

  show(tribeid: string): void {
    if (!this.#me || this.open.value?.tribeid === tribeid) return;
    this.hide();
    const refused = (error: unknown) => this.#refused(tribeid, error);
    const open = new OpenTribe(this.#client, this.#host, tribeid, this.#me, this.list, refused);
    this.open.value = open;
    this.#shown();
    void open.load();
  }

  hide(): void {
    this.open.value?.members.stop();
    this.open.value = undefined;
  }

  /** Makes a tribe and shows it; gives why it could not be done, or nothing. */
  async create(tribe: NewTribe): Promise<string> {
    try {
      const tribeid = await this.#host.create(tribe);
      await this.list.refresh();
      this.show(tribeid);
      return "";
    } catch (error) {
      return textOf(error);
    }
  }

  /** Joins a tribe and shows it, or leaves a request with its managers. */
  async join(
    tribeid: string,
    password: string,
    words: string,
  ): Promise<{ waiting?: boolean; problem?: string; asksPassword?: boolean }> {
    try {
      const waiting = await this.#host.join(tribeid, password, words);
      if (waiting) return { waiting };
      await this.list.refresh();
      this.show(tribeid);
      return {};
    } catch (error) {
      const asksPassword = subcodeOf(error) === refusals.wrongPassword;
      return { problem: textOf(error), asksPassword };
    }
  }

  #refused(tribeid: string, error: unknown): void {
    if (subcodeOf(error) === refusals.closed) this.list.markClosed(tribeid, true);
  }

  /** What happens in tribes changes what is shown at once. */
  #follow(): void {
    const client = this.#client;
    const refresh = () => void this.list.refresh();
    const here = (tribeid: string) =>
      this.open.value?.tribeid === tribeid ? this.open.value : undefined;

    client.on("onTribeShallowLogin", refresh);
    // The tribe's service tells of requests and of what became of them.
    client.on("onReceiveSysMsg", () => void this.requests.refresh());

    client.on("onJoinTribe", ({ actor, tribeid }) => {
      void this.list.refresh().then(() => {
        const name = this.list.all.value.get(tribeid)?.name ?? tribeid;
        if (!samePeer(actor, this.#me)) this.#toasts.show(`You are a member of ${name} now.`);
        void here(tribeid)?.load();
      });
    });
    client.on("onJoinTribeEx", ({ tribeid, recipient, info }) => {
      here(tribeid)?.members.joined(info);
      this.requests.settled(tribeid, recipient);
    });

    client.on("onTribeKickMember", ({ actor, tribeid }) => {
      const name = this.list.all.value.get(tribeid)?.name ?? `tribe ${tribeid}`;
      this.#toasts.show(`${actor.nick} removed you from ${name}.`, "problem", { lasting: true });
      refresh();
    });
    client.on("onTribeKickMemberEx", ({ tribeid, recipient }) =>
      here(tribeid)?.members.left(recipient),
    );
    client.on("onQuitTribe", ({ actor, tribeid }) => {
      here(tribeid)?.members.left(actor);
      if (!samePeer(actor, this.#me)) return;
      if (here(tribeid)) this.hide();
      refresh();
    });

    client.on("onTribeTransfer", ({ actor, tribeid, recipient }) => {
      const { kTribeManager, kTribeOwner } = TribeMemberLevel;
      this.#level(tribeid, actor, kTribeManager);
      this.#level(tribeid, recipient, kTribeOwner);
    });
    client.on("onTribeMemberChgLevel", ({ tribeid, recipient, level }) =>
      this.#level(tribeid, recipient, level),
    );
    client.on("onTribeMemberStatusChange", ({ tribeid, userid, status }) =>
      here(tribeid)?.members.patch(userid, { status }),
    );
    client.on("onTribeMemberCntChange", ({ tribeid, total, online }) =>
      here(tribeid)?.members.count(total, online),
    );
    client.on("onTribeMemberBaseInfoChange", ({ tribeid, userid, display }) =>
      here(tribeid)?.members.patch(userid, { display } satisfies Partial<IMTribeMember>),
    );

    client.on("onTribeBaseInfoChange", ({ tribeid, detail }) => {
      void here(tribeid)?.settings.load();
      if (detail.some(({ key }) => key === TribeModifyKey.kTribeKeyName)) refresh();
    });
    client.on("onTribeBulletinUpdate", ({ tribeid }) => void here(tribeid)?.settings.load());
    client.on("onClearTribeVisitor", ({ tribeid }) => void here(tribeid)?.settings.load());
    client.on("onTribeClose", ({ actor, tribeid }: TribeActor) => {
      this.list.markClosed(tribeid, true);
      const name = this.list.all.value.get(tribeid)?.name ?? tribeid;
      if (!samePeer(actor, this.#me)) this.#toasts.show(`${actor.nick} closed ${name}.`);
    });
    client.on("onEnabledTribe", ({ tribeid }) => this.list.markClosed(tribeid, false));
  }

  #level(tribeid: string, user: IMUserID, level: TribeMemberLevel): void {
    const open = this.open.value?.tribeid === tribeid ? this.open.value : undefined;
    open?.members.patch(user, { level });
    if (!samePeer(user, this.#me)) return;
    // What may be read and done depends on it.
    void this.list.refresh().then(() => open?.load());
    void this.requests.refresh();
  }
}

function subcodeOf(error: unknown): number {
  return error instanceof BridgeError ? error.subcode : 0;
}
