/**
 * Page client of the bridge: `connect()` gives a `BridgeClient` with a promise per call, handlers
 * for notifications, and a connection that comes back by itself.
 */
export { connect, type ConnectOptions } from "./connect.ts";
export { BridgeClient, type Calls, type StateHandler } from "./client.ts";
export { BridgeError, FailureCode, type BridgeErrorKind } from "./errors.ts";
export type { Channel, ChannelListener, ConnectionState, OpenChannel } from "./channel.ts";
export { readBody, unescaped, writeBody, type BodyPart } from "./message_body.ts";
export { objectChannel, type HostObject } from "./object_channel.ts";
export type { CallOptions } from "./pending_calls.ts";
export type { ModuleFace, ModuleFaces, RoutingPath } from "./modules.ts";
export * from "./generated/methods.ts";
export * from "./generated/notifications.ts";
export type * from "./generated/records.ts";
export type * from "./generated/requests.ts";
export * from "./generated/values.ts";
