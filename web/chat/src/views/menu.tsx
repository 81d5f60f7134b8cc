import type { ComponentProps, JSX } from "preact";
import { useLayoutEffect, useRef, useState } from "preact/hooks";
import { Icon } from "./icons.tsx";
import { useReturnFocus } from "./use_return_focus.ts";

export interface MenuItem {
  label: string;
  icon: ComponentProps<typeof Icon>["name"];
  danger?: boolean;
  run: () => void;
}

interface MenuProps {
  label: string;
  items: readonly MenuItem[];
  /** Where it opens, in pixels of the window. */
  x: number;
  y: number;
  close: () => void;
}

/** A menu above the page. Arrow keys move, Enter chooses, Escape closes and gives the focus back. */
export function Menu({ label, items, x, y, close }: MenuProps): JSX.Element {
  const menu = useRef<HTMLDivElement>(null);
  const [place, setPlace] = useState({ x, y });
  const buttons = () => [...menu.current!.querySelectorAll("button")];

  useLayoutEffect(() => {
    const { offsetWidth, offsetHeight } = menu.current!;
    setPlace({
      x: Math.max(8, Math.min(x, innerWidth - offsetWidth - 8)),
      y: y + offsetHeight + 8 > innerHeight ? Math.max(8, y - offsetHeight) : y,
    });
  }, [x, y]);
  useReturnFocus(() => buttons()[0]?.focus());

  const onKeyDown = (event: KeyboardEvent) => {
    event.stopPropagation();
    const all = buttons();
    const at = all.indexOf(document.activeElement as HTMLButtonElement);
    const targets: Record<string, number> = {
      ArrowDown: (at + 1) % all.length,
      ArrowUp: (at + all.length - 1) % all.length,
      Home: 0,
      End: all.length - 1,
    };
    const target = targets[event.key];
    if (event.key === "Escape" || event.key === "Tab") close();
    else if (target === undefined) return;
    else all[target]?.focus();
    event.preventDefault();
  };

  return (
    <>
      <div class="menu-shade" onPointerDown={close} onContextMenu={(e) => e.preventDefault()} />
      <div
        class="menu"
        role="menu"
        aria-label={label}
        ref={menu}
        style={{ left: `${place.x}px`, top: `${place.y}px` }}
        onKeyDown={onKeyDown}
      >
        {items.map(({ label, icon, danger, run }) => (
          <button
            key={label}
            type="button"
            role="menuitem"
            tabIndex={-1}
            class={danger ? "menu-item danger" : "menu-item"}
            onClick={() => (close(), run())}
          >
            <Icon name={icon} />
            {label}
          </button>
        ))}
      </div>
    </>
  );
}
