import type {
  BridgeClient,
  IMContact,
  IMContactGroup,
  IMListedContact,
  IMUserID,
  ResultCode,
} from "@imsdkbridge/client";

/** What pages can do with contacts that bridgehost serves itself, beside the bridge's methods. */
export class ContactHostCalls {
  readonly #client: BridgeClient;

  constructor(client: BridgeClient) {
    this.#client = client;
  }

  async list(): Promise<{ groups: IMContactGroup[]; contacts: IMListedContact[] }> {
    return (await this.#call("GetContactList", {})) as ResultCode & {
      groups: IMContactGroup[];
      contacts: IMListedContact[];
    };
  }

  /** Users with a text in nick or name. */
  async search(key: string): Promise<IMContact[]> {
    const answer = await this.#call("SearchUsers", { key });
    return (answer as ResultCode & { contacts: IMContact[] }).contacts;
  }

  async ask(userid: IMUserID, groupid: string, authinfo: string): Promise<void> {
    await this.#call("AskContact", { userid, groupid, authinfo });
  }

  async remove(userid: IMUserID): Promise<void> {
    await this.#call("RemoveContact", { userid });
  }

  async move(userid: IMUserID, groupid: string): Promise<void> {
    await this.#call("MoveContact", { userid, groupid });
  }

  async mark(userid: IMUserID, on: boolean): Promise<void> {
    await this.#call("SetAsterisk", { userid, on: on ? 1 : 0 });
  }

  /** Makes a group; gives its identifier. */
  async addGroup(name: string): Promise<string> {
    const answer = await this.#call("SetGroup", { name });
    return (answer as ResultCode & { groupid: string }).groupid;
  }

  async setBlack(userid: IMUserID, on: boolean): Promise<void> {
    await this.#call("SetBlack", { userid, on: on ? 1 : 0 });
  }

  #call(name: string, request: object): Promise<unknown> {
    return this.#client.invoke("bridgehost.contacts", name, request);
  }
}
