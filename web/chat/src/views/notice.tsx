import type { ComponentProps, JSX } from "preact";
import { Icon } from "./icons.tsx";

interface NoticeProps {
  title: string;
  text?: string;
  icon?: ComponentProps<typeof Icon>["name"];
  spinner?: boolean;
  action?: { label: string; run: () => void };
}

/** What a surface shows while it has nothing else to show: loading, empty, or an error. */
export function Notice({ title, text, icon, spinner, action }: NoticeProps): JSX.Element {
  return (
    <div class="notice">
      {spinner && <span class="spinner" aria-hidden="true" />}
      {icon && <Icon name={icon} />}
      <p class="notice-title">{title}</p>
      {text && <p class="notice-text">{text}</p>}
      {action && (
        <button type="button" class="button" onClick={action.run}>
          {action.label}
        </button>
      )}
    </div>
  );
}
