// Accounts at their tribes, as the tests of tribes use them.
import assert from "node:assert/strict";
import type { Browser } from "playwright-core";
import { call, channelPage, invoke, type User, user } from "./channel_page.ts";
import { eventually, type ChatPage } from "./pages.ts";

export const nicks = ["harbor", "lighthouse", "mariner", "navigator"] as const;
export type Nick = (typeof nicks)[number];
type Json = Record<string, unknown>;

/** One account's view; its tribes are known once it has called `InitTribe`. */
export class TribeView {
  readonly self: User;

  private constructor(
    readonly chat: ChatPage,
    readonly nick: Nick,
  ) {
    this.self = user(nick);
  }

  /** Opens a view of each account that hears of everything. */
  static async all(browser: Browser, address: string): Promise<Record<Nick, TribeView>> {
    const views = nicks.map(async (nick) => {
      const view = new TribeView(await channelPage(browser, address, nick), nick);
      await invoke(view.chat, "workbench.im.event_register", "register_all", {});
      return [nick, view] as const;
    });
    return Object.fromEntries(await Promise.all(views)) as Record<Nick, TribeView>;
  }

  /** Calls a method of the module, which has to succeed. */
  async ask(name: string, request: Json = {}): Promise<Json> {
    return good(name, await call(this.chat, "im.tribemgr", name, request));
  }

  /** Calls what bridgehost serves itself; `stTribeID` and `stUID` in short. */
  async host(name: string, { tribe, who, ...more }: Json & { tribe?: string; who?: Nick }) {
    const request = {
      ...(who && { stUID: core(who) }),
      ...(tribe && { stTribeID: { llTribeID: tribe } }),
      ...more,
    };
    return good(name, await invoke(this.chat, "bridgehost.tribes.invoke", name, request));
  }

  /** Makes a tribe with members, and waits until the account has it. */
  async create(tribeName: string, members: readonly Nick[], tribeType = 0): Promise<string> {
    const userList = members.map((userId) => ({ userId }));
    const request = { tribeName, tribeType, subType: 0, userList };
    const tribeid = (await this.host("CreateTribe", request))["tribeid"] as string;
    assert.match(tribeid, /^[0-9]+$/);
    await this.until("GetShallowTribeList", {}, ({ tribelist }) =>
      JSON.stringify(tribelist).includes(`"${tribeid}"`),
    );
    return tribeid;
  }

  /** Asks until the answer is as wanted. */
  async until(name: string, request: Json, wanted: (answer: Json) => unknown): Promise<Json> {
    return eventually(async () => {
      const { envelope } = await call(this.chat, "im.tribemgr", name, request);
      return envelope["code"] === 0 && wanted(envelope) ? envelope : undefined;
    }, `${name} of ${this.nick}`);
  }

  /** Waits for an open verification message of this type. */
  async verification(tribeid: string, type: number): Promise<Json> {
    type Msg = Json & { tribeid: string; type: number; managerid: User };
    const open = ({ msgs }: Json) =>
      (msgs as Msg[]).findLast(
        (msg) => msg.tribeid === tribeid && msg.type === type && msg.managerid.nick === "",
      );
    const found = open(await this.until("GetTribeVerifyMsgs", { count: 50 }, open))!;
    const { fromid, msgid } = found;
    return { fromid, tribeid, msgid, authinfo: "as agreed" };
  }
}

/** A user as the messaging core writes it. */
export function core(nick: Nick) {
  return { strAppKey: "cnbazaro", strUserID: nick };
}

function good(name: string, answer: { payload: string; envelope: Json }): Json {
  assert.equal(answer.envelope["code"], 0, `${name}: ${answer.payload}`);
  return answer.envelope;
}
