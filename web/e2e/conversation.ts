// One conversation of an account, of whatever kind, as the tests of its methods use it.
import { call } from "./channel_page.ts";
import { eventually, type ChatPage } from "./pages.ts";

export interface Sent {
  msgid: string;
  msgtime: string;
  msgstatus: number;
  msgbody: string;
}
/** A method and a request that it serves; `sent` is a message that was sent just before. */
export type Good = [method: string, request: (sent: Sent) => object];

export const text = [{ type: 0, value: "from every method" }];

export class Conversation {
  constructor(
    readonly chat: ChatPage,
    readonly path: "im.singlemsg" | "im.tribemsg",
    /** The keys by which requests name it, and its identifier. */
    readonly named: object,
    readonly cid: object,
  ) {}

  async ask(method: string, request: object): Promise<Record<string, unknown>> {
    return (await call(this.chat, this.path, method, request)).envelope;
  }

  async newest(): Promise<Sent | undefined> {
    const page = await this.ask("GetLocalHisMsg", { ...this.named, count: 1 });
    return (page["msgs"] as Sent[])[0];
  }

  /** Waits until the newest message is as wanted. */
  newestWith(wanted: (message: Sent) => boolean): Promise<Sent> {
    return eventually(
      async () => {
        const message = await this.newest();
        return message && wanted(message) ? message : undefined;
      },
      "the newest message",
      20_000,
    );
  }

  /** Sends a message and waits until the server has it. */
  async send(msgbody: object[] = text, more: object = {}): Promise<Sent> {
    const before = await this.newest();
    const method = this.path === "im.tribemsg" ? "SendNormalTribeMsg" : "SendNormalChatMsg";
    await this.ask(method, { ...this.named, msgbody, ...more });
    return this.newestWith(({ msgid, msgstatus }) => msgid !== before?.msgid && msgstatus === 1);
  }

  /** Good requests for the methods that all kinds have. */
  good(): Good[] {
    const { named, cid } = this;
    return [
      ["GetNewMsg", () => ({ ...named, count: 5 })],
      ["GetOfflineMsg", () => named],
      ["PeekNewMsg", () => named],
      ["PeekOfflineMsg", () => named],
      ["GetRemoteHisMsg", () => ({ ...named, count: 3, gohistory: 1 })],
      ["GetLocalHisMsg", () => ({ ...named, count: 3, gohistory: 1 })],
      ["GetUnreadCount", () => named],
      ["GetUnreadCountInBulk", () => ({})],
      ["SetMsgRead", () => named],
      ["GetReadedBoundary", () => named],
      ["ForwardChatMsg", ({ msgid }) => ({ cids: [cid], msgbody: [], msgid, msgtype: 0 })],
      ["SearchMsgByID", ({ msgid }) => ({ ...named, msgid })],
      ["SearchDBMsg", () => ({ cid, keywords: ["every"], needpage: 1, page: 1, count: 5 })],
      ["SearchDBMsg2", () => ({ keywords: ["every"] })],
      ["SearchDBMsgCid", () => ({ keywords: ["every"] })],
      ["GetMsgPicture", () => ({ ...named, count: 5 })],
      ["RoamMsg", () => ({ ...named, count: 5 })],
      ["ClearRoamedTime", () => named],
      ["SetRoamStatus", () => ({ roamstatus: 1 })],
      ["GetRoamStatus", () => ({})],
      ["ConvertMsgText2Emotion", () => ({ type: 0, value: "hi /:smile" })],
      ["SetNewMsgMaxCache", () => ({ maxmsgcount: 100 })],
      ["GetDynamicMsg", () => ({ bizType: "order", bizUuid: "u-1" })],
      ["DoChatMsgWithdraw", ({ msgid, msgtime }) => ({ ...named, msgid, msgtime, svrtime: "" })],
      ["DeleteLocalMsg", ({ msgid }) => ({ ...named, msgids: [msgid] })],
    ];
  }

  /** What `EditPic2SendMsg` answers for a picture that was sent, and for two that cannot be edited. */
  async editPictures(): Promise<unknown[]> {
    const picture = await this.send([{ type: 1, filecontent: redAndGreen }]);
    const found = await this.ask("SearchMsgByID", { ...this.named, msgid: picture.msgid });
    const body = (found["msgs"] as Sent[])[0]!.msgbody;
    const results = [];
    for (const filepath of [
      decodeURIComponent(/filepath=([^&]*)/.exec(body)![1]!),
      "files/none.png",
      "server/server.db",
    ]) {
      const request = { cids: [this.cid], filepath, fileMD5: "" };
      results.push((await this.ask("EditPic2SendMsg", request))["result"]);
    }
    return results;
  }
}

// A PNG of two by two pixels.
const redAndGreen =
  "iVBORw0KGgoAAAANSUhEUgAAAAIAAAACCAIAAAD91JpzAAAADklEQVR4nGP4z8DAAMcAG/ID/SpEOUgAAAAASUVORK5CYII=";
