/** Puts together what has the same key, in the order of first appearance. */
export function grouped<T>(all: readonly T[], keyOf: (one: T) => string): Map<string, T[]> {
  const groups = new Map<string, T[]>();
  for (const one of all) {
    const group = groups.get(keyOf(one));
    if (group) group.push(one);
    else groups.set(keyOf(one), [one]);
  }
  return groups;
}
