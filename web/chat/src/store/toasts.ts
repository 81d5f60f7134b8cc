import { signal } from "@preact/signals";

/** A short word about something that happened. */
export interface Toast {
  id: number;
  text: string;
  kind: "note" | "problem";
  action?: { label: string; run: () => void };
}

/** How many are shown at once; the oldest ones give way. */
const most = 3;

/** Short words at the edge of the page, which go by themselves. */
export class Toasts {
  readonly all = signal<readonly Toast[]>([]);
  #nextId = 1;

  show(text: string, kind: Toast["kind"] = "note", action?: Toast["action"]): void {
    const toast: Toast = { id: this.#nextId++, text, kind, ...(action && { action }) };
    this.all.value = [...this.all.value.filter((other) => other.text !== text), toast].slice(-most);
  }

  /** Says that something did not work, and why. */
  problem(text: string): void {
    this.show(text, "problem");
  }

  dismiss(id: number): void {
    this.all.value = this.all.value.filter((toast) => toast.id !== id);
  }
}
