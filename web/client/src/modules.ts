import { routingPaths, type Methods } from "./generated/methods.ts";
import type { ResultCode } from "./generated/records.ts";
import type { CallOptions } from "./pending_calls.ts";

/** A routing path. */
export type RoutingPath = keyof Methods;

/** The methods of one module as functions: `face.Method(request, options)`. */
export type ModuleFace<P extends RoutingPath> = {
  readonly [M in keyof Methods[P]]: Methods[P][M] extends { request: infer R; answer: infer A }
    ? (request: R, options?: CallOptions) => Promise<A>
    : never;
};

/** Every module by its short name: `calls.singlemsg`, `calls.login` and so on. */
export type ModuleFaces = {
  readonly [N in keyof typeof routingPaths]: ModuleFace<(typeof routingPaths)[N]>;
};

/** Makes one call. */
export type Invoke = (
  path: string,
  method: string,
  request: object,
  options?: CallOptions,
) => Promise<ResultCode>;

/** Builds the faces of all modules on one way to call. */
export function moduleFaces(invoke: Invoke): ModuleFaces {
  const faces = Object.entries(routingPaths).map(([name, path]) => [name, face(path, invoke)]);
  return Object.fromEntries(faces) as ModuleFaces;
}

// Method names begin with a capital; anything else (then, toJSON) must not turn into a call.
function face(path: string, invoke: Invoke): object {
  return new Proxy(Object.freeze({}), {
    get: (_, name) =>
      typeof name === "string" && /^[A-Z]/.test(name)
        ? (request: object, options?: CallOptions) => invoke(path, name, request, options)
        : undefined,
  });
}
