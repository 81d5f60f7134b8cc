import { useLayoutEffect } from "preact/hooks";

/**
 * Takes the focus with `take` while the component stands there, and gives it back afterwards. What
 * keeps the focus to itself lets go of it in `leave`.
 */
export function useReturnFocus(take: () => void, leave?: () => void): void {
  useLayoutEffect(() => {
    const before = document.activeElement as HTMLElement | null;
    take();
    return () => {
      leave?.();
      before?.focus({ preventScroll: true });
    };
  }, []);
}
