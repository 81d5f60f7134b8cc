import { chromium, type Browser, type Locator, type Page } from "playwright-core";
import type { Connection, Frame } from "./frames.ts";
import { record } from "./record.ts";

/** Starts the browser. */
export function launch(): Promise<Browser> {
  return chromium.launch({
    executablePath: process.env["CHROMIUM"] ?? "/usr/bin/chromium",
    args: [
      "--no-sandbox",
      "--disable-gpu",
      "--disable-quic",
      "--no-first-run",
      "--disable-background-networking",
      "--disable-component-update",
      "--disable-sync",
    ],
  });
}

// A test may send what is no frame at all.
function readFrame(text: string): Frame {
  try {
    const frame = JSON.parse(text) as Frame | null;
    return frame && typeof frame === "object" ? frame : { kind: "unreadable" };
  } catch {
    return { kind: "unreadable" };
  }
}

/** One browser window with the chat, and all that crosses its script channel. */
export class ChatPage {
  readonly connections: Connection[] = [];
  /** Connections from now on are for sending what is wrong: what they send is not checked. */
  wild = false;
  /** Errors that the page did not catch, and dialogs it opened; a sound page has none. */
  readonly troubles: string[] = [];

  private constructor(readonly page: Page) {
    page.on("pageerror", (error) => this.troubles.push(error.message));
    page.on("dialog", (dialog) => {
      this.troubles.push(`dialog: ${dialog.message()}`);
      void dialog.dismiss();
    });
    page.on("websocket", (socket) => {
      const connection: Connection = { sent: [], received: [], wild: this.wild };
      this.connections.push(connection);
      record(connection);
      const parse = ({ payload }: { payload: string | Buffer }) => readFrame(String(payload));
      socket.on("framesent", (frame) => connection.sent.push(parse(frame)));
      socket.on("framereceived", (frame) => connection.received.push(parse(frame)));
    });
  }

  /** Opens a window of its own: it shares no storage with the others. */
  static async open(browser: Browser, url: string): Promise<ChatPage> {
    const chat = new ChatPage(await (await browser.newContext()).newPage());
    await chat.page.goto(url);
    return chat;
  }

  /** Opens a window and signs in. */
  static async signedIn(browser: Browser, url: string, nick: string): Promise<ChatPage> {
    const chat = await ChatPage.open(browser, url);
    await chat.signIn(nick);
    return chat;
  }

  /** Opens another tab beside this one, and signs in there. */
  async tab(url: string, nick: string): Promise<ChatPage> {
    const chat = new ChatPage(await this.page.context().newPage());
    await chat.page.goto(url);
    await chat.signIn(nick);
    return chat;
  }

  async signIn(nick: string): Promise<void> {
    await this.page.getByRole("button", { name: nick }).click();
    await this.page.getByRole("heading", { name: nick }).waitFor();
  }

  close(): Promise<void> {
    return this.page.context().close();
  }

  /** A row of the conversation list. */
  row(nick: string): Locator {
    return this.page.locator(`.conversation[data-nick="${nick}"]`);
  }

  /** The unread badge of a conversation. */
  badge(nick: string): Locator {
    return this.row(nick).locator(".badge");
  }

  composer(nick: string): Locator {
    return this.page.getByLabel(`Message to ${nick}`);
  }

  /** The shown message with this identifier. */
  message(msgid: string): Locator {
    return this.page.locator(`.message[data-msgid="${msgid}"]`);
  }

  /**
   * Every message of the shown conversation, oldest first. Only those in sight exist as elements, so
   * the list is scrolled from its beginning to its end.
   */
  async allMessages(): Promise<{ msgid: string; mine: boolean; text: string }[]> {
    const list = this.page.locator(".messages");
    await eventually(async () => {
      await list.evaluate((element) => (element.scrollTop = 0));
      return (await this.page.locator(".beginning-mark").count()) > 0;
    }, "the beginning of the conversation");
    return list.evaluate(async (element) => {
      const frame = () => new Promise((resolve) => requestAnimationFrame(resolve));
      const found = new Map<string, { msgid: string; mine: boolean; text: string }>();
      element.scrollTop = 0;
      for (;;) {
        await frame();
        await frame();
        for (const one of element.querySelectorAll<HTMLElement>("[data-msgid]")) {
          const msgid = one.dataset["msgid"]!;
          const text = one.querySelector(".text, .note")?.textContent ?? "";
          found.set(msgid, { msgid, mine: one.classList.contains("mine"), text });
        }
        if (element.scrollTop + element.clientHeight >= element.scrollHeight - 2) break;
        element.scrollTop += element.clientHeight / 2;
      }
      return [...found.values()];
    });
  }

  /** Chooses an entry of the menu of the shown message with this text. */
  async choose(text: string | RegExp, action: string): Promise<void> {
    const message = this.page.locator(".message", { hasText: text }).last();
    await message.locator(".bubble").click({ button: "right" });
    await this.page.getByRole("menuitem", { name: action }).click();
  }

  /** Shows the conversation with `nick`, starting it if need be. */
  async openConversation(nick: string): Promise<void> {
    await this.page.getByLabel("Start a chat with").fill(nick);
    await this.page.keyboard.press("Enter");
    await this.composer(nick).waitFor();
  }

  /** Writes and sends a text. */
  async send(nick: string, text: string): Promise<void> {
    await this.composer(nick).fill(text);
    await this.composer(nick).press("Enter");
  }

  /** Sends "entry 0", "entry 1" and so on from an account, on a connection beside the chat's. */
  async sendEntries(from: string, to: string, count: number): Promise<void> {
    await this.page.evaluate(
      async ({ from, to, count }) => {
        const { connect } = await import(`${location.origin}/client/index.js`);
        const user = (nick: string) => ({ appkey: "cnbazaro", nick });
        const client = connect();
        await client.login.DoLoginByPassWord({ userid: user(from), password: "demo" });
        for (let index = 0; index < count; index++) {
          const item = { type: 0, value: `entry ${index}` };
          await client.singlemsg.SendNormalChatMsg({ cid: user(to), msgbody: [item] });
        }
        client.close();
      },
      { from, to, count },
    );
  }

  /** Payloads of a notification over all connections, oldest first. */
  notified<T>(event: string): T[] {
    const frames = this.connections.flatMap(({ received }) => received);
    return frames
      .filter((frame) => frame.kind === "notify" && frame.event === event)
      .map((frame) => JSON.parse(frame.payload!) as T);
  }

  /** Requests of a business method over all connections, oldest first. */
  requests<T>(name: string): T[] {
    const frames = this.connections.flatMap(({ sent }) => sent);
    return frames
      .filter((frame) => frame.args?.[1] === name)
      .map((frame) => JSON.parse(frame.args![2]!) as T);
  }

  /** Hides the window from the person, or brings it back, as minimising it does. */
  async setVisible(visible: boolean): Promise<void> {
    await this.page.evaluate((shown) => {
      const define = (name: string, value: unknown) =>
        Object.defineProperty(document, name, { configurable: true, value });
      define("visibilityState", shown ? "visible" : "hidden");
      define("hasFocus", () => shown);
      document.dispatchEvent(new Event("visibilitychange"));
    }, visible);
  }
}

/** Waits until `value` gives something. */
export async function eventually<T>(
  value: () => T | undefined | false | Promise<T | undefined | false>,
  what: string,
  milliseconds = 10_000,
): Promise<T> {
  const end = Date.now() + milliseconds;
  for (;;) {
    const result = await value();
    if (result !== undefined && result !== false) return result;
    if (Date.now() > end) throw new Error(`not within ${milliseconds} ms: ${what}`);
    await new Promise((resolve) => setTimeout(resolve, 25));
  }
}
