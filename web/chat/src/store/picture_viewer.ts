import { unescaped, type IMMsgPicture } from "@imsdkbridge/client";
import { computed, signal } from "@preact/signals";
import { textOf } from "../text/reasons.ts";
import { type Peer, named } from "./peers.ts";
import type { Faces } from "./faces.ts";

/** Pictures per request. */
const pageSize = 20;

/** The place of a picture: a message, and which of its pictures. */
export type ShownPicture = Pick<IMMsgPicture, "pictureid" | "url" | "msgid" | "mgstime" | "fromid">;

interface Viewed {
  cid: Peer;
  /** Oldest first. */
  pictures: readonly ShownPicture[];
  /** Identifier of the picture in front. */
  front: string;
  older: "more" | "none";
  newer: "more" | "none";
  problem: string;
}

/** The pictures of a conversation, one in front. */
export class PictureViewer {
  readonly viewed = signal<Viewed | undefined>(undefined);
  readonly front = computed(() => this.viewed.value?.pictures[this.place]);

  readonly #faces: Faces;
  /** Requests under way, by end. */
  readonly #loading = new Map<"older" | "newer", Promise<void>>();

  constructor(faces: Faces) {
    this.#faces = faces;
  }

  /** Place of the picture in front; -1 when the viewer is closed. */
  get place(): number {
    const viewed = this.viewed.value;
    return viewed?.pictures.findIndex(({ pictureid }) => pictureid === viewed.front) ?? -1;
  }

  /** Shows a picture; those before and after it are fetched behind it. */
  async open(cid: Peer, picture: ShownPicture): Promise<void> {
    const ends = { older: "more", newer: "more", problem: "" } as const;
    this.#loading.clear();
    this.viewed.value = { cid, pictures: [picture], front: picture.pictureid, ...ends };
    await Promise.all([this.#load("older"), this.#load("newer")]);
  }

  close(): void {
    this.viewed.value = undefined;
  }

  /** Shows an older picture (-1) or a newer one (1), if there is one. */
  async step(by: 1 | -1): Promise<void> {
    const end = by < 0 ? "older" : "newer";
    if (!this.#at(by)) await this.#load(end);
    const next = this.#at(by);
    if (next) this.#change({ front: next.pictureid });
    if (!this.#at(by)) void this.#load(end);
  }

  #at(by: number): ShownPicture | undefined {
    return this.viewed.value?.pictures[this.place + by];
  }

  #load(end: "older" | "newer"): Promise<void> {
    const underWay = this.#loading.get(end);
    if (underWay) return underWay;
    const loading = this.#loadPage(end).finally(() => {
      if (this.#loading.get(end) === loading) this.#loading.delete(end);
    });
    this.#loading.set(end, loading);
    return loading;
  }

  async #loadPage(end: "older" | "newer"): Promise<void> {
    const viewed = this.viewed.value;
    const from = end === "older" ? viewed?.pictures[0] : viewed?.pictures.at(-1);
    if (!viewed || !from || viewed[end] === "none") return;
    const position = { msgtime: from.mgstime, pictureid: from.pictureid };
    const request = { ...named(viewed.cid), ...position, ignoreboundary: 1, count: pageSize };
    try {
      const gohistory = end === "older" ? 1 : 0;
      const answer = await this.#faces.chat(viewed.cid).GetMsgPicture({ ...request, gohistory });
      // Their paths stand as in the tokens of the messages.
      const pictures = answer.pictures.map((one) => ({ ...one, url: unescaped(one.url) }));
      const now = this.viewed.value;
      if (!now?.pictures.includes(from)) return;
      const joined =
        end === "older" ? [...pictures, ...now.pictures] : [...now.pictures, ...pictures];
      this.#change({ pictures: joined, [end]: pictures.length < pageSize ? "none" : "more" });
    } catch (error) {
      const problem = `The other pictures could not be loaded: ${textOf(error)}.`;
      if (this.viewed.value?.pictures.includes(from)) this.#change({ problem });
    }
  }

  #change(change: Partial<Viewed>): void {
    if (this.viewed.value) this.viewed.value = { ...this.viewed.value, ...change };
  }
}
