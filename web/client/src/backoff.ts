/** How long to wait between attempts to connect, in milliseconds. */
export interface BackoffOptions {
  /** Upper bound of the first wait; later ones double it. */
  first: number;
  /** Upper bound of every wait. */
  longest: number;
}

/**
 * The wait before attempt number `attempt` (0 is the first retry). The upper bound doubles with each
 * attempt; the wait lies at random in its upper half, so pages that lost one host do not all come
 * back in the same instant.
 */
export function backoffDelay(
  attempt: number,
  { first, longest }: BackoffOptions,
  random: () => number = Math.random,
): number {
  const bound = Math.min(longest, first * 2 ** Math.min(attempt, 30));
  return bound * (0.5 + random() / 2);
}
