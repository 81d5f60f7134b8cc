import type { JSX } from "preact";
import { useEffect, useState } from "preact/hooks";
import type { OpenTribe } from "../../store/tribes/open_tribe.ts";
import { keyOf } from "../../store/peers.ts";
import { appkey } from "../../store/users.ts";
import { fullTime } from "../../text/time.ts";
import { Avatar } from "../avatar.tsx";
import { Notice } from "../notice.tsx";

/** Who may not join, for managers: adding and taking off. */
export function BlackList({ tribe }: { tribe: OpenTribe }): JSX.Element {
  const [nick, setNick] = useState("");
  useEffect(() => void tribe.loadBlackList(), [tribe]);
  const all = tribe.blackList.value;
  const add = async (event: Event) => {
    event.preventDefault();
    const name = nick.trim();
    if (name && (await tribe.block({ appkey, nick: name }))) setNick("");
  };
  return (
    <div class="tribe-page">
      {tribe.mayManage && (
        <form class="tribe-line" onSubmit={(event) => void add(event)}>
          <input
            class="field"
            aria-label="Who may not join"
            placeholder="Name of somebody who may not join"
            autoCapitalize="none"
            spellcheck={false}
            value={nick}
            onInput={(event) => setNick(event.currentTarget.value)}
          />
          <button type="submit" class="button" disabled={!nick.trim() || tribe.busy.value}>
            Block
          </button>
        </form>
      )}
      {all.length === 0 && <Notice icon="check" title="Nobody is on the black list" />}
      <ul class="plain-list" aria-label="Black list">
        {all.map((item) => (
          <li key={keyOf(item.userid)} class="tribe-line">
            <Avatar nick={item.nick || item.userid.nick} />
            <span class="conversation-lines">
              <span class="conversation-name" dir="auto">
                {item.nick || item.userid.nick}
              </span>
              <span class="soft">since {fullTime(new Date(item.addtime))}</span>
            </span>
            {tribe.mayManage && (
              <button
                type="button"
                class="button"
                disabled={tribe.busy.value}
                onClick={() => void tribe.unblock(item.userid)}
              >
                Take off
              </button>
            )}
          </li>
        ))}
      </ul>
    </div>
  );
}
