import {
  Virtualizer,
  elementScroll,
  observeElementOffset,
  observeElementRect,
  type VirtualizerOptions,
} from "@tanstack/virtual-core";
import { useLayoutEffect, useReducer, useState } from "preact/hooks";

export type VirtualList = Virtualizer<HTMLElement, HTMLElement>;
type Options = VirtualizerOptions<HTMLElement, HTMLElement>;

/** Rows of varying height of which only those in sight exist, in a box of their own. */
export function useVirtualList(
  own: Pick<Options, "count" | "getScrollElement" | "estimateSize"> & Partial<Options>,
): VirtualList {
  const [, renderAgain] = useReducer((count: number) => count + 1, 0);
  const options: Options = {
    observeElementRect,
    observeElementOffset,
    scrollToFn: elementScroll,
    onChange: () => renderAgain(undefined),
    ...own,
  };
  const [list] = useState(() => new Virtualizer(options));
  list.setOptions(options);
  useLayoutEffect(() => list._didMount(), [list]);
  useLayoutEffect(() => list._willUpdate());
  return list;
}
