/** The application key whose accounts this chat signs in. */
export const appkey = "cnbazaro";

/** Accounts of the demo set, and their common password. */
export const demoAccounts = ["harbor", "lighthouse", "mariner", "navigator"];
export const demoPassword = "demo";
