import type { JSX } from "preact";
import { fileUrl, saveFile } from "../files.ts";
import { textOf } from "../text/reasons.ts";
import { useStore } from "./context.ts";
import { Icon } from "./icons.tsx";
import { marked } from "./marked.tsx";

export interface FileLinkProps {
  path: string;
  name: string;
  icon: "file" | "voice";
  keywords?: readonly string[] | undefined;
}

/** The name of a path's file. */
export function nameIn(path: string): string {
  return /[^\\/]*$/.exec(path)![0] || path;
}

/** A file by its name; choosing it saves it. */
export function FileLink({ path, name, icon, keywords = [] }: FileLinkProps): JSX.Element {
  const { toasts } = useStore();
  const save = (event: MouseEvent) => {
    event.preventDefault();
    saveFile(path, name).catch((error: unknown) =>
      toasts.problem(`${name} could not be saved: ${textOf(error)}.`),
    );
  };
  return (
    <a class="file" href={fileUrl(path)} title="Save" rel="noreferrer" onClick={save}>
      <Icon name={icon} />
      <span>
        {icon === "voice" && "Voice message ("}
        {marked(name, keywords)}
        {icon === "voice" && ")"}
      </span>
    </a>
  );
}
