import assert from "node:assert/strict";
import { test } from "node:test";
import { IMContactStatus, type IMListedContact } from "@imsdkbridge/client";
import type { ContactRow } from "../src/store/contacts/contact_list.ts";
import { chat, until, user, type Host } from "./rig.ts";

const contact = (
  nick: string,
  more: Partial<IMListedContact> = {},
  status: IMContactStatus = IMContactStatus.kContactOffline,
): IMListedContact => ({
  userid: { ...user(nick), status, display: nick, portrait: "", unreadnum: 0 },
  groupid: "0",
  asterisk: 0,
  ...more,
});
const verify = (msgid: string, type: number, from = "peer") => ({
  fromid: contact(from).userid,
  fromname: from,
  msgtime: "1000",
  msgid,
  authinfo: "",
  gidinpeergroup: "0",
  type,
});

/** Groups as "name online/count", contacts by nick. */
const lines = (rows: readonly ContactRow[]) =>
  rows.map((row) =>
    row.kind === "group" ? `${row.name} ${row.online}/${row.count}` : row.listed.userid.nick,
  );

async function withContacts(contacts: IMListedContact[], more: Host = {}) {
  const groups = [
    { groupid: "5", parentid: "0", name: "Crew" },
    { groupid: "6", parentid: "5", name: "Deck" },
    { groupid: "7", parentid: "0", name: "Ashore" },
  ];
  const rig = await chat({
    GetContactList: () => ({ groups, contacts }),
    GetContactVerifyMsgs: () => ({ result: [] }),
    ...more,
  });
  const { list, requests } = rig.store.contacts;
  await until(() => list.status.value !== "loading" && requests.status.value !== "loading");
  return { ...rig, list, requests };
}

test("contacts stand by group: marked ones, those who are there, then by name", async () => {
  const { list, socket, client } = await withContacts([
    contact("zoe"),
    contact("ann", { groupid: "5" }),
    contact("bob", { groupid: "5" }, IMContactStatus.kContactOnline),
    contact("eve", { groupid: "5", asterisk: 1 }),
    contact("sam", { groupid: "6" }, IMContactStatus.kContactOnline),
    contact("stray", { groupid: "99" }),
  ]);
  const all = ["Ashore 0/0", "Crew 1/3", "eve", "bob", "ann", "Crew / Deck 1/1", "sam"];
  assert.deepEqual(lines(list.rows.value), [...all, "Contacts 0/2", "stray", "zoe"]);
  list.fold("5");
  assert.deepEqual(
    lines(list.rows.value).slice(0, 4),
    all.filter((_, at) => at < 2 || at > 4),
  );
  // Who is looked for is found in folded groups, too.
  list.query.value = " EV";
  assert.deepEqual(lines(list.rows.value), ["Crew 0/1", "eve"]);
  list.query.value = "";
  list.fold("5");

  socket().notify("onContactStatus", {
    list: [contact("ann", {}, IMContactStatus.kContactOnline).userid],
  });
  socket().notify("onContactChanged", { contact: contact("bob"), removed: 1 });
  socket().notify("onContactChanged", { contact: contact("new", { groupid: "7" }), removed: 0 });
  await until(() => list.all.value.has("cnbazaro\nnew"));
  assert.deepEqual(lines(list.rows.value).slice(0, 5), [
    "Ashore 0/1",
    "new",
    "Crew 1/2",
    "eve",
    "ann",
  ]);
  client.close();
});

test("a list of 5,000 contacts is put in order in moments", async () => {
  const many = Array.from({ length: 5000 }, (_, id) =>
    contact(
      `name ${(id * 7919) % 5000}`,
      { groupid: id % 3 ? "5" : "7" },
      (id % 2) as IMContactStatus,
    ),
  );
  const { list, client } = await withContacts(many);
  list.query.value = "x";
  list.query.value = "";
  const start = performance.now();
  assert.equal(list.rows.value.length, 5000 + 3);
  // An order of magnitude above what it takes.
  assert.ok(performance.now() - start < 500, `${performance.now() - start} ms`);
  client.close();
});

test("a request is counted, decided on once, and told of when it comes from others", async () => {
  const stored = [verify("2", 1), verify("1", 10, "other")];
  const decided: unknown[] = [];
  const { requests, store, socket, client } = await withContacts([], {
    GetContactVerifyMsgs: () => ({ result: [...stored].reverse() }),
    RefuseAddContact: () => ({ code: -11, subcode: 105, result: "this was decided already" }),
    AgreeAndAddContact: (action: object) => {
      decided.push(action);
      stored[0] = verify("2", 3);
      return {};
    },
  });
  assert.equal(requests.waiting.value, 1);
  assert.equal(await requests.decide(requests.all.value[0]!, "add", "welcome"), "");
  const action = { fromid: user("peer"), gidinpeergroup: "0", msgid: "2", authinfo: "welcome" };
  assert.deepEqual(decided, [action]);
  assert.equal(requests.waiting.value, 0);
  const late = await requests.decide(requests.all.value[0]!, "refuse", "");
  assert.equal(late, "this was decided already");

  const toasts = () => store.toasts.all.value.map(({ text }) => text);
  socket().notify("onContactVerifyMsg", verify("2", 3));
  socket().notify("onContactVerifyMsg", verify("3", 8, "friend"));
  await until(() => toasts().length > 0);
  assert.deepEqual(toasts(), ["friend is your contact now."]);
  client.close();
});

test("a host without contacts says so, and the rest goes on", async () => {
  const { list, store, client } = await withContacts([], {
    GetContactList: () => ({ code: -13, result: "not here" }),
    SetAsterisk: () => ({ code: -13, result: "not here" }),
  });
  assert.equal(list.status.value, "failed");
  assert.equal(list.problem.value, "not here");
  assert.equal(await store.contacts.mark(user("peer"), true), false);
  assert.equal(store.toasts.all.value.length, 1);
  client.close();
});
