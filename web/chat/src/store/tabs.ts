import { keyOf, type Peer } from "./peers.ts";

/** What one tab did that the host tells the other tabs of the account nothing of. */
export type TabNews =
  | { kind: "read"; cid: Peer }
  | { kind: "deleted"; cid: Peer; msgids: readonly string[] | "all" }
  | { kind: "settings" };

/** Carries values to the other tabs of the browser that show this chat. */
export interface TabChannel {
  post(value: unknown): void;
  onReceive(receive: (value: unknown) => void): void;
}

/** The browser's channel between the tabs of one origin. */
export function browserTabs(name: string): TabChannel {
  const channel = new BroadcastChannel(name);
  return {
    post: (value) => channel.postMessage(value),
    onReceive: (receive) => void (channel.onmessage = ({ data }) => receive(data)),
  };
}

/** Keeps the tabs of one account in step. */
export class Tabs {
  readonly #channel: TabChannel;
  #account = "";

  /** `hear` is told what another tab of the same account did. */
  constructor(channel: TabChannel, hear: (news: TabNews) => void) {
    this.#channel = channel;
    channel.onReceive((value) => {
      const { account, news } = value as { account: string; news: TabNews };
      if (this.#account && account === this.#account) hear(news);
    });
  }

  /** Speaks and listens for this account from now on; with none for nobody. */
  enter(me: Peer | undefined): void {
    this.#account = me ? keyOf(me) : "";
  }

  tell(news: TabNews): void {
    if (this.#account) this.#channel.post({ account: this.#account, news });
  }
}
