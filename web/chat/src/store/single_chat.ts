import type { BridgeClient, Notifications } from "@imsdkbridge/client";

type OfSingleChat<E extends keyof Notifications> = Extract<
  Notifications[E],
  [payload: unknown, path: "im.singlemsg"]
>[0];

/** As `client.on`, for single chats alone: tribes raise notifications of the same names. */
export function onSingleChat<E extends keyof Notifications>(
  client: BridgeClient,
  event: E,
  handler: (payload: OfSingleChat<E>) => void,
): void {
  client.on(event as string, (payload, path) => {
    if (path !== "im.tribemsg") handler(payload as unknown as OfSingleChat<E>);
  });
}
