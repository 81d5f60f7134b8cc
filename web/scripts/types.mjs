// The page client's types, from the description.
import { components, grouped, nameOf, paramOf, split } from "./description.mjs";

const head = "// Made from the tables of the library by ./dev generate; not edited by hand.\n";

/** The TypeScript type of a schema. */
function typeOf(schema) {
  if (!schema) return "Empty";
  const name = nameOf(schema);
  if (name) return name;
  if (schema.allOf) return schema.allOf.map(typeOf).join(" & ");
  if (schema.anyOf) return [...new Set(schema.anyOf.map(typeOf))].join(" | ");
  if (schema.type === "array") {
    const item = typeOf(schema.items);
    return /^\w+$/.test(item) ? `${item}[]` : `(${item})[]`;
  }
  if (schema.type === "object") return objectType(schema);
  return schema.type === "integer" ? "number" : schema.type;
}

function objectType({ properties = {}, required = [] }) {
  const members = Object.entries(properties).map(
    ([key, of]) => `${key}${required.includes(key) ? "" : "?"}: ${typeOf(of)}`,
  );
  return members.length > 0 ? `{ ${members.join("; ")} }` : "Empty";
}

const sentenceOf = (schema) =>
  schema.description ?? (schema.anyOf ?? []).map(({ description }) => description).join(" ");

function doc(text, indent = "  ") {
  return text ? `${indent}/** ${text} */\n` : "";
}

/** Names in `text` that are components, for its import. */
function imports(text, names, from) {
  const used = names.filter((name) => new RegExp(`\\b${name}\\b`).test(text));
  if (used.length === 0) return "";
  return `import type {\n${used.map((name) => `  ${name},\n`).join("")}} from "./${from}.ts";\n`;
}

function valuesFile(values) {
  const sets = values.map(([name, { oneOf }]) => {
    const entries = oneOf.map(
      (value) => `${doc(value.description)}  ${value.title}: ${value.const},\n`,
    );
    return (
      `export const ${name} = {\n${entries.join("")}} as const;\n` +
      `export type ${name} = (typeof ${name})[keyof typeof ${name}];\n`
    );
  });
  return `${head}\n${sets.join("\n")}`;
}

function recordTypes(records) {
  return records.map(([name, { properties, required = [] }]) => {
    const members = Object.entries(properties).map(
      ([key, schema]) =>
        `${doc(sentenceOf(schema))}  ${key}${required.includes(key) ? "" : "?"}: ${typeOf(schema)};\n`,
    );
    return `export interface ${name} {\n${members.join("")}}\n`;
  });
}

function recordsFile(records, valueNames) {
  const empty = "/** No keys. */\nexport type Empty = Record<never, never>;\n";
  const text = [empty, ...recordTypes(records)].join("\n");
  return `${head}${imports(text, valueNames, "values")}\n${text}`;
}

function requestsFile(requests, recordNames, valueNames) {
  const text = recordTypes(requests).join("\n");
  const used = imports(text, recordNames, "records") + imports(text, valueNames, "values");
  return `${head}${used}\n${text}`;
}

function methodsFile({ methods, "x-paths": paths, "x-page-events": pageEvents }, from) {
  const byPath = grouped(methods, (method) => split(method).path);
  const modules = paths.map((path) => {
    const members = (byPath.get(path) ?? []).map(
      (method) =>
        `${doc(method.description, "    ")}    ${split(method).plain}: {\n` +
        `      request: ${typeOf(paramOf(method))};\n` +
        `      answer: ${typeOf(method.result.schema)};\n    };\n`,
    );
    const body = members.length > 0 ? `{\n${members.join("")}  }` : "Empty";
    return `  "${path}": ${body};\n`;
  });
  const events = pageEvents.map(
    (event) => `${doc(event.description)}  ${event.name}: ${typeOf(paramOf(event))};\n`,
  );
  const names = paths.map((path) => `  ${path.slice(path.lastIndexOf(".") + 1)}: "${path}",\n`);
  const text =
    "/** Routing paths by the name of the client's module face. */\n" +
    `export const routingPaths = {\n${names.join("")}} as const;\n\n` +
    "/** Every method: by routing path, then by name. */\n" +
    `export interface Methods {\n${modules.join("")}}\n\n` +
    "/** Events that a page raises itself, and their payload. */\n" +
    `export interface PageEvents {\n${events.join("")}}\n`;
  const used = Object.entries(from).map(([file, names]) => imports(text, names, file));
  return `${head}${used.join("")}\n${text}`;
}

function notificationsFile({ "x-notifications": notifications }, recordNames) {
  const byName = grouped(notifications, (row) => split(row).plain);
  const members = [...byName].map(([name, rows]) => {
    // What several paths send alike is said once.
    const paths = (alike) => alike.map((row) => split(row).path);
    const sentences = [...grouped(rows, (row) => row.description)];
    const says = sentences.map(([sentence, alike]) =>
      sentences.length > 1 ? `${paths(alike).join(", ")}: ${sentence}` : sentence,
    );
    const forms = [...grouped(rows, (row) => typeOf(paramOf(row)))].map(
      ([type, alike]) =>
        `[payload: ${type}, path: ${paths(alike)
          .map((path) => `"${path}"`)
          .join(" | ")}]`,
    );
    return `${doc(says.join(" "))}  ${name}: ${forms.join(" | ")};\n`;
  });
  const text =
    "/**\n * Every notification: its payload, and the routing path that it comes from. Where several paths\n" +
    " * send one name, the path tells which payload it is.\n */\n" +
    `export interface Notifications {\n${members.join("")}}\n`;
  return `${head}${imports(text, recordNames, "records")}\n${text}`;
}

/** The generated files: name to text. */
export function typeFiles(description) {
  const { values, records } = components(description);
  const valueNames = values.map(([name]) => name);
  // A request's keys may all be missing; what answers hold is whole.
  const whole = records.filter(([, schema]) => schema.required);
  const requests = records.filter(([, schema]) => !schema.required);
  const from = {
    records: ["Empty", ...whole.map(([name]) => name)],
    requests: requests.map(([name]) => name),
  };
  return {
    "values.ts": valuesFile(values),
    "records.ts": recordsFile(whole, valueNames),
    "requests.ts": requestsFile(requests, from.records, valueNames),
    "methods.ts": methodsFile(description, from),
    "notifications.ts": notificationsFile(description, from.records),
  };
}
