import { spawn, type ChildProcess } from "node:child_process";
import { once } from "node:events";
import { mkdirSync, mkdtempSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { dirname, join } from "node:path";
import { createInterface } from "node:readline";

const startTimeout = 20_000;

/** A bridgehost of its own for one test file, on the demo set in a fresh data folder. */
export class Host {
  readonly token = `t${process.pid}${Date.now()}`;
  readonly #data = mkdtempSync(join(tmpdir(), "imsdkbridge-e2e-"));
  #process: ChildProcess | undefined;
  port = 0;

  /** `more` are further flags of bridgehost. */
  constructor(readonly more: readonly string[] = []) {}

  /** Address of the chat, as a person opens it. */
  get url(): string {
    return this.address(`/?token=${this.token}`);
  }

  /** Address of anything on this host. */
  address(path: string): string {
    return `http://127.0.0.1:${this.port}${path}`;
  }

  /** Writes a file of the data folder. */
  put(name: string, content: string): void {
    const file = join(this.#data, name);
    mkdirSync(dirname(file), { recursive: true });
    writeFileSync(file, content);
  }

  /** Starts the host, on the same port as before if it ran before. */
  async start(): Promise<void> {
    const program = process.env["BRIDGEHOST"];
    if (!program) throw new Error("BRIDGEHOST must name the bridgehost program");
    const flags = ["--port", String(this.port), "--data", this.#data, "--token", this.token];
    const child = spawn(program, [...flags, "--demo", ...this.more], {
      stdio: ["ignore", "pipe", "inherit"],
    });
    this.#process = child;
    const line = await firstLine(child);
    const port = /^listening on http:\/\/127\.0\.0\.1:(\d+)\/\?token=/.exec(line)?.[1];
    if (!port) throw new Error(`bridgehost said: ${line}`);
    this.port = Number(port);
  }

  /** Ends the host's process with a signal, and waits until it is gone. */
  async end(signal: NodeJS.Signals): Promise<void> {
    const child = this.#process;
    this.#process = undefined;
    if (!child || child.exitCode !== null) return;
    const gone = once(child, "exit");
    child.kill(signal);
    await gone;
  }

  /** Ends the host and removes its data. */
  async remove(): Promise<void> {
    await this.end("SIGKILL");
    rmSync(this.#data, { recursive: true, force: true });
  }
}

async function firstLine(child: ChildProcess): Promise<string> {
  const lines = createInterface({ input: child.stdout! });
  const timeout = AbortSignal.timeout(startTimeout);
  const exit = once(child, "exit", { signal: timeout }).then(([code]) => `exit code ${code}`);
  exit.catch(() => {});
  const [line] = await Promise.race([
    once(lines, "line", { signal: timeout }),
    exit.then((text) => [text]),
  ]);
  return line as string;
}
