import {
  type BridgeClient,
  type IMTribeMember,
  IMTribeType,
  type IMUserID,
  type TribeBlackItem,
  TribeMemberLevel,
  TribeModifyKey,
} from "@imsdkbridge/client";
import { computed, signal, type ReadonlySignal } from "@preact/signals";
import { textOf } from "../../text/reasons.ts";
import { samePeer } from "../peers.ts";
import type { TribeHostCalls } from "./host_calls.ts";
import { Members } from "./members.ts";
import type { Tribe, TribeList } from "./tribe_list.ts";
import { type NumberSetting, type TextSetting, TribeSettings } from "./tribe_settings.ts";

/** The tribe in the pane: everything shown of it, and what a person may do there. */
export class OpenTribe {
  readonly members: Members;
  readonly settings: TribeSettings;
  readonly blackList = signal<readonly TribeBlackItem[]>([]);
  readonly attention = signal<readonly IMUserID[]>([]);
  /** Why the last thing that was tried failed; empty when it did not. */
  readonly problem = signal("");
  readonly busy = signal(false);
  /** As the account's list has it; none when the account is no member any more. */
  readonly tribe: ReadonlySignal<Tribe | undefined>;
  readonly closed: ReadonlySignal<boolean>;

  readonly #client: BridgeClient;
  readonly #host: TribeHostCalls;
  readonly #list: TribeList;
  readonly #onRefusal: (error: unknown) => void;

  constructor(
    client: BridgeClient,
    host: TribeHostCalls,
    readonly tribeid: string,
    readonly me: IMUserID,
    list: TribeList,
    onRefusal: (error: unknown) => void,
  ) {
    this.#client = client;
    this.#host = host;
    this.#list = list;
    this.#onRefusal = onRefusal;
    this.members = new Members(client, tribeid);
    this.settings = new TribeSettings(client, tribeid);
    this.tribe = computed(() => list.all.value.get(tribeid));
    this.closed = computed(() => list.closed.value.has(tribeid));
  }

  get level(): TribeMemberLevel {
    return this.tribe.value?.level ?? TribeMemberLevel.kTribeNobody;
  }
  get isOwner(): boolean {
    return this.level === TribeMemberLevel.kTribeOwner;
  }
  get isManager(): boolean {
    return this.level >= TribeMemberLevel.kTribeManager;
  }
  get isMultiChat(): boolean {
    return this.tribe.value?.type === IMTribeType.kMultiChat;
  }
  /** Every member of a multi-chat may; in a tribe managers only. */
  get mayRename(): boolean {
    return !this.closed.value && (this.isManager || this.isMultiChat);
  }
  /** What is for managers while the tribe is open. */
  get mayManage(): boolean {
    return !this.closed.value && this.isManager;
  }
  /** Whether the account stands above a member, and may thus rename or remove it. */
  isAbove(member: IMTribeMember): boolean {
    return this.mayManage && member.level < this.level && !samePeer(member, this.me);
  }

  async load(): Promise<void> {
    await Promise.all([
      this.members.load(),
      this.settings.load(),
      this.loadBlackList(),
      this.loadAttention(),
    ]);
  }

  async loadBlackList(): Promise<void> {
    if (!this.isManager || this.isMultiChat) return void (this.blackList.value = []);
    const answer = await this.#client.tribemgr
      .GetTribeBlackList({ tribeid: this.tribeid })
      .catch(() => undefined);
    if (answer) this.blackList.value = answer.list;
  }

  async loadAttention(): Promise<void> {
    const answer = await this.#client.tribemgr
      .GetAttentionMembers({ tribeid: this.tribeid })
      .catch(() => undefined);
    if (answer) {
      this.attention.value = answer.memberlist.map(({ appkey, nick }) => ({ appkey, nick }));
    }
  }

  /** Each of these tells whether it was done; if not, `problem` says why. */
  setText(setting: TextSetting, text: string): Promise<boolean> {
    const request = { tribeid: this.tribeid, str: text };
    const { tribemgr } = this.#client;
    const set: Record<TextSetting, () => Promise<unknown>> = {
      name: () =>
        this.isMultiChat
          ? tribemgr.ChangeMultiName({ tribeid: this.tribeid, name: text })
          : tribemgr.SetTribeName(request),
      description: () => tribemgr.SetTribeDes(request),
      bulletin: () => this.#host.set(this.tribeid, TribeModifyKey.kTribeKeyBulletin, text),
      nickname: () => tribemgr.SetMyTribeNickname({ tribeid: this.tribeid, nickname: text }),
      password: () => tribemgr.SetJoinPwd(request),
    };
    return this.#try(async () => {
      await set[setting]();
      await this.settings.load();
    });
  }

  setNumber(setting: NumberSetting, num: number): Promise<boolean> {
    return this.#try(async () => {
      await this.settings.setNumber(setting, num);
      if (setting === "remind") this.#list.setRemind(this.tribeid, num);
    });
  }

  rename({ appkey, nick }: IMUserID, nickname: string): Promise<boolean> {
    const request = { tribeid: this.tribeid, userid: { appkey, nick }, nickname };
    return this.#try(() => this.#client.tribemgr.SetTribeMemberNicknameByAdmin(request));
  }

  setLevel({ appkey, nick }: IMUserID, level: TribeMemberLevel): Promise<boolean> {
    const request = { tribeid: this.tribeid, userid: { appkey, nick }, level };
    return this.#try(() => this.#client.tribemgr.ChangeLevel(request));
  }

  kick({ appkey, nick }: IMUserID): Promise<boolean> {
    const request = { tribeid: this.tribeid, userid: { appkey, nick } };
    return this.#try(() => this.#client.tribemgr.KickTribeMember(request));
  }

  block({ appkey, nick }: IMUserID): Promise<boolean> {
    const request = { tribeid: this.tribeid, userid: { appkey, nick } };
    return this.#try(async () => {
      await this.#client.tribemgr.AddTribeBlack(request);
      await this.loadBlackList();
    });
  }

  unblock({ appkey, nick }: IMUserID): Promise<boolean> {
    const request = { tribeid: this.tribeid, userid: { appkey, nick } };
    return this.#try(async () => {
      await this.#client.tribemgr.DelTribeBlack(request);
      await this.loadBlackList();
    });
  }

  setAttention(member: IMUserID, on: boolean): Promise<boolean> {
    return this.#try(async () => {
      await this.#host.setAttention(this.tribeid, member, on);
      await this.loadAttention();
    });
  }

  invite(users: readonly IMUserID[], words: string): Promise<boolean> {
    return this.#try(() => this.#host.invite(this.tribeid, users, words));
  }

  transfer(heir: IMUserID): Promise<boolean> {
    return this.#try(() => this.#host.transfer(this.tribeid, heir));
  }

  quit(): Promise<boolean> {
    return this.#try(() => this.#host.quit(this.tribeid));
  }

  close(): Promise<boolean> {
    return this.#try(() => this.#client.tribemgr.CloseTribe({ tribeid: this.tribeid }));
  }

  enable(): Promise<boolean> {
    return this.#try(() => this.#host.enable(this.tribeid));
  }

  clearVisitors(): Promise<boolean> {
    return this.#try(async () => {
      await this.#client.tribemgr.ClearVisitors({ tribeid: this.tribeid });
      await this.settings.load();
    });
  }

  async #try(work: () => Promise<unknown>): Promise<boolean> {
    this.problem.value = "";
    this.busy.value = true;
    try {
      await work();
      return true;
    } catch (error) {
      this.#onRefusal(error);
      this.problem.value = textOf(error);
      return false;
    } finally {
      this.busy.value = false;
    }
  }
}
