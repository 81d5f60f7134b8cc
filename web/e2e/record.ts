// Remembers what all pages of a test file said, and leaves what it showed for frames.test.ts.
import { writeFileSync } from "node:fs";
import { join } from "node:path";
import { describe, FrameCheck, type Connection } from "./frames.ts";

const folder = process.env["IMSDK_FRAMES"];
const connections: Connection[] = [];

/** Takes part in the check of all frames from here on. */
export function record(connection: Connection): void {
  connections.push(connection);
}

if (folder) {
  process.on("exit", () => {
    const seen = new FrameCheck(describe()).see(connections);
    writeFileSync(join(folder, `${process.pid}.json`), JSON.stringify(seen));
  });
}
