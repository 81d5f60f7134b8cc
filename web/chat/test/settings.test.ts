import assert from "node:assert/strict";
import { test } from "node:test";
import { keyOf } from "../src/store/peers.ts";
import { chat, peer, SharedTabs, user, type Host } from "./rig.ts";

test("whose automatic replies are ignored is remembered by account, once the host took it", async () => {
  let result = "full";
  const shared = new SharedTabs();
  const host: Host = { ShieldAutoReply: () => (result ? { code: -1, result } : {}) };
  const { store, socket, client } = await chat(host, shared);
  const { autoReplies, toasts } = store;
  await autoReplies.setIgnored(peer, true);
  assert.equal(autoReplies.ignored.value.size, 0);
  assert.match(toasts.all.value.at(-1)!.text, /full/);
  result = "";
  await autoReplies.setIgnored(peer, true);
  assert.deepEqual(socket().named("ShieldAutoReply").at(-1)!.request, { cid: peer, setignore: 1 });
  for (const [nick, ignored] of [
    ["somebody else", []],
    ["me", [keyOf(peer)]],
  ] as const) {
    const later = await chat(host, shared, user(nick));
    assert.deepEqual([...later.store.autoReplies.ignored.value], ignored, nick);
    later.client.close();
  }
  await autoReplies.setIgnored(peer, false);
  assert.equal(autoReplies.ignored.value.size, 0);
  client.close();
});

test("roaming shows what the server has, from when on, and why it did not change", async () => {
  let roaming = { roamstatus: 1, opentime: "0" };
  let result = "";
  const { store, client } = await chat({
    GetRoamStatus: () => roaming,
    SetRoamStatus: ({ roamstatus }: { roamstatus: number }) => {
      if (result) return { code: -1, result };
      roaming = { roamstatus, opentime: roamstatus ? "1700000000000" : "0" };
      return {};
    },
  });
  const state = () => [store.roaming.enabled.value, store.roaming.since.value?.getTime()];
  await store.roaming.load();
  assert.deepEqual(state(), [true, undefined]);
  await store.roaming.setEnabled(false);
  assert.deepEqual(state(), [false, undefined]);
  await store.roaming.setEnabled(true);
  assert.deepEqual(state(), [true, 1_700_000_000_000]);
  result = "no link";
  await store.roaming.setEnabled(false);
  assert.deepEqual(state(), [true, 1_700_000_000_000]);
  assert.match(store.roaming.problem.value, /no link/);
  client.close();
});
