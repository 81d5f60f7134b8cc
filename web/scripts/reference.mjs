// docs/protocol.md, from the description and from examples that the end-to-end tests recorded.
import { components, grouped, nameOf, paramOf, split } from "./description.mjs";

const intro = `# The protocol between pages and the bridge

Made from the tables of the library by \`./dev generate\`; not edited by hand.

A page calls a method of a module: its routing path, its name, and a request, which is the JSON text
of an object. Keys of a request may be missing and are then "", 0 or an empty list; a key with a
value of a wrong type counts as missing. Every answer begins with the keys of
[ResultCode](#resultcode); those below follow when the call succeeded. A request that is not JSON is
answered with \`E_INVALIDARG\` and the text given under "Bad request". A method that a module does not
have is answered with \`E_NOTIMPL\` and no text.

Times are milliseconds since the Unix epoch. They and identifiers of messages are 64-bit integers,
which travel as decimal text.

The examples are recorded calls. Lists are cut after two items, long texts after 80 characters.
`;

const link = (name) => `[${name}](#${name.toLowerCase()})`;

/** The type of a schema in words. */
function words(schema) {
  const name = nameOf(schema);
  if (name) return link(name);
  if (schema.anyOf) return [...new Set(schema.anyOf.map(words))].join(" or ");
  if (schema.type === "array") return `list of ${words(schema.items)}`;
  if (schema.enum) return schema.enum.join(" or ");
  if (schema.pattern) return "integer as text";
  if (schema.format === "path") return "text, a path";
  if (schema.format === "uint32") return "integer from 0";
  return { string: "text", integer: "integer", object: "object" }[schema.type];
}

const cell = (text) => text.replaceAll("|", "\\|").replaceAll("<", "&lt;");
const sentenceOf = (schema) =>
  schema.description ?? schema.anyOf.map(({ description }) => description).join(" ");

function keysTable({ properties }) {
  const rows = Object.entries(properties).map(
    ([key, schema]) => `| \`${key}\` | ${words(schema)} | ${cell(sentenceOf(schema))} |\n`,
  );
  return `| key | type | meaning |\n| --- | --- | --- |\n${rows.join("")}\n`;
}

function block(title, schema, schemas) {
  const name = nameOf(schema);
  const record = name ? schemas[name] : schema;
  if (record.properties) return `${title}:\n\n${keysTable(record)}`;
  return `${title}: ${words(schema)}\n\n`;
}

/** The schema of an answer without the envelope's keys; undefined when it has no others. */
function ownAnswer({ result: { schema } }) {
  if (schema.allOf) return schema.allOf[1];
  return schema.properties?.result;
}

function json(title, value) {
  return `${title}:\n\n\`\`\`json\n${JSON.stringify(value, null, 2)}\n\`\`\`\n\n`;
}

function methodPart(method, schemas, example) {
  let text = `### ${method.name}\n\n${method.description}\n\n`;
  const request = paramOf(method);
  text += request ? block("Request", request, schemas) : "The request has no keys.\n\n";
  const answer = ownAnswer(method);
  text += answer ? block("Answer", answer, schemas) : "The answer is the envelope alone.\n\n";
  for (const { message } of method.errors ?? []) text += `Bad request: "${message}"\n\n`;
  if (example)
    text += json("Example request", example.request) + json("Example answer", example.answer);
  return text;
}

function noticePart(row, schemas, example) {
  const payload = paramOf(row);
  return (
    `### ${row.name}\n\n${row.description}\n\n` +
    (payload ? block("Payload", payload, schemas) : "The payload has no keys.\n\n") +
    (example ? json("Example", example) : "")
  );
}

function valuesPart([name, { oneOf }]) {
  const rows = oneOf.map(
    (value) => `| ${value.const} | \`${value.title}\` | ${cell(value.description)} |\n`,
  );
  return `### ${name}\n\n| value | name | meaning |\n| --- | --- | --- |\n${rows.join("")}\n`;
}

/** The reference as Markdown. */
export function reference(description, examples) {
  const { schemas } = description.components;
  const { values, records } = components(description);
  const byPath = grouped(description.methods, (method) => split(method).path);
  const notices = grouped(description["x-notifications"], (row) => split(row).path);
  const paths = [...new Set([...description["x-paths"], ...notices.keys()])];
  let text = intro;
  for (const path of paths) {
    text += `\n## ${path}\n\n`;
    if (!description["x-paths"].includes(path))
      text += "Sends notifications; it has no methods.\n\n";
    else if (!byPath.has(path)) text += "It has no methods yet: every one answers `E_NOTIMPL`.\n\n";
    for (const method of byPath.get(path) ?? []) {
      text += methodPart(method, schemas, examples.methods?.[method.name]);
    }
    for (const row of notices.get(path) ?? []) {
      text += noticePart(row, schemas, examples.notifications?.[row.name]);
    }
  }
  text += "\n## Events that a page raises\n\n";
  for (const event of description["x-page-events"]) text += noticePart(event, schemas);
  text += "\n## What bridgehost serves itself\n\n";
  text +=
    "Called like a module's methods, with `bridgehost.tribes.invoke` or `bridgehost.contacts.invoke` as the frame's `method`.\n\n";
  for (const method of description["x-host-methods"])
    text += methodPart(method, schemas, examples.methods?.[method.name]);
  text += "\n## Frames of the script channel\n\nEach is the JSON text of an object.\n\n";
  for (const [side, { oneOf }] of Object.entries(description["x-frames"])) {
    for (const frame of oneOf) {
      const members = Object.keys(frame.properties).map((key) => `\`${key}\``);
      text += `- **${frame.title}**, from the ${side}. ${frame.description} Members: ${members.join(", ")}.\n`;
    }
  }
  text += "\n## Records\n\n";
  for (const [name, schema] of records) text += `### ${name}\n\n${keysTable(schema)}`;
  text += "\n## Values\n\n";
  for (const set of values) text += valuesPart(set);
  return `${text.trimEnd().replace(/\n{3,}/g, "\n\n")}\n`;
}
