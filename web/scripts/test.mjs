// Bundles the tests under the folders given as arguments and runs them with Node's test runner.
import { spawnSync } from "node:child_process";
import { existsSync, readdirSync, rmSync } from "node:fs";
import { join, relative } from "node:path";
import { fileURLToPath } from "node:url";
import { build } from "esbuild";

const root = fileURLToPath(new URL("..", import.meta.url));
const folders = process.argv.slice(2);
const entryPoints = folders.flatMap((folder) =>
  readdirSync(join(root, folder))
    .filter((name) => name.endsWith(".test.ts"))
    .map((name) => join(root, folder, name)),
);
const outdir = join(root, "node_modules/.tests", folders.join("-").replaceAll("/", "_"));

rmSync(outdir, { recursive: true, force: true });
await build({
  entryPoints,
  outdir,
  outbase: root,
  outExtension: { ".js": ".mjs" },
  bundle: true,
  platform: "node",
  format: "esm",
  target: "node18",
  external: ["playwright-core", "ajv", "@open-rpc/*", "@json-schema-tools/*"],
  conditions: ["imsdkbridge-source"],
  jsx: "automatic",
  jsxImportSource: "preact",
  sourcemap: "inline",
  logLevel: "warning",
});
const files = entryPoints
  .map((path) => join(outdir, relative(root, path)).replace(/\.ts$/, ".mjs"))
  .filter(existsSync);
const run = spawnSync(process.execPath, ["--enable-source-maps", "--test", ...files], {
  stdio: "inherit",
});
process.exit(run.status ?? 1);
