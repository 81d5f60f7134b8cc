import { IMMsgType, type BridgeClient } from "@imsdkbridge/client";
import { signal } from "@preact/signals";
import { refusalOf, typeOfFile } from "../text/attachment.ts";
import { textOf } from "../text/reasons.ts";
import { keyOf, samePeer, type Peer } from "./peers.ts";
import type { Faces } from "./faces.ts";

/** A file as the page has it; a browser's `File` is one. */
export interface LocalFile {
  readonly name: string;
  readonly size: number;
  readonly type: string;
}

/** Reads a file as Base64, telling the part from 0 to 1 that is done. */
export type ReadFile<F extends LocalFile = LocalFile> = (
  file: F,
  progress: (part: number) => void,
  signal: AbortSignal,
) => Promise<string>;

/** A file that is to be sent, or on its way. */
export interface Attachment<F extends LocalFile = LocalFile> {
  id: number;
  cid: Peer;
  file: F;
  msgtype: IMMsgType;
  state: "ready" | "reading" | "sending" | "failed";
  /** The part from 0 to 1 of what the state says. */
  progress: number;
  problem: string;
}

/** Milliseconds that a large file may take. */
const sendTimeout = 180_000;
const progressInterval = 100;

/** Files that were chosen, pasted or dropped. Each goes out as a message of its own, in order. */
export class Attachments<F extends LocalFile = LocalFile> {
  readonly all = signal<readonly Attachment<F>[]>([]);
  /** Why files were not taken, by conversation. */
  readonly refusals = signal<ReadonlyMap<string, readonly string[]>>(new Map());

  readonly #client: BridgeClient;
  readonly #faces: Faces;
  readonly #read: ReadFile<F>;
  readonly #aborts = new Map<number, AbortController>();
  #sending: Promise<void> = Promise.resolve();
  #nextId = 1;

  constructor(client: BridgeClient, faces: Faces, read: ReadFile<F>) {
    this.#client = client;
    this.#faces = faces;
    this.#read = read;
  }

  of(cid: Peer): Attachment<F>[] {
    return this.all.value.filter((entry) => samePeer(entry.cid, cid));
  }

  /** Takes files in; those that cannot be sent are refused with the reason. */
  add(cid: Peer, files: readonly F[]): void {
    const refused = files.map(refusalOf).filter(Boolean);
    this.refusals.value = new Map(this.refusals.value).set(keyOf(cid), refused);
    const added = files
      .filter((file) => !refusalOf(file))
      .map((file): Attachment<F> => {
        const fresh = { state: "ready", progress: 0, problem: "" } as const;
        return { id: this.#nextId++, cid, file, msgtype: typeOfFile(file.type), ...fresh };
      });
    this.all.value = [...this.all.value, ...added];
  }

  forgetRefusal(cid: Peer, refusal: string): void {
    const rest = this.refusals.value.get(keyOf(cid))?.filter((other) => other !== refusal) ?? [];
    this.refusals.value = new Map(this.refusals.value).set(keyOf(cid), rest);
  }

  /** Takes a file out again; reading it stops. What is being sent goes on. */
  remove(id: number): void {
    this.#aborts.get(id)?.abort();
    this.all.value = this.all.value.filter((entry) => entry.id !== id);
  }

  /** Forgets everything; for a change of account. */
  clear(): void {
    for (const { id } of this.all.value) this.remove(id);
    this.refusals.value = new Map();
  }

  /** Sends what is ready, and what failed before, once `text` has gone out; else it waits here. */
  send(cid: Peer, text: Promise<boolean>): Promise<void> {
    this.refusals.value = new Map(this.refusals.value).set(keyOf(cid), []);
    const waiting = this.of(cid).filter(({ state }) => state === "ready" || state === "failed");
    for (const { id } of waiting) this.#change(id, { state: "reading", progress: 0, problem: "" });
    this.#sending = this.#sending.then(async () => {
      const may = await text;
      for (const { id } of waiting) {
        if (may) await this.#sendOne(id);
        else this.#change(id, { state: "ready" });
      }
    });
    return this.#sending;
  }

  async #sendOne(id: number): Promise<void> {
    const entry = this.all.value.find((other) => other.id === id);
    if (!entry) return;
    const { cid, file, msgtype } = entry;
    const abort = new AbortController();
    this.#aborts.set(id, abort);
    const sent = this.#watchSending(id);
    try {
      const progress = (part: number) => this.#change(id, { progress: part });
      const filecontent = await this.#read(file, progress, abort.signal);
      if (abort.signal.aborted) return;
      this.#change(id, { state: "sending", progress: 0 });
      const item = { type: msgtype, jvale: "", value: "", filecontent, filepath: file.name };
      const answer = this.#faces.send(cid, [item], { timeout: sendTimeout });
      sent.start();
      await answer;
      this.remove(id);
    } catch (error) {
      this.#change(id, { state: "failed", problem: textOf(error) });
    } finally {
      sent.stop();
      this.#aborts.delete(id);
    }
  }

  /** Follows what the network has taken of the frame that was just handed over. */
  #watchSending(id: number): { start(): void; stop(): void } {
    let timer: ReturnType<typeof setInterval> | undefined;
    return {
      start: () => {
        const whole = Math.max(this.#client.unsentBytes, 1);
        timer = setInterval(() => {
          this.#change(id, { progress: 1 - Math.min(this.#client.unsentBytes / whole, 1) });
        }, progressInterval);
      },
      stop: () => clearInterval(timer),
    };
  }

  #change(id: number, change: Partial<Attachment<F>>): void {
    const changed = (entry: Attachment<F>) => (entry.id === id ? { ...entry, ...change } : entry);
    this.all.value = this.all.value.map(changed);
  }
}

/** Whether a file is shown as a picture before it is sent. */
export function isPicture({ msgtype }: Pick<Attachment, "msgtype">): boolean {
  return msgtype === IMMsgType.kMsgPicture;
}
