import type {
  BodyItem,
  BridgeClient,
  CallOptions,
  ModuleFace,
  TribeAtRequest,
} from "@imsdkbridge/client";
import { isTribe, keyOf, type ChatMessage, type Peer } from "./peers.ts";

/** What the modules of all kinds of conversations offer. */
type CommonFace = ModuleFace<"im.virtualmsg"> | ModuleFace<"im.tribemsg">;
/** What the modules of conversations that can be answered offer. */
type ChatFace = ModuleFace<"im.singlemsg"> | ModuleFace<"im.tribemsg">;

/** Knows which module of the host serves a conversation. */
export class Faces {
  readonly #client: BridgeClient;
  readonly #virtual = new Set<string>();

  constructor(client: BridgeClient) {
    this.#client = client;
  }

  /** The module that has this conversation's messages; only what all kinds offer. */
  of(cid: Peer): CommonFace {
    return this.isVirtual(cid) ? this.#client.virtualmsg : this.chat(cid);
  }

  /** The module of a conversation that somebody answers in. */
  chat(cid: Peer): ChatFace {
    return isTribe(cid) ? this.#client.tribemsg : this.#client.singlemsg;
  }

  /** Sends one message; who is mentioned counts in a tribe alone. */
  send(
    cid: Peer,
    msgbody: BodyItem[],
    options?: CallOptions,
    tribeat?: TribeAtRequest,
  ): Promise<unknown> {
    const body = { autosend: 0, msgbody };
    if (!isTribe(cid)) {
      return this.#client.singlemsg.SendNormalChatMsg({ cid, ...body }, options);
    }
    const request = { tribeid: cid.tribeid, ...body, ...(tribeat && { tribeat }) };
    return this.#client.tribemsg.SendNormalTribeMsg(request, options);
  }

  /** Sends one text that goes to several conversations. */
  broadcast(cid: Peer, msgbody: BodyItem[]): Promise<unknown> {
    const { singlemsg } = this.#client;
    return isTribe(cid)
      ? this.send(cid, msgbody)
      : singlemsg.SendBroadcastMsg({ cids: [cid], msgbody });
  }

  /** Sends a stored message on. */
  forward(cid: Peer, { msgid, msgtype }: Pick<ChatMessage, "msgid" | "msgtype">): Promise<unknown> {
    const { singlemsg, tribemsg } = this.#client;
    const request = { msgbody: [], msgtype, msgid };
    return isTribe(cid)
      ? tribemsg.ForwardChatMsg({ cids: [cid], ...request })
      : singlemsg.ForwardChatMsg({ cids: [cid], ...request });
  }

  /** Whether nobody stands behind it: system and subscription messages. */
  isVirtual(cid: Peer): boolean {
    return this.#virtual.has(keyOf(cid));
  }

  addVirtual(cid: Peer): void {
    this.#virtual.add(keyOf(cid));
  }

  /** Forgets everything; for a change of account. */
  clear(): void {
    this.#virtual.clear();
  }
}
