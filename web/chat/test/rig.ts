import type { IMPageRequest, IMMessage } from "@imsdkbridge/client";
import { FakeSocket, rig, until, type SentCall } from "../../client/test/fake_socket.ts";
import { ChatStore } from "../src/store/chat_store.ts";
import type { TabChannel } from "../src/store/tabs.ts";

export { until };

/** A user of the chat's application key. */
export const user = (nick: string) => ({ appkey: "cnbazaro", nick });

/** A message from `from` in the conversation with "peer". */
export function message(
  fields: Partial<IMMessage> & { id: number; from?: string; time?: number; body?: string },
): IMMessage {
  const { id, from = "peer", time = 1000 + id, body = `text ${id}`, ...more } = fields;
  return {
    msgid: String(id),
    msgtime: String(time),
    cid: user("peer"),
    fromid: user(from),
    toid: user(from === "peer" ? "me" : "peer"),
    msgtype: 0,
    msgstatus: from === "peer" ? 3 : 0,
    msgbody: body,
    svrtime: "",
    readflag: 0,
    extinfo: { others: "", fixmsgread: 0, autochatmsg: 0, syschatmsg: 0 },
    ...more,
  };
}

/** Answers by method name; what is missing fails as on a host that cannot do it. */
export type Host = Record<string, (request: never, call: SentCall) => object | undefined>;

/** What tabs of one browser share: a memory, and a way to speak to each other. */
export class SharedTabs {
  readonly memory = new Map<string, string>();
  readonly #receivers: ((value: unknown) => void)[] = [];

  channel(): TabChannel {
    let own: (value: unknown) => void = () => {};
    return {
      post: (value) => {
        const others = this.#receivers.filter((receive) => receive !== own);
        for (const receive of others) queueMicrotask(() => receive(structuredClone(value)));
      },
      onReceive: (receive) => void this.#receivers.push((own = receive)),
    };
  }
}

function storageOf(stored: Map<string, string>): Storage {
  return {
    getItem: (key: string) => stored.get(key) ?? null,
    setItem: (key: string, value: string) => void stored.set(key, value),
    removeItem: (key: string) => void stored.delete(key),
  } as Storage;
}

/** A chat on fake connections, with a host played by `host`, signed in as `me` in one tab. */
export async function chat(host: Host, shared = new SharedTabs(), me = user("me")) {
  const stored = new Map<string, string>([["session", JSON.stringify({ userid: me, token: "t" })]]);
  const focus = { shown: true, changed: () => {} };
  const login = () => ({ userid: me, token: "t2", expires: "0" });
  const answers: Host = { ...defaults, DoLoginByToken: login, ...host };
  const respond = (call: SentCall) => answers[call.name]?.(call.request as never, call);
  const { client, sockets, socket } = rig({ onConnect: (direct) => store.restore(direct) });
  const store = new ChatStore(client, {
    storage: storageOf(stored),
    memory: storageOf(shared.memory),
    tabs: shared.channel(),
    focus: {
      visible: () => focus.shown,
      activated: () => focus.shown,
      onChange: (changed) => void (focus.changed = changed),
    },
    readFile: async (file, progress) => {
      progress(0.5);
      return `content of ${file.name}`;
    },
    emotions: async () => [],
  });
  const up = async (connection: FakeSocket) => {
    connection.respond = respond;
    connection.hello();
    await until(() => client.state === "open");
  };
  await up(socket());
  return {
    client,
    store,
    socket,
    stored,
    /** Shows or hides the page. */
    show(shown: boolean) {
      focus.shown = shown;
      focus.changed();
    },
    /** Drops the connection; the host is there again once `meanwhile` is done. */
    async interrupt(meanwhile: () => void = () => {}) {
      const count = sockets.length;
      socket().close();
      await until(() => sockets.length > count);
      meanwhile();
      await up(socket());
    },
  };
}

const defaults: Host = {
  register: () => ({}),
  chatWindowState: () => ({}),
  GetUnreadCountInBulk: () => ({ unreads: [{ cid: user("peer"), count: 0 }] }),
  GetUnreadCount: () => ({ count: 0 }),
  GetNewMsg: () => ({ outofcache: 1, msgs: [] }),
  GetLocalHisMsg: () => ({ outofcache: 1, msgs: [] }),
  SendNormalChatMsg: () => ({}),
  ConvertMsgText2Emotion: (request: object) => request,
};

/** Answers GetLocalHisMsg from `messages`, oldest first, in both directions. */
export function history(messages: IMMessage[]) {
  return ({ msgid, count = 0, gohistory }: IMPageRequest) => {
    const at = msgid ? messages.findIndex((entry) => entry.msgid === msgid) : messages.length;
    const start = gohistory ? Math.max(0, at - count) : at + 1;
    const msgs = messages.slice(start, gohistory ? at : at + 1 + count);
    const last = gohistory ? start === 0 : msgs.at(-1) === messages.at(-1);
    return { outofcache: Number(last), msgs };
  };
}

/** The other side of the conversation that tests look at. */
export const peer = user("peer");
/** Messages of the peer with the identifiers [from, to). */
export const run = (from: number, to: number) =>
  Array.from({ length: to - from }, (_, index) => message({ id: from + index }));

/** A chat that shows the conversation with "peer". */
export async function shown(all: IMMessage[], host: Host = {}, shared?: SharedTabs) {
  const rig = await chat({ GetLocalHisMsg: history(all), ...host }, shared);
  rig.store.open(peer);
  const thread = rig.store.threads.of(peer);
  await until(() => thread.value.status === "ready");
  const ids = () => thread.value.messages.map(({ msgid }) => Number(msgid));
  const requests = (name: string) =>
    rig
      .socket()
      .named(name)
      .map((call) => call.request as never);
  return { ...rig, thread, ids, requests };
}
