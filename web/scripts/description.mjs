// The description of the protocol, as bridgehost prints it, and how it is walked.
import { execFileSync } from "node:child_process";

const schemaPlace = "#/components/schemas/";

/** Asks the program that BRIDGEHOST names. */
export function describe() {
  const program = process.env.BRIDGEHOST;
  if (!program) throw new Error("BRIDGEHOST must name the bridgehost program");
  return JSON.parse(execFileSync(program, ["--describe"], { encoding: "utf8", maxBuffer: 1e8 }));
}

/** The component that a schema refers to, by name; undefined when it refers to none. */
export function nameOf(schema) {
  return schema.$ref?.startsWith(schemaPlace) ? schema.$ref.slice(schemaPlace.length) : undefined;
}

/** Routing path and plain name of a method or notification. */
export function split({ name }) {
  const dot = name.lastIndexOf(".");
  return { path: name.slice(0, dot), plain: name.slice(dot + 1) };
}

/** The items of `list` by what `keyOf` says of each, in the order of the list. */
export function grouped(list, keyOf) {
  const groups = new Map();
  for (const item of list) {
    const key = keyOf(item);
    groups.set(key, [...(groups.get(key) ?? []), item]);
  }
  return groups;
}

/** The components that are value sets, and those that are records, as [name, schema]. */
export function components({ components: { schemas } }) {
  const all = Object.entries(schemas).sort(([a], [b]) => (a < b ? -1 : 1));
  return {
    values: all.filter(([, schema]) => schema.oneOf),
    records: all.filter(([, schema]) => !schema.oneOf),
  };
}

/** The one parameter of a method, notification or page event; undefined without one. */
export function paramOf({ params }) {
  return params[0]?.schema;
}
