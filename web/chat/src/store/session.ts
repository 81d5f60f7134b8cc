import { BridgeError, type BridgeClient, type Calls, type IMUserID } from "@imsdkbridge/client";
import { signal } from "@preact/signals";
import { textOf } from "../text/reasons.ts";
import { samePeer } from "./peers.ts";
import { appkey } from "./users.ts";

const storageKey = "session";

/** Who is signed in. The login token stays in the tab's storage, so a reload signs in by itself. */
export class Session {
  /** `starting` until the first connection has shown whether somebody is signed in. */
  readonly status = signal<"starting" | "signedout" | "signingin" | "signedin">("starting");
  readonly me = signal<IMUserID | undefined>(undefined);
  /** Why the last sign-in failed or ended; empty when there is nothing to tell. */
  readonly problem = signal("");

  readonly #client: BridgeClient;
  readonly #storage: Storage;
  readonly #entered: () => void;

  /** `entered` is called after each sign-in, those after a reconnect included. */
  constructor(client: BridgeClient, storage: Storage, entered: () => void) {
    this.#client = client;
    this.#storage = storage;
    this.#entered = entered;
    client.on("onIMLogouted", ({ userid }) => {
      if (samePeer(userid, this.me.value)) this.#leave("You were signed out.");
    });
  }

  /** Signs in again on a fresh connection. */
  async restore(direct: Calls): Promise<void> {
    const saved = this.#saved();
    try {
      if (saved) {
        const answer = await direct.login.DoLoginByToken(saved);
        this.#enter(answer.userid, answer.token || saved.token);
      } else {
        const answer = await direct.login.GetCurrentLoginID({});
        this.#enter(answer.userid, "");
      }
    } catch (error) {
      // A connection that broke off again says nothing about the token; the next one tries anew.
      if (error instanceof BridgeError && error.kind === "disconnected") return;
      this.#leave(saved ? `Please sign in again: ${textOf(error)}` : "");
    }
  }

  async signIn(nick: string, password: string): Promise<void> {
    this.status.value = "signingin";
    this.problem.value = "";
    try {
      const userid = { appkey, nick };
      const answer = await this.#client.login.DoLoginByPassWord({ userid, password });
      this.#enter(answer.userid, answer.token);
    } catch (error) {
      this.#leave(`Sign-in failed: ${textOf(error)}`);
    }
  }

  async signOut(): Promise<void> {
    try {
      await this.#client.login.DoLogout({});
      this.#leave("");
    } catch (error) {
      this.#leave(`Signing out failed: ${textOf(error)}`);
    }
  }

  #enter(userid: IMUserID, token: string): void {
    if (token) this.#storage.setItem(storageKey, JSON.stringify({ userid, token }));
    this.problem.value = "";
    if (!samePeer(this.me.value, userid)) this.me.value = userid;
    this.status.value = "signedin";
    this.#entered();
  }

  #leave(problem: string): void {
    this.#storage.removeItem(storageKey);
    this.problem.value = problem;
    this.status.value = "signedout";
    this.me.value = undefined;
  }

  #saved(): { userid: IMUserID; token: string } | undefined {
    const text = this.#storage.getItem(storageKey);
    return text ? (JSON.parse(text) as { userid: IMUserID; token: string }) : undefined;
  }
}
