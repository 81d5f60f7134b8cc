// The end-to-end tests, then the check of all frames that they saw. `--examples` takes the examples
// of the reference from them anew.
import { spawnSync } from "node:child_process";
import { mkdirSync, rmSync } from "node:fs";
import { join } from "node:path";
import { fileURLToPath } from "node:url";

const root = fileURLToPath(new URL("..", import.meta.url));
const frames = join(root, "node_modules/.frames");
rmSync(frames, { recursive: true, force: true });
mkdirSync(frames, { recursive: true });
const env = {
  ...process.env,
  IMSDK_FRAMES: frames,
  IMSDK_EXAMPLES: join(root, "e2e/examples.json"),
  IMSDK_REFRESH: process.argv.includes("--examples") ? "1" : "",
};
const run = (script, ...args) =>
  spawnSync(process.execPath, [join(root, "scripts", script), ...args], { stdio: "inherit", env })
    .status ?? 1;

let status = run("build.mjs");
if (status === 0) {
  const statuses = [run("test.mjs", "e2e"), run("test.mjs", "e2e/seen")];
  status = Math.max(...statuses);
}
process.exit(status);
