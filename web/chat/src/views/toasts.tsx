import type { JSX } from "preact";
import { useEffect } from "preact/hooks";
import type { Toast } from "../store/toasts.ts";
import { useStore } from "./context.ts";
import { Icon } from "./icons.tsx";

/** Milliseconds that a toast stays, and longer when there is a reason to read. */
const stay = { note: 4_000, problem: 9_000 };

/** Short words at the lower edge of the page. */
export function ToastStack(): JSX.Element {
  const { toasts } = useStore();
  return (
    <div class="toasts">
      {toasts.all.value.map((toast) => (
        <ToastView key={toast.id} toast={toast} close={() => toasts.dismiss(toast.id)} />
      ))}
    </div>
  );
}

function ToastView({ toast, close }: { toast: Toast; close: () => void }): JSX.Element {
  const { text, kind, action, lasting } = toast;
  useEffect(() => {
    if (lasting) return undefined;
    const timer = setTimeout(close, stay[kind]);
    return () => clearTimeout(timer);
  }, []);
  return (
    <div class={`toast ${kind}`} role={kind === "problem" ? "alert" : "status"}>
      <span>{text}</span>
      {action && (
        <button type="button" class="link-button" onClick={() => (close(), action.run())}>
          {action.label}
        </button>
      )}
      <button type="button" class="icon-button" aria-label="Dismiss" onClick={close}>
        <Icon name="close" />
      </button>
    </div>
  );
}
