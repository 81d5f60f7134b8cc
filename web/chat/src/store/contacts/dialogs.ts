import type { IMListedContact } from "@imsdkbridge/client";

/** The questions and forms about contacts that come in front of the page. */
export type ContactDialog =
  | { kind: "contact-add" | "contact-requests" }
  | { kind: "contact-move" | "contact-remove" | "contact-block"; listed: IMListedContact };
