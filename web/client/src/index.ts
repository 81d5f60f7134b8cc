/**
 * Page client of the bridge: `connect()` gives a `BridgeClient` with a promise per call, handlers
 * for notifications, and a connection that comes back by itself.
 */
export { connect, type ConnectOptions } from "./connect.ts";
export { BridgeClient, type Calls, type StateHandler } from "./client.ts";
export { BridgeError, ResultCode, type BridgeErrorKind } from "./errors.ts";
export type { ConnectionState } from "./link.ts";
export type { CallOptions } from "./pending_calls.ts";
export type { ModuleFace, ModuleFaces, RoutingPath } from "./modules.ts";
export * from "./protocol.ts";
export * from "./records.ts";
export * from "./history.ts";
export * from "./single_chat.ts";
export * from "./virtual_chat.ts";
