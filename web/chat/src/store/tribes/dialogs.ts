import type { IMTribeMember } from "@imsdkbridge/client";
import type { OpenTribe } from "./open_tribe.ts";

/** The questions and forms about tribes that come in front of the page. */
export type TribeDialog =
  | { kind: "tribe-create" | "tribe-join" | "tribe-requests" }
  | { kind: "tribe-invite"; tribe: OpenTribe }
  | { kind: "tribe-rename-member"; tribe: OpenTribe; member: IMTribeMember }
  | {
      kind: "tribe-confirm";
      tribe: OpenTribe;
      title: string;
      text: string;
      /** What the button says that does it. */
      label: string;
      /** Whether it was done. */
      run: () => Promise<boolean>;
    };
