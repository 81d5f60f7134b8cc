import { useLayoutEffect } from "preact/hooks";

/** While `unsaved`, the browser asks before it reloads or closes the page. */
export function useLeaveQuestion(unsaved: boolean): void {
  // With what is shown, not some frames behind it: whoever sees nothing unsaved may leave unasked.
  useLayoutEffect(() => {
    if (!unsaved) return undefined;
    const ask = (event: BeforeUnloadEvent) => event.preventDefault();
    addEventListener("beforeunload", ask);
    return () => removeEventListener("beforeunload", ask);
  }, [unsaved]);
}
