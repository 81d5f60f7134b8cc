import type { ComponentChildren, JSX } from "preact";
import { useRef, useState } from "preact/hooks";
import { Icon } from "./icons.tsx";

interface DropZoneProps {
  take: (files: File[]) => void;
  children: ComponentChildren;
}

/** Takes files that are dropped on what is inside. */
export function DropZone({ take, children }: DropZoneProps): JSX.Element {
  const [over, setOver] = useState(false);
  // Entering a child comes before leaving its parent.
  const depth = useRef(0);
  const bringsFiles = (event: DragEvent) => event.dataTransfer?.types.includes("Files") ?? false;
  const enter = (by: number) => {
    depth.current += by;
    setOver(depth.current > 0);
  };
  return (
    <div
      class="drop-zone"
      onDragEnter={(event) => bringsFiles(event) && enter(1)}
      onDragLeave={(event) => bringsFiles(event) && enter(-1)}
      onDragOver={(event) => bringsFiles(event) && event.preventDefault()}
      onDrop={(event) => {
        if (!bringsFiles(event)) return;
        event.preventDefault();
        enter(-depth.current);
        take([...(event.dataTransfer?.files ?? [])]);
      }}
    >
      {children}
      {over && (
        <div class="drop-hint" aria-hidden="true">
          <Icon name="clip" /> Drop files to send them
        </div>
      )}
    </div>
  );
}
