// Who hears of what happens in a tribe: the accounts concerned, and no other.
import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import type { Browser } from "playwright-core";
import { call, type User, user } from "./channel_page.ts";
import { Host } from "./host.ts";
import { eventually, launch } from "./pages.ts";
import { nicks, type Nick, TribeView } from "./tribe_views.ts";

const host = new Host();
let browser: Browser;
let views: Record<Nick, TribeView>;

before(async () => {
  await host.start();
  browser = await launch();
  views = await TribeView.all(browser, host.url);
});
after(async () => {
  await browser?.close();
  await host.remove();
});

type Heard = Partial<Record<Nick, string[]>>;
interface Told {
  event: string;
  payload: { actor?: User; tribeid?: string };
}

/** What an account was told of tribes so far, in its order. */
function toldTo(nick: Nick): Told[] {
  const { received } = views[nick].chat.connections.at(-1)!;
  return received
    .filter(({ path }) => path === "im.tribemgr")
    .map(({ event, payload }) => ({
      event: event!,
      payload: JSON.parse(payload!) as Told["payload"],
    }));
}

/** The same events for each of them. */
function each(who: readonly Nick[], ...events: string[]): Heard {
  return Object.fromEntries(who.map((nick) => [nick, events]));
}

const crew = ["harbor", "lighthouse", "mariner"] as const;
const own = "onJoinTribe";
const other = "onJoinTribeEx";

// What happens, in this order: who does what, and what that makes whom hear.
interface Happening {
  by: Nick;
  does: (view: TribeView, tribeid: string) => Promise<unknown>;
  heard: Heard;
}
const ask =
  (name: string, request: object = {}) =>
  (view: TribeView, tribeid: string) =>
    view.ask(name, { tribeid, ...request });
const asksHost =
  (name: string, request: object = {}) =>
  (view: TribeView, tribe: string) =>
    view.host(name, { tribe, ...request });
const happenings: Happening[] = [
  {
    by: "harbor",
    does: ask("SetTribeName", { str: "Watch" }),
    heard: each(crew, "onTribeBaseInfoChange"),
  },
  {
    by: "harbor",
    does: asksHost("SetTribe", { key: 5, value: "Fog" }),
    heard: each(crew, "onTribeBulletinUpdate"),
  },
  {
    by: "harbor",
    does: asksHost("SetTribe", { key: 12, value: "files/bell.png" }),
    heard: each(crew, "onTribeNtfTypeChange"),
  },
  { by: "harbor", does: ask("ClearVisitors"), heard: each(crew, "onClearTribeVisitor") },
  {
    by: "harbor",
    does: ask("ChangeLevel", { userid: user("mariner"), level: 2 }),
    heard: each(crew, "onTribeMemberChgLevel"),
  },
  {
    by: "mariner",
    does: ask("SetMyTribeNickname", { nickname: "Bosun" }),
    heard: each(crew, "onTribeMemberBaseInfoChange"),
  },
  {
    by: "navigator",
    does: asksHost("JoinTribe"),
    heard: { ...each(crew, other), navigator: [own, other] },
  },
  {
    by: "harbor",
    does: ask("KickTribeMember", { userid: user("navigator") }),
    heard: {
      ...each(crew, "onTribeKickMemberEx"),
      navigator: ["onTribeKickMember", "onTribeKickMemberEx"],
    },
  },
  {
    by: "navigator",
    does: asksHost("JoinTribe"),
    heard: { ...each(crew, other), navigator: [own, other] },
  },
  { by: "navigator", does: asksHost("QuitTribe"), heard: each(nicks, "onQuitTribe") },
  {
    by: "harbor",
    does: asksHost("TransferTribe", { who: "lighthouse" }),
    heard: each(crew, "onTribeTransfer"),
  },
  {
    by: "lighthouse",
    does: ask("CloseTribe"),
    heard: each(crew, "onTribeClose", "onEnableTribeNumChange"),
  },
  {
    by: "lighthouse",
    does: asksHost("EnableTribe"),
    heard: each(crew, "onEnabledTribe", "onEnableTribeNumChange"),
  },
  { by: "harbor", does: ask("GetTribeMemberList"), heard: {} },
  {
    by: "mariner",
    does: ({ chat }) => call(chat, "im.login", "DoLogout", {}),
    heard: { harbor: ["onTribeMemberStatusChange", "onTribeMemberCntChange"] },
  },
];

test("the accounts concerned hear of it, and no others", async () => {
  const expected = Object.fromEntries(nicks.map((nick) => [nick, [] as string[]]));
  // What should not have been heard shows in the next comparison, or in the one at the end.
  const hears = async (what: string, heard: Heard) => {
    for (const nick of nicks) {
      const wanted = expected[nick]!;
      const from = wanted.length;
      wanted.push(...(heard[nick] ?? []));
      await eventually(() => toldTo(nick).length >= wanted.length, `${what} at ${nick}`);
      const events = toldTo(nick).map(({ event }) => event);
      assert.deepEqual(events.slice(from), wanted.slice(from), `${what} at ${nick}`);
    }
  };
  for (const nick of nicks) await views[nick].ask("InitTribe");
  await hears("logging in", each(nicks, "onTribeShallowLogin"));
  const tribeid = await views.harbor.create("Night watch", ["lighthouse", "mariner"]);
  await hears("a new tribe", {
    harbor: [own, other, other, other],
    lighthouse: [other, own, other, other],
    mariner: [other, other, own, other],
  });
  const actors = new Map<string, Set<Nick>>();
  for (const [index, { by, does, heard }] of happenings.entries()) {
    await does(views[by], tribeid);
    await hears(`${index} by ${by}`, heard);
    for (const event of Object.values(heard).flat()) {
      actors.set(event, new Set([...(actors.get(event) ?? []), by]));
    }
  }
  // Statuses and counts are gathered for a second.
  await new Promise((resolve) => setTimeout(resolve, 1200));
  for (const nick of nicks) {
    const told = toldTo(nick);
    assert.deepEqual(
      told.map(({ event }) => event),
      expected[nick],
      nick,
    );
    for (const { event, payload } of told.slice(1 + (nick === "navigator" ? 0 : 4))) {
      assert.equal(payload.tribeid, tribeid, event);
      if (payload.actor) assert.ok(actors.get(event)!.has(payload.actor.nick as Nick), event);
    }
  }
});
