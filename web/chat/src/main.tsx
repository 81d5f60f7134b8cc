import { connect, type Calls } from "@imsdkbridge/client";
import { effect } from "@preact/signals";
import { render } from "preact";
import { fetchEmotions, readAsBase64 } from "./files.ts";
import { ChatStore } from "./store/chat_store.ts";
import { documentFocus } from "./store/chat_window.ts";
import { browserTabs } from "./store/tabs.ts";
import { App } from "./views/app.tsx";
import { StoreProvider } from "./views/context.ts";

const client = connect({ onConnect: (direct: Calls): Promise<void> => store.restore(direct) });
const store = new ChatStore<File>(client, {
  storage: sessionStorage,
  memory: localStorage,
  focus: documentFocus(document),
  tabs: browserTabs("imsdkbridge chat"),
  readFile: readAsBase64,
  emotions: fetchEmotions,
});

effect(() => {
  const unread = store.conversations.totalUnread.value;
  const name = store.session.me.value?.nick;
  const title = name ? `${name} – Chat` : "Chat";
  document.title = unread > 0 ? `(${unread}) ${title}` : title;
});

render(
  <StoreProvider value={store}>
    <App />
  </StoreProvider>,
  document.getElementById("app")!,
);
