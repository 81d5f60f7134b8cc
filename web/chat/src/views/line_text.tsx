import type { JSX } from "preact";
import { piecesOf, placeholdersIn, type Line } from "../text/line.ts";
import { Emotion } from "./body.tsx";

/** The line that stands for a message, with its emotions as pictures and what was found marked. */
export function LineText({ line: { stretches, emotions } }: { line: Line }): JSX.Element {
  let used = 0;
  return (
    <>
      {stretches.map(({ text, hit }, index) => {
        const pieces = piecesOf(text, emotions.slice(used)).map((piece, at) =>
          typeof piece === "string" ? piece : <Emotion key={at} {...piece} />,
        );
        used += placeholdersIn(text);
        return hit ? <mark key={index}>{pieces}</mark> : pieces;
      })}
    </>
  );
}
