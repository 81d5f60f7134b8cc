import type { JSX } from "preact";

const hues = 8;

/** A coloured disc with the first letter of a nick; the colour follows from the nick. */
export function Avatar({ nick }: { nick: string }): JSX.Element {
  let sum = 0;
  for (const letter of nick) sum = (sum * 7 + letter.codePointAt(0)!) % 1009;
  const initial = [...nick][0]?.toUpperCase() ?? "?";
  return (
    <span class={`avatar hue-${sum % hues}`} aria-hidden="true">
      {initial}
    </span>
  );
}
