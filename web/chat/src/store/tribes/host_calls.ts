import {
  type BridgeClient,
  IMTribeType,
  type IMUserID,
  type ResultCode,
  type TribeModifyKey,
} from "@imsdkbridge/client";
import { appkey } from "../users.ts";

/** What a new tribe begins with. */
export interface NewTribe {
  name: string;
  type: IMTribeType;
  members: readonly IMUserID[];
  /** What to join by; empty: everybody may join. */
  password: string;
}

/** What pages can do with tribes that bridgehost serves itself, beside the bridge's methods. */
export class TribeHostCalls {
  readonly #client: BridgeClient;

  constructor(client: BridgeClient) {
    this.#client = client;
  }

  /** Gives the new tribe's number. */
  async create({ name, type, members, password }: NewTribe): Promise<string> {
    const answer = await this.#call("CreateTribe", {
      tribeName: name,
      tribeType: type,
      userList: members.map(({ nick }) => ({ userId: nick })),
      ...(password && { password }),
    });
    return (answer as ResultCode & { tribeid: string }).tribeid;
  }

  /** Whether a manager has to allow it first. */
  async join(tribeid: string, password: string, words: string): Promise<boolean> {
    const more = { ...(password && { password }), ...(words && { authinfo: words }) };
    const answer = await this.#call("JoinTribe", { ...tribe(tribeid), ...more });
    return (answer as ResultCode & { waiting: number }).waiting === 1;
  }

  async invite(tribeid: string, users: readonly IMUserID[], words: string): Promise<void> {
    const stUIDs = users.map(coreUser);
    await this.#call("InviteToTribe", { ...tribe(tribeid), stUIDs, authinfo: words });
  }

  async quit(tribeid: string): Promise<void> {
    await this.#call("QuitTribe", tribe(tribeid));
  }

  async transfer(tribeid: string, heir: IMUserID): Promise<void> {
    await this.#call("TransferTribe", { ...tribe(tribeid), stUID: coreUser(heir) });
  }

  async enable(tribeid: string): Promise<void> {
    await this.#call("EnableTribe", tribe(tribeid));
  }

  async set(tribeid: string, key: TribeModifyKey, value: string): Promise<void> {
    await this.#call("SetTribe", { ...tribe(tribeid), key, value });
  }

  async setAttention(tribeid: string, member: IMUserID, on: boolean): Promise<void> {
    const request = { ...tribe(tribeid), stUID: coreUser(member), on: Number(on) };
    await this.#call("SetAttention", request);
  }

  #call(name: string, request: object): Promise<ResultCode> {
    return this.#client.invoke("bridgehost.tribes", name, request);
  }
}

function tribe(tribeid: string) {
  return { stTribeID: { llTribeID: tribeid } };
}

function coreUser({ nick }: IMUserID) {
  return { strAppKey: appkey, strUserID: nick };
}
