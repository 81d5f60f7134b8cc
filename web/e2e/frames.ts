// Holds what crosses the script channel against the description of the protocol.
import { execFileSync } from "node:child_process";
import Ajv, { type ValidateFunction } from "ajv";

export interface Schema {
  $ref?: string;
  type?: string;
  properties?: Record<string, Schema>;
  required?: string[];
  allOf?: Schema[];
  items?: Schema;
  [more: string]: unknown;
}
interface Row {
  name: string;
  params: { schema: Schema }[];
}
export interface Method extends Row {
  result: { schema: Schema };
  errors?: { code: number; message: string }[];
}
export interface Description {
  methods: Method[];
  "x-paths": string[];
  "x-notifications": Row[];
  /** What bridgehost serves itself. */
  "x-host-methods": Method[];
  "x-page-events": Row[];
  "x-frames": { host: Schema; page: Schema };
  components: { schemas: Record<string, Schema> };
}

/** A frame of the script channel; which fields it has depends on its kind. */
export interface Frame {
  kind: string;
  method?: string;
  args?: string[];
  seq?: string;
  failed?: boolean;
  event?: string;
  payload?: string;
  path?: string;
  reason?: string;
}

/** What a page and its host said to each other. */
export interface Connection {
  sent: Frame[];
  received: Frame[];
  /** Its page sends what is wrong on purpose: only what the host says is checked. */
  wild?: boolean;
}

export interface Example {
  request: unknown;
  answer: unknown;
}

/** What the frames of some connections showed. */
export interface Seen {
  problems: string[];
  /** Methods that were answered with success, to a request that is right. */
  reached: string[];
  /** Methods that answered at all with something else than "not implemented". */
  working: string[];
  notified: string[];
  examples: { methods: Record<string, Example>; notifications: Record<string, unknown> };
}

const notImplemented = 0x80004001 | 0;
const place = "#/components/schemas/";

/** What bridgehost says of the protocol. */
export function describe(): Description {
  const program = process.env["BRIDGEHOST"];
  if (!program) throw new Error("BRIDGEHOST must name the bridgehost program");
  const text = execFileSync(program, ["--describe"], { encoding: "utf8", maxBuffer: 1e8 });
  return JSON.parse(text) as Description;
}

/** The schema with the ones that it refers to put in their place. */
export function resolved(schema: Schema, { components }: Description): Schema {
  return schema.$ref ? components.schemas[schema.$ref.slice(place.length)]! : schema;
}

/** "path.Method" of an invocation; undefined when it calls no module and nothing of the host. */
function calledBy({ method = "", args = [] }: Frame): string | undefined {
  const path = /^(?:workbench\.(?=im\.)|(?=bridgehost\.))(.*)\.invoke$/.exec(method)?.[1];
  return path && `${path}.${args[1]}`;
}

/** Checks frames; one for many connections, since its schemas are compiled once. */
export class FrameCheck {
  readonly #ajv = new Ajv({ strict: false, allErrors: true });
  readonly #description: Description;
  readonly #requests = new Map<string, ValidateFunction>();
  readonly #answers = new Map<string, ValidateFunction>();
  readonly #payloads = new Map<string, ValidateFunction>();
  readonly #raised = new Map<string, ValidateFunction>();
  readonly #envelope: ValidateFunction;
  readonly #host: ValidateFunction;
  readonly #page: ValidateFunction;

  constructor(description: Description) {
    this.#description = description;
    for (const format of ["path", "int32", "uint32"]) this.#ajv.addFormat(format, true);
    const schemas = Object.entries(description.components.schemas).map(
      ([name, schema]) => [name, this.#closed(schema)] as const,
    );
    this.#ajv.addSchema({ $id: "protocol", components: { schemas: Object.fromEntries(schemas) } });
    const empty: Schema = { type: "object", properties: {} };
    const methods = [...description.methods, ...description["x-host-methods"]];
    for (const { name, params, result } of methods) {
      // A request without keys is not looked at.
      this.#requests.set(name, this.#compile(params[0]?.schema ?? {}));
      this.#answers.set(name, this.#compile(result.schema));
    }
    for (const { name, params } of description["x-notifications"]) {
      this.#payloads.set(name, this.#compile(params[0]?.schema ?? empty));
    }
    for (const { name, params } of description["x-page-events"]) {
      this.#raised.set(name, this.#compile(params[0]!.schema));
    }
    this.#envelope = this.#compile({ $ref: `${place}ResultCode` });
    this.#host = this.#compile(description["x-frames"].host);
    this.#page = this.#compile(description["x-frames"].page);
  }

  /** What happened on `connections`. */
  see(connections: readonly Connection[]): Seen {
    const seen: Seen = {
      problems: [],
      reached: [],
      working: [],
      notified: [],
      examples: { methods: {}, notifications: {} },
    };
    for (const connection of connections) this.#see(connection, seen);
    for (const list of ["problems", "reached", "working", "notified"] as const) {
      seen[list] = [...new Set(seen[list])];
    }
    return seen;
  }

  // The document lets objects grow; what is sent today has these keys and no others.
  #closed(schema: Schema): Schema {
    if (schema.allOf) {
      const parts = schema.allOf.map((part) => resolved(part, this.#description));
      return this.#closed({
        type: "object",
        properties: Object.assign({}, ...parts.map(({ properties }) => properties)),
        required: parts.flatMap(({ required = [] }) => required),
      });
    }
    return schema.properties ? { additionalProperties: false, ...schema } : schema;
  }

  #compile(schema: Schema): ValidateFunction {
    const text = JSON.stringify(this.#closed(schema)).replaceAll(`"${place}`, `"protocol${place}`);
    return this.#ajv.compile(JSON.parse(text) as Schema);
  }

  /** Notes as a problem what `validate` does not take. */
  #fits(validate: ValidateFunction, value: unknown, what: string, seen: Seen): boolean {
    if (validate(value)) return true;
    const why = this.#ajv.errorsText(validate.errors).slice(0, 300);
    seen.problems.push(`${what}: ${why}: ${JSON.stringify(value).slice(0, 300)}`);
    return false;
  }

  #see({ sent, received, wild = false }: Connection, seen: Seen): void {
    const calls = new Map<string, Frame>();
    for (const frame of sent) {
      if (!wild) this.#seeSent(frame, seen);
      if (frame.args?.[0]) calls.set(frame.args[0], frame);
    }
    for (const frame of received) {
      if (!this.#fits(this.#host, frame, "host frame", seen)) continue;
      if (frame.kind === "answer") this.#seeAnswer(calls.get(frame.seq!), frame, wild, seen);
      if (frame.kind === "notify") this.#seeNotice(frame, seen);
      if (frame.kind === "refused" && !wild) seen.problems.push(`refused: ${frame.reason}`);
    }
  }

  #seeSent(frame: Frame, seen: Seen): void {
    if (!this.#fits(this.#page, frame, "page frame", seen)) return;
    const [, name = "", json = ""] = frame.args!;
    const raised = frame.method === "workbench.im.event_notify" && this.#raised.get(name);
    const request = raised || this.#requests.get(calledBy(frame) ?? "");
    if (request) this.#fits(request, parsed(json), `request of ${name}`, seen);
  }

  #seeAnswer(call: Frame | undefined, frame: Frame, wild: boolean, seen: Seen): void {
    if (!call) return void seen.problems.push(`an answer to no call: ${frame.seq}`);
    const name = calledBy(call);
    const answer = this.#answers.get(name ?? "");
    if (!answer) {
      // A method that is not there has no text; events are answered with the envelope.
      if (name && frame.failed && frame.payload === "") return;
      this.#fits(this.#envelope, parsed(frame.payload), `answer of ${call.method}`, seen);
      return;
    }
    const payload = parsed(frame.payload);
    const { code } = (payload ?? {}) as { code?: number };
    if (code !== notImplemented) seen.working.push(name!);
    if (code === undefined || code < 0 || frame.failed) {
      if (code === undefined || !frame.failed) {
        seen.problems.push(`answer of ${name}: not an envelope of a failure: ${frame.payload}`);
      } else if (!this.#envelope(payload)) {
        this.#fits(answer, payload, `failed answer of ${name}`, seen);
      }
    } else if (this.#fits(answer, payload, `answer of ${name}`, seen) && !wild) {
      seen.reached.push(name!);
      keepBetter(seen.examples.methods, name!, {
        request: abridged(parsed(call.args![2])),
        answer: abridged(payload),
      });
    }
  }

  #seeNotice({ path, event, payload }: Frame, seen: Seen): void {
    if (path === undefined) return; // a page raised it
    const name = `${path}.${event}`;
    const value = parsed(payload);
    const schema = this.#payloads.get(name);
    if (!schema) return void seen.problems.push(`unknown notification ${name}`);
    if (!this.#fits(schema, value, `payload of ${name}`, seen)) return;
    seen.notified.push(name);
    keepBetter(seen.examples.notifications, name, abridged(value));
  }

  /** Whether what is kept as an example still has the described shape. */
  seeExamples({ methods, notifications }: Seen["examples"]): string[] {
    const seen = this.see([]);
    for (const [name, { request, answer }] of Object.entries(methods)) {
      const fits = this.#answers.get(name);
      if (!fits) seen.problems.push(`an example of ${name}, which is not there`);
      else {
        this.#fits(fits, answer, `example answer of ${name}`, seen);
        this.#fits(this.#requests.get(name)!, request, `example request of ${name}`, seen);
      }
    }
    for (const [name, payload] of Object.entries(notifications)) {
      const fits = this.#payloads.get(name);
      if (!fits) seen.problems.push(`an example of ${name}, which is not there`);
      else this.#fits(fits, payload, `example of ${name}`, seen);
    }
    return seen.problems;
  }
}

function parsed(text: string | undefined): unknown {
  try {
    return JSON.parse(text ?? "") as unknown;
  } catch {
    return undefined;
  }
}

/** What a reader needs of a value: two items of a list, the beginning of a long text. */
function abridged(value: unknown): unknown {
  if (typeof value === "string") return value.length > 160 ? `${value.slice(0, 80)}…` : value;
  if (Array.isArray(value)) return value.slice(0, 2).map(abridged);
  if (typeof value !== "object" || value === null) return value;
  const secret = (key: string) => key === "token" || key === "password";
  return Object.fromEntries(
    Object.entries(value).map(([key, one]) => [key, secret(key) ? "…" : abridged(one)]),
  );
}

/** Keeps what tells more: no empty lists before empty ones, then what is shorter. */
export function keepBetter<T>(kept: Record<string, T>, name: string, fresh: T): void {
  const worth = (value: T) => {
    const text = JSON.stringify(value);
    return (text.match(/\[\]/g)?.length ?? 0) * 1e9 + text.length;
  };
  const old = kept[name];
  if (old === undefined || worth(fresh) < worth(old)) kept[name] = fresh;
}
