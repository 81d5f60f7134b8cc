import { signal } from "@preact/signals";
import { comparePositions, type ChatMessage } from "./peers.ts";

/** Messages that are chosen to do something with all of them. */
export class Selection {
  /** Whether messages are being chosen. */
  readonly active = signal(false);
  readonly chosen = signal<ReadonlyMap<string, ChatMessage>>(new Map());

  start(message: ChatMessage): void {
    this.active.value = true;
    this.chosen.value = new Map([[message.msgid, message]]);
  }

  toggle(message: ChatMessage): void {
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
  inOrder(): ChatMessage[] {
    return [...this.chosen.value.values()].sort(comparePositions);
  }
}
