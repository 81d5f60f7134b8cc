import { signal } from "@preact/signals";

/** A short word about something that happened. */
export interface Toast {
  id: number;
  text: string;
  kind: "note" | "problem";
  action?: { label: string; run: () => void };
  /** Whether it stays until it is dismissed. */
  lasting?: boolean;
}

/** How many are shown at once; the oldest ones give way, those that stay last. */
const most = 3;

/** Short words at the edge of the page, which go by themselves. */
export class Toasts {
  readonly all = signal<readonly Toast[]>([]);
  #nextId = 1;

  /** Shows a word; gives its identifier, from 1. */
  show(
    text: string,
    kind: Toast["kind"] = "note",
    more: Pick<Toast, "action" | "lasting"> = {},
  ): number {
    const toast: Toast = { id: this.#nextId++, text, kind, ...more };
    const others = this.all.value.filter((other) => other.text !== text);
    while (others.length >= most) {
      const passing = others.findIndex(({ lasting }) => !lasting);
      others.splice(Math.max(passing, 0), 1);
    }
    this.all.value = [...others, toast];
    return toast.id;
  }

  /** Says that something did not work, and why. */
  problem(text: string): void {
    this.show(text, "problem");
  }

  dismiss(id: number): void {
    this.all.value = this.all.value.filter((toast) => toast.id !== id);
  }
}
