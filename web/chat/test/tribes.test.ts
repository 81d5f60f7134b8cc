import assert from "node:assert/strict";
import { test } from "node:test";
import type { IMTribeMember } from "@imsdkbridge/client";
import { chat, until, user } from "./rig.ts";

const member = (nick: string, more: Partial<IMTribeMember> = {}): IMTribeMember => ({
  ...user(nick),
  status: 0,
  display: nick,
  name: nick,
  portrait: "",
  activelevel: 0,
  level: 1,
  ...more,
});
const shallow = (tribeid: string, display: string, mylevel: number) => ({
  mylevel,
  tribeid: { tribeid, display, portrait: "", unreadnum: 0, type: 0 },
  signature: "",
  type: 0,
});

/** A chat of a tribe's owner that shows the tribe with these members. */
async function atTribe(memberlist: IMTribeMember[], more = {}) {
  const tribes = { mine: [shallow("7", "Watch", 3)] };
  const rig = await chat({
    InitTribe: () => ({}),
    GetShallowTribeList: () => ({ tribelist: tribes.mine }),
    GetTribeMemberList: () => ({ total: memberlist.length, online: 1, memberlist }),
    GetTribeVerifyMsgs: () => ({ msgs: [] }),
    GetAttentionMembers: () => ({ memberlist: [] }),
    GetTribeBlackList: () => ({ list: [] }),
    ...more,
  });
  await until(() => rig.store.tribes.list.status.value === "ready");
  rig.store.tribes.show("7");
  const open = rig.store.tribes.open.value!;
  await until(() => open.members.status.value === "ready");
  const shown = () => open.members.shown.value.map(({ member }) => member.nick);
  return { ...rig, tribes, open, shown };
}

test("members: those online first, then by level and name; changes show, also many at once", async () => {
  const all = ["d", "c", "b", "a"].map((nick) => member(nick));
  const { shown, open, socket, client } = await atTribe([
    ...all,
    member("admin", { level: 2 }),
    member("me", { level: 3, status: 1 }),
  ]);
  assert.deepEqual(shown(), ["me", "admin", "a", "b", "c", "d"]);
  const told = { tribeid: "7", actor: user("me") };
  // In one go: what is told of one member later counts more.
  socket().notify("onJoinTribeEx", { ...told, recipient: user("new"), info: member("new") });
  socket().notify("onTribeMemberBaseInfoChange", {
    tribeid: "7",
    userid: user("new"),
    display: "Aaron",
  });
  socket().notify("onTribeMemberStatusChange", { tribeid: "7", userid: user("c"), status: 1 });
  socket().notify("onTribeMemberChgLevel", { ...told, recipient: user("b"), level: 2 });
  socket().notify("onTribeKickMemberEx", { ...told, recipient: user("d") });
  socket().notify("onTribeMemberStatusChange", { tribeid: "8", userid: user("a"), status: 1 });
  await until(() => shown().length === 6 && shown()[1] === "c");
  assert.deepEqual(shown(), ["me", "c", "admin", "b", "a", "new"]);
  open.members.query.value = "AARON";
  assert.deepEqual(shown(), ["new"]);
  client.close();
});

test("a tribe of 100,000 members: the list and a search in it take moments", async () => {
  const all = Array.from({ length: 100_000 }, (_, id) =>
    member(`member ${id}`, { status: id % 2 ? 1 : 0 }),
  );
  const { shown, open, client } = await atTribe(all);
  const start = performance.now();
  assert.equal(shown().length, all.length);
  open.members.query.value = "er 9999";
  assert.deepEqual(shown().slice(0, 3), ["member 9999", "member 99991", "member 99993"]);
  // An order of magnitude above what it takes.
  assert.ok(performance.now() - start < 4000, `${performance.now() - start} ms`);
  client.close();
});

test("whoever is removed sees it and writes nothing more; what waits is counted and settled", async () => {
  const asked = {
    fromid: user("guest"),
    fromname: "guest",
    tribeid: "7",
    tribename: "Watch",
    msgtime: 1,
    msgid: "5",
    authinfo: "please",
    managerid: { appkey: "", nick: "" },
    type: 1,
  };
  const inbox = { msgs: [asked] };
  const { store, tribes, open, socket, client } = await atTribe([member("me", { level: 3 })], {
    GetTribeVerifyMsgs: () => inbox,
    AllowJoinTribe: () => undefined,
  });
  await until(() => store.tribes.requests.waiting.value === 1);
  // Another manager was faster.
  inbox.msgs = [{ ...asked, managerid: user("other"), type: 3 }];
  socket().notify("onJoinTribeEx", {
    tribeid: "7",
    actor: user("other"),
    recipient: user("guest"),
    info: member("guest"),
  });
  await until(() => store.tribes.requests.waiting.value === 0);

  const conversation = { tribeid: "7", type: 3 } as const;
  assert.equal(store.names.whyBarred(conversation), "");
  tribes.mine = [];
  socket().notify("onTribeKickMember", {
    tribeid: "7",
    actor: user("other"),
    recipient: user("me"),
  });
  await until(() => open.tribe.value === undefined);
  assert.match(store.names.whyBarred(conversation), /not a member/);
  assert.match(store.toasts.all.value.at(-1)!.text, /other removed you from Watch/);
  client.close();
});
