import type { BridgeClient, IMTribeClass, TribeBaseInfo } from "@imsdkbridge/client";
import { signal } from "@preact/signals";
import { textOf } from "../../text/reasons.ts";

/** What can be set of a tribe, or of the account in it, and is one number. */
export type NumberSetting = "auth" | "history" | "visitors" | "atAll" | "remind" | "class";
/** What can be set of a tribe and is a text. */
export type TextSetting = "name" | "description" | "bulletin" | "nickname" | "password";

/** What a tribe says of itself, and how it is set. What may not be read stays undefined. */
export interface TribeFacts {
  info: TribeBaseInfo | undefined;
  bulletin: string;
  nickname: string;
  remind: number | undefined;
  auth: number | undefined;
  history: number | undefined;
  visitors: number | undefined;
  atAll: number | undefined;
  visitorCount: number | undefined;
}

const nothing: TribeFacts = {
  info: undefined,
  bulletin: "",
  nickname: "",
  remind: undefined,
  auth: undefined,
  history: undefined,
  visitors: undefined,
  atAll: undefined,
  visitorCount: undefined,
};

/** The facts and settings of one tribe. */
export class TribeSettings {
  readonly status = signal<"loading" | "ready" | "failed">("loading");
  readonly problem = signal("");
  readonly facts = signal<TribeFacts>(nothing);
  readonly classes = signal<readonly IMTribeClass[]>([]);

  readonly #client: BridgeClient;
  readonly #tribeid: string;

  constructor(client: BridgeClient, tribeid: string) {
    this.#client = client;
    this.#tribeid = tribeid;
  }

  async load(): Promise<void> {
    if (this.status.value === "failed") this.status.value = "loading";
    const tribe = { tribeid: this.#tribeid };
    const { tribemgr } = this.#client;
    // A tribe that does not let somebody see one of them shows the others all the same.
    const maybe = <T>(asked: Promise<T>) => asked.catch(() => undefined);
    const number = async (asked: Promise<{ num: number }>) => (await maybe(asked))?.num;
    try {
      const info = (await tribemgr.GetTribeBaseInfo(tribe)).result;
      const [bulletin, nickname, remind, auth, history, visitors, atAll, visitorCount, classes] =
        await Promise.all([
          maybe(tribemgr.GetTribeBulletin(tribe)),
          maybe(tribemgr.GetMyTribeNickname(tribe)),
          number(tribemgr.GetMsgRemindType(tribe)),
          number(tribemgr.GetAuthType(tribe)),
          number(tribemgr.IsAllowShowChatRecordBeforeJoin(tribe)),
          number(tribemgr.IsAllowVisitor(tribe)),
          number(tribemgr.GetAtAllPermission(tribe)),
          number(tribemgr.GetVisitorCount(tribe)),
          maybe(tribemgr.GetAllClass({})),
        ]);
      this.facts.value = {
        info,
        bulletin: bulletin?.str ?? "",
        nickname: nickname?.nickname ?? "",
        ...{ remind, auth, history, visitors, atAll, visitorCount },
      };
      this.classes.value = classes?.classlist ?? [];
      this.status.value = "ready";
    } catch (error) {
      this.problem.value = textOf(error);
      if (this.status.value === "loading") this.status.value = "failed";
    }
  }

  /** The password to join by; only managers may read it. */
  async password(): Promise<string> {
    return (await this.#client.tribemgr.GetJoinPwd({ tribeid: this.#tribeid })).str;
  }

  /** Sets one of the numbers; shown is what the host then says. */
  async setNumber(setting: NumberSetting, num: number): Promise<void> {
    const request = { tribeid: this.#tribeid, num };
    const { tribemgr } = this.#client;
    await {
      auth: () => tribemgr.SetAuthType(request),
      history: () => tribemgr.SetAllowShowChatRecordBeforeJoin(request),
      visitors: () => tribemgr.SetAllowVisitor(request),
      atAll: () => tribemgr.SetAtAllPermission(request),
      remind: () => tribemgr.SetMsgRemindType(request),
      class: () => tribemgr.SetClass(request),
    }[setting]();
    await this.load();
  }
}
