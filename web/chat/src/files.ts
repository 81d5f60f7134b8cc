const token = new URLSearchParams(location.search).get("token") ?? "";

/** Address at which the host serves a file of its data folder. */
export function fileUrl(path: string): string {
  return `/file?path=${encodeURIComponent(path)}&token=${encodeURIComponent(token)}`;
}
