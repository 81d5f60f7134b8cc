import type { TribemsgIMConversationID } from "@imsdkbridge/client";
import type { JSX, Ref } from "preact";
import { useEffect, useImperativeHandle, useState } from "preact/hooks";
import type { Candidate } from "../store/mentions.ts";
import { textOf } from "../text/reasons.ts";
import { Avatar } from "./avatar.tsx";
import { useStore } from "./context.ts";

/** Members that are offered at a time. */
const mostOffered = 8;

/** Takes the keys of the field that the picker belongs to; tells whether a key was for it. */
export interface PickerKeys {
  onKey(event: KeyboardEvent): boolean;
}

interface MentionPickerProps {
  cid: TribemsgIMConversationID;
  /** What was typed after the "@". */
  query: string;
  keys: Ref<PickerKeys>;
  /** Takes the words to write. */
  choose: (words: string) => void;
  close: () => void;
}

/** The members that can be mentioned. Arrow keys move, Enter or Tab takes one, Escape closes. */
export function MentionPicker(props: MentionPickerProps): JSX.Element | null {
  const { cid, query, keys, choose, close } = props;
  const { mentions, session, toasts } = useStore();
  const [offered, setOffered] = useState<readonly Candidate[]>([]);
  const [at, setAt] = useState(0);
  useEffect(() => {
    let current = true;
    mentions.candidates(cid, query, session.me.value).then(
      (found) => current && (setOffered(found.slice(0, mostOffered)), setAt(0)),
      () => current && setOffered([]),
    );
    return () => void (current = false);
  }, [cid, query]);

  const take = (candidate: Candidate) => {
    mentions.choose(cid.tribeid, candidate).then(choose, (error: unknown) => {
      toasts.problem(`${candidate.display} cannot be mentioned: ${textOf(error)}.`);
      close();
    });
  };
  useImperativeHandle(keys, () => ({
    onKey(event) {
      const step = { ArrowDown: 1, ArrowUp: -1 }[event.key];
      const chosen = offered[at];
      if (event.key === "Escape") close();
      else if (!chosen) return false;
      else if (step) setAt((at + step + offered.length) % offered.length);
      else if ((event.key === "Enter" || event.key === "Tab") && !event.isComposing) take(chosen);
      else return false;
      event.preventDefault();
      return true;
    },
  }));
  if (offered.length === 0) return null;
  return (
    <ul class="mention-picker" role="listbox" aria-label="Mention">
      {offered.map((candidate, index) => (
        <li
          key={candidate.userid?.nick ?? ""}
          class="mention-choice"
          role="option"
          aria-selected={index === at}
          // The field keeps the focus.
          onMouseDown={(event) => (event.preventDefault(), take(candidate))}
        >
          <Avatar nick={candidate.userid ? candidate.display : "@"} />
          <span>{candidate.display}</span>
          {!candidate.userid && <span class="soft">all members</span>}
          {candidate.userid && candidate.userid.nick !== candidate.display && (
            <span class="soft">{candidate.userid.nick}</span>
          )}
        </li>
      ))}
    </ul>
  );
}
