import type { JSX } from "preact";
import { useLayoutEffect, useRef, useState } from "preact/hooks";
import { fileUrl } from "../files.ts";
import { keyOf } from "../store/peers.ts";
import { fullTime } from "../text/time.ts";
import { useStore } from "./context.ts";
import { FileLink, nameIn } from "./file_link.tsx";
import { Icon } from "./icons.tsx";
import { useReturnFocus } from "./use_return_focus.ts";

const zooms = [1, 1.5, 2, 3, 4, 6];

/** A picture over the whole page. Arrow keys go on, + and - zoom, Escape closes. */
export function PictureViewer(): JSX.Element | null {
  const { viewer } = useStore();
  const viewed = viewer.viewed.value;
  return viewed ? <Viewer key={keyOf(viewed.cid)} /> : null;
}

function Viewer(): JSX.Element | null {
  const { viewer } = useStore();
  const dialog = useRef<HTMLDialogElement>(null);
  const [zoom, setZoom] = useState(0);
  const [broken, setBroken] = useState("");
  const picture = viewer.front.value;
  const viewed = viewer.viewed.value;
  useReturnFocus(
    () => {
      dialog.current!.showModal();
      dialog.current!.focus();
    },
    () => dialog.current?.close(),
  );
  useLayoutEffect(() => setZoom(0), [picture?.pictureid]);
  if (!picture || !viewed) return null;

  const step = (by: 1 | -1) => void viewer.step(by);
  const zoomBy = (by: number) => setZoom(Math.min(Math.max(zoom + by, 0), zooms.length - 1));
  const onKeyDown = (event: KeyboardEvent) => {
    const keys: Record<string, () => void> = {
      ArrowLeft: () => step(-1),
      ArrowRight: () => step(1),
      "+": () => zoomBy(1),
      "=": () => zoomBy(1),
      "-": () => zoomBy(-1),
      "0": () => setZoom(0),
    };
    const run = keys[event.key];
    if (!run) return;
    event.preventDefault();
    run();
  };
  const time = new Date(Number(picture.mgstime));
  const words = `Picture from ${picture.fromid.nick}, ${fullTime(time)}`;
  const { pictures, older, newer } = viewed;
  const first = viewer.place === 0 && older === "none";
  const last = viewer.place === pictures.length - 1 && newer === "none";

  return (
    <dialog
      class="viewer"
      aria-label="Picture"
      tabIndex={-1}
      ref={dialog}
      onCancel={(event) => (event.preventDefault(), viewer.close())}
      onKeyDown={onKeyDown}
    >
      <header class="viewer-bar">
        <span class="viewer-words">{words}</span>
        <Tool icon="zoom-out" label="Smaller (-)" off={zoom === 0} run={() => zoomBy(-1)} />
        <Tool
          icon="zoom-in"
          label="Larger (+)"
          off={zoom === zooms.length - 1}
          run={() => zoomBy(1)}
        />
        <Tool icon="close" label="Close (Escape)" run={() => viewer.close()} />
      </header>
      <div
        class={zoom > 0 ? "viewer-stage zoomed" : "viewer-stage"}
        onWheel={(event) =>
          event.ctrlKey && (event.preventDefault(), zoomBy(-Math.sign(event.deltaY)))
        }
        onDblClick={() => setZoom(zoom === 0 ? 2 : 0)}
        onClick={(event) => event.target === event.currentTarget && viewer.close()}
      >
        {broken === picture.pictureid ? (
          <div class="viewer-broken" role="status">
            <p>This picture cannot be shown here.</p>
            <FileLink path={picture.url} name={nameIn(picture.url)} icon="file" />
          </div>
        ) : (
          <img
            key={picture.pictureid}
            src={fileUrl(picture.url)}
            alt={words}
            style={zoom > 0 ? { width: `${zooms[zoom]! * 100}%` } : undefined}
            onError={() => setBroken(picture.pictureid)}
          />
        )}
      </div>
      <Tool icon="back" label="Older picture" class="older" off={first} run={() => step(-1)} />
      <Tool icon="back" label="Newer picture" class="newer" off={last} run={() => step(1)} />
      {viewed.problem && (
        <p class="viewer-problem" role="alert">
          {viewed.problem}
        </p>
      )}
    </dialog>
  );
}

interface ToolProps {
  icon: "zoom-in" | "zoom-out" | "close" | "back";
  label: string;
  class?: string;
  off?: boolean;
  run: () => void;
}

function Tool({ icon, label, off, run, class: place = "" }: ToolProps): JSX.Element {
  return (
    <button
      type="button"
      class={`icon-button ${place}`}
      title={label}
      aria-label={label}
      disabled={off}
      onClick={run}
    >
      <Icon name={icon} />
    </button>
  );
}
