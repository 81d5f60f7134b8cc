import type { Emotion } from "./store/emotions.ts";

const token = new URLSearchParams(location.search).get("token") ?? "";
const emotionsFolder = "/emotions/";

/** Address at which the host serves a file of its data folder. */
export function fileUrl(path: string): string {
  return `/file?path=${encodeURIComponent(path)}&token=${encodeURIComponent(token)}`;
}

/** Address of an emotion's picture: the chat's own ones lie beside the page. */
export function emotionUrl(path: string): string {
  const own = /^emotions\/([\w-]+\.svg)$/.exec(path);
  return own ? emotionsFolder + own[1] : fileUrl(path);
}

/** The emotions that lie beside the page. */
export async function fetchEmotions(): Promise<readonly Emotion[]> {
  const answer = await fetch(`${emotionsFolder}list.json`);
  if (!answer.ok) throw new Error(`HTTP ${answer.status}`);
  return (await answer.json()) as Emotion[];
}

/** Saves a file of the host's data folder under its own name; the host keeps it under another. */
export async function saveFile(path: string, name: string): Promise<void> {
  const answer = await fetch(fileUrl(path));
  if (!answer.ok)
    throw new Error(answer.status === 404 ? "it could not be fetched" : `HTTP ${answer.status}`);
  const link = document.createElement("a");
  link.href = URL.createObjectURL(await answer.blob());
  link.download = name;
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href));
}

/** Reads a file as Base64. */
export function readAsBase64(
  file: Blob,
  progress: (part: number) => void,
  signal: AbortSignal,
): Promise<string> {
  return new Promise((resolve, reject) => {
    const reader = new FileReader();
    signal.addEventListener("abort", () => reader.abort());
    reader.onprogress = ({ loaded, total }) => progress(total ? loaded / total : 0);
    reader.onabort = () => reject(new Error("given up"));
    reader.onerror = () => reject(reader.error ?? new Error("the file could not be read"));
    // A data address is "data:TYPE;base64," and the content.
    reader.onload = () => {
      const address = reader.result as string;
      resolve(address.slice(address.indexOf(",") + 1));
    };
    reader.readAsDataURL(file);
  });
}
