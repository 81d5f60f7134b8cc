import { signal } from "@preact/signals";

/** One emotion that can be typed. */
export interface Emotion {
  shortcut: string;
  file: string;
  name: string;
}

/** The emotions of this chat; the host turns their shortcuts into pictures by the same list. */
export class Emotions {
  readonly list = signal<readonly Emotion[]>([]);
  readonly status = signal<"idle" | "loading" | "ready" | "failed">("idle");

  readonly #fetchList: () => Promise<readonly Emotion[]>;

  constructor(fetchList: () => Promise<readonly Emotion[]>) {
    this.#fetchList = fetchList;
  }

  /** Loads the list, once. */
  async load(): Promise<void> {
    if (this.status.value === "loading" || this.status.value === "ready") return;
    this.status.value = "loading";
    try {
      this.list.value = await this.#fetchList();
      this.status.value = "ready";
    } catch {
      this.status.value = "failed";
    }
  }
}
