// Makes what is generated from the description of the protocol: the page client's types and the
// reference. `--check` writes nothing and fails when a file is stale. Needs the program bridgehost,
// named by the environment variable BRIDGEHOST.
import { existsSync, mkdirSync, readFileSync, writeFileSync } from "node:fs";
import { dirname, join, relative } from "node:path";
import { fileURLToPath } from "node:url";
import { describe } from "./description.mjs";
import { reference } from "./reference.mjs";
import { typeFiles } from "./types.mjs";

const root = fileURLToPath(new URL("../..", import.meta.url));
const description = describe();
const examplesFile = join(root, "web/e2e/examples.json");
const examples = existsSync(examplesFile) ? JSON.parse(readFileSync(examplesFile, "utf8")) : {};

const files = { "docs/protocol.md": reference(description, examples) };
for (const [name, text] of Object.entries(typeFiles(description))) {
  files[`web/client/src/generated/${name}`] = text;
}

const stale = Object.entries(files).filter(([name, text]) => {
  const file = join(root, name);
  return !existsSync(file) || readFileSync(file, "utf8") !== text;
});
if (process.argv.includes("--check")) {
  for (const [name] of stale) console.error(`stale: ${name}`);
  if (stale.length > 0) {
    console.error("these files are not what the tables say; mend them with: ./dev generate");
    process.exit(1);
  }
} else {
  for (const [name, text] of stale) {
    const file = join(root, name);
    mkdirSync(dirname(file), { recursive: true });
    writeFileSync(file, text);
    console.error(`wrote ${relative(process.cwd(), file)}`);
  }
}
