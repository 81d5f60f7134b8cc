const clock = new Intl.DateTimeFormat(undefined, { hour: "2-digit", minute: "2-digit" });
const weekday = new Intl.DateTimeFormat(undefined, { weekday: "long" });
const shortDate = new Intl.DateTimeFormat(undefined, { day: "numeric", month: "short" });
const longDate = new Intl.DateTimeFormat(undefined, {
  weekday: "long",
  day: "numeric",
  month: "long",
  year: "numeric",
});
const full = new Intl.DateTimeFormat(undefined, { dateStyle: "full", timeStyle: "medium" });

/** Time of day. */
export function clockTime(time: Date): string {
  return clock.format(time);
}

/** Date and time in full, for tooltips. */
export function fullTime(time: Date): string {
  return full.format(time);
}

/** Name of a day, as a separator between messages. */
export function dayName(time: Date, now: Date): string {
  const days = daysBetween(time, now);
  if (days === 0) return "Today";
  if (days === 1) return "Yesterday";
  return longDate.format(time);
}

/** The shortest useful time for a list: today's clock, this week's day, else the date. */
export function listTime(time: Date, now: Date): string {
  const days = daysBetween(time, now);
  if (days === 0) return clockTime(time);
  if (days === 1) return "Yesterday";
  return days > 1 && days < 7 ? weekday.format(time) : shortDate.format(time);
}

function daysBetween(time: Date, now: Date): number {
  const day = (date: Date) => Date.UTC(date.getFullYear(), date.getMonth(), date.getDate());
  return Math.round((day(now) - day(time)) / 86_400_000);
}
