import type { IMMessage } from "@imsdkbridge/client";
import { signal } from "@preact/signals";
import { comparePositions } from "./users.ts";

/** Messages that are chosen to do something with all of them. */
export class Selection {
  /** Whether messages are being chosen. */
  readonly active = signal(false);
  readonly chosen = signal<ReadonlyMap<string, IMMessage>>(new Map());

  start(message: IMMessage): void {
    this.active.value = true;
    this.chosen.value = new Map([[message.msgid, message]]);
  }

  toggle(message: IMMessage): void {
    const chosen = new Map(this.chosen.value);
    if (!chosen.delete(message.msgid)) chosen.set(message.msgid, message);
    this.chosen.value = chosen;
  }

  /** Messages are gone; with the last chosen one the choosing ends. */
  drop(msgids: ReadonlySet<string> | "all"): void {
    const rest = [...this.chosen.value].filter(([id]) => msgids !== "all" && !msgids.has(id));
    if (rest.length === this.chosen.value.size) return;
    if (rest.length === 0) this.end();
    else this.chosen.value = new Map(rest);
  }

  end(): void {
    this.active.value = false;
    this.chosen.value = new Map();
  }

  /** The chosen messages, oldest first. */
  inOrder(): IMMessage[] {
    return [...this.chosen.value.values()].sort(comparePositions);
  }
}
