/** Runs `work` now, and once more afterwards for all wishes that came meanwhile. */
export class Joined {
  readonly #work: () => Promise<void>;
  #running: Promise<void> | undefined;
  #again = false;

  constructor(work: () => Promise<void>) {
    this.#work = work;
  }

  /** Settles when what was asked for up to now is done; rejects as `work` does. */
  run(): Promise<void> {
    if (this.#running) {
      this.#again = true;
      return this.#running;
    }
    const all = async () => {
      do {
        this.#again = false;
        await this.#work();
      } while (this.#again);
    };
    this.#running = all().finally(() => (this.#running = undefined));
    return this.#running;
  }
}
