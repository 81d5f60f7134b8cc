import { useLayoutEffect, useMemo, useState } from "preact/hooks";
import { highlighted } from "../text/highlight.ts";

/**
 * Whether a long text is shown whole, of which else only the first `length` code units are. A word
 * that is searched for and stands in the folded part unfolds it.
 */
export function useFolding(
  text: string,
  length: number,
  keywords: readonly string[],
): [open: boolean, setOpen: (open: boolean) => void] {
  const [open, setOpen] = useState(false);
  const hidden = useMemo(() => {
    if (length >= text.length || keywords.length === 0) return false;
    let end = 0;
    return highlighted(text, keywords).some((stretch) => {
      end += stretch.text.length;
      return stretch.hit && end > length;
    });
  }, [text, length, keywords.join(" ")]);
  // Once it is open the reader closes it: it must not fold under their eyes when the search ends.
  useLayoutEffect(() => {
    if (hidden) setOpen(true);
  }, [hidden]);
  return [open, setOpen];
}
