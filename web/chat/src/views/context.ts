import { createContext } from "preact";
import { useContext } from "preact/hooks";
import type { ChatStore } from "../store/chat_store.ts";

const StoreContext = createContext<ChatStore<File> | undefined>(undefined);

/** Gives the views below it their store. */
export const StoreProvider = StoreContext.Provider;

/** The page's store. */
export function useStore(): ChatStore<File> {
  const store = useContext(StoreContext);
  if (!store) throw new Error("no store above this view");
  return store;
}
