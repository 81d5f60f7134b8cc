import { useRef } from "preact/hooks";

/** Milliseconds that a finger stays for a long press, and pixels it may move meanwhile. */
const pressTime = 500;
const pressSlack = 8;

type Handlers = Record<
  | "onContextMenu"
  | "onKeyDown"
  | "onPointerDown"
  | "onPointerMove"
  | "onPointerUp"
  | "onPointerCancel",
  (event: never) => void
>;

/** Ways to open a menu: right click, long press, and the menu key or Shift+F10. */
export function useMenuGestures(open: (x: number, y: number) => void): Handlers {
  const press = useRef<{ timer: ReturnType<typeof setTimeout>; x: number; y: number }>();
  const endPress = () => {
    clearTimeout(press.current?.timer);
    press.current = undefined;
  };
  return {
    onContextMenu(event: MouseEvent) {
      // A link or marked text has a menu of the browser's own.
      if ((event.target as Element).closest("a") || `${getSelection()}`) return;
      event.preventDefault();
      open(event.clientX, event.clientY);
    },
    onKeyDown(event: KeyboardEvent) {
      if (event.key !== "ContextMenu" && !(event.key === "F10" && event.shiftKey)) return;
      event.preventDefault();
      const { left, top } = (event.currentTarget as Element).getBoundingClientRect();
      open(left + 40, top + 20);
    },
    onPointerDown(event: PointerEvent) {
      if (event.pointerType !== "touch") return;
      const { clientX: x, clientY: y } = event;
      press.current = { x, y, timer: setTimeout(() => (endPress(), open(x, y)), pressTime) };
    },
    onPointerMove({ clientX, clientY }: PointerEvent) {
      const { x, y } = press.current ?? { x: clientX, y: clientY };
      if (Math.hypot(clientX - x, clientY - y) > pressSlack) endPress();
    },
    onPointerUp: endPress,
    onPointerCancel: endPress,
  } as Handlers;
}
