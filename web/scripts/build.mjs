// Builds the page client into client/dist, and into dist/ what the host serves: the chat as its
// front page, and the page client for pages of one's own.
import { spawnSync } from "node:child_process";
import { cpSync, mkdirSync, rmSync } from "node:fs";
import { join } from "node:path";
import { fileURLToPath } from "node:url";
import { build } from "esbuild";

const root = fileURLToPath(new URL("..", import.meta.url));
const inRoot = (...parts) => join(root, ...parts);
const common = {
  bundle: true,
  format: "esm",
  target: "es2022",
  conditions: ["imsdkbridge-source"],
  jsx: "automatic",
  jsxImportSource: "preact",
  sourcemap: true,
  logLevel: "warning",
};

async function buildClient() {
  rmSync(inRoot("client/dist"), { recursive: true, force: true });
  rmSync(inRoot("dist/client"), { recursive: true, force: true });
  // What is shared lies in a chunk of its own: both entry points know one BridgeError.
  const entryPoints = [inRoot("client/src/index.ts"), inRoot("client/src/memory_channel.ts")];
  const outdir = inRoot("client/dist");
  await build({ ...common, entryPoints, outdir, splitting: true, minify: true });
  const types = ["-p", "client/tsconfig.build.json"];
  const tsc = spawnSync(process.execPath, [inRoot("node_modules/typescript/bin/tsc"), ...types], {
    cwd: root,
    stdio: "inherit",
  });
  if (tsc.status !== 0) process.exit(tsc.status ?? 1);
  cpSync(inRoot("client/dist"), inRoot("dist/client"), { recursive: true });
}

async function buildChat() {
  const outdir = inRoot("dist/chat");
  rmSync(outdir, { recursive: true, force: true });
  mkdirSync(outdir, { recursive: true });
  const entryPoints = {
    app: inRoot("chat/src/main.tsx"),
    style: inRoot("chat/src/styles/main.css"),
  };
  await build({ ...common, entryPoints, outdir, minify: true });
  cpSync(inRoot("chat/index.html"), join(outdir, "index.html"));
  cpSync(inRoot("chat/index.html"), inRoot("dist/index.html"));
  cpSync(inRoot("chat/icon.svg"), join(outdir, "icon.svg"));
  rmSync(inRoot("dist/emotions"), { recursive: true, force: true });
  cpSync(inRoot("chat/public"), inRoot("dist"), { recursive: true });
}

await Promise.all([buildClient(), buildChat()]);
