import type { JSX } from "preact";
import { noGroup } from "../../store/contacts/contact_list.ts";
import { useStore } from "../context.ts";

interface GroupSelectProps {
  groupid: string;
  setGroupid: (groupid: string) => void;
  disabled?: boolean;
}

/** Chooses one of the account's groups, or none. */
export function GroupSelect({ groupid, setGroupid, disabled }: GroupSelectProps): JSX.Element {
  const { list } = useStore().contacts;
  return (
    <select
      class="field"
      aria-label="Group"
      value={groupid}
      disabled={disabled}
      onChange={(event) => setGroupid(event.currentTarget.value)}
    >
      <option value={noGroup}>No group</option>
      {list.groups.value.map((group) => (
        <option key={group.groupid} value={group.groupid}>
          {group.name}
        </option>
      ))}
    </select>
  );
}
