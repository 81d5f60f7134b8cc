import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import type { Browser } from "playwright-core";
import { endsAnsweredOnce, user } from "./channel_page.ts";
import { Host } from "./host.ts";
import { launch } from "./pages.ts";
import { core, nicks, type Nick, TribeView } from "./tribe_views.ts";

const host = new Host();
let browser: Browser;
let views: Record<Nick, TribeView>;

before(async () => {
  await host.start();
  browser = await launch();
  views = await TribeView.all(browser, host.url);
  for (const nick of nicks) await views[nick].ask("InitTribe");
});
after(async () => {
  for (const nick of nicks) endsAnsweredOnce(views[nick].chat);
  await browser?.close();
  await host.remove();
});

const tribeid = "10001";
const members = [user("lighthouse"), user("mariner")];

test("login, lists and members serve good requests", async () => {
  const { harbor, lighthouse } = views;
  assert.equal((await harbor.ask("InitTribe"))["result"], "Alread Login");
  await harbor.ask("GetShallowTribe", { tribeid });
  await harbor.ask("GetShallowTribeList");
  await harbor.ask("GetShallowTribeEx", { tribelist: [{ tribeid }] });
  await harbor.ask("GetTribeBaseInfo", { tribeid });
  await harbor.ask("GetEnableTribeNum");
  const roster = await lighthouse.ask("GetTribeMemberList", { tribeid });
  assert.equal(roster["total"], 3);
  await harbor.ask("GetTribeMemberbyID", { tribeid, memberlist: members });
  await harbor.ask("GetListDNick", { tribeid, listuid: members });
  await harbor.host("SetAttention", { tribe: tribeid, who: "mariner", on: 1 });
  await harbor.until("GetAttentionMembers", { tribeid }, ({ memberlist }) =>
    JSON.stringify(memberlist).includes("mariner"),
  );
  await harbor.ask("SearchTribeMember", { tribeid, key: "li" });
  await harbor.ask("SelectTribeSearchResult", { tribeid });
  await harbor.ask("ChangeLevel", { tribeid, userid: user("mariner"), level: 2 });
  await harbor.ask("SetTribeMemberNicknameByAdmin", {
    tribeid,
    userid: user("lighthouse"),
    nickname: "Light",
  });
});

// What is set, how, and the answer by which the same account and another member know it.
const settings: [set: string, request: object, get: string, answer: object][] = [
  ["SetTribeDes", { str: "Ships that come and go" }, "GetTribeBaseInfo", {}],
  ["SetClass", { num: 1 }, "GetTribeBaseInfo", {}],
  ["SetAuthType", { num: 1 }, "GetAuthType", { num: 1 }],
  ["SetAllowShowChatRecordBeforeJoin", { num: 1 }, "IsAllowShowChatRecordBeforeJoin", { num: 1 }],
  ["SetAtAllPermission", { num: 1 }, "GetAtAllPermission", { num: 1 }],
  ["SetAllowVisitor", { num: 1 }, "IsAllowVisitor", { num: 1 }],
];

test("what managers set, members read", async () => {
  const { harbor, lighthouse, navigator } = views;
  const fits = (answer: object, wanted: object) =>
    Object.entries(wanted).every(
      ([key, value]) => (answer as Record<string, unknown>)[key] === value,
    );
  for (const [set, request, get, answer] of settings) {
    await harbor.ask(set, { tribeid, ...request });
    for (const view of [harbor, lighthouse]) {
      await view.until(get, { tribeid }, (got) => fits(got, answer));
    }
  }
  await harbor.ask("SetJoinPwd", { tribeid, str: "low tide" });
  assert.equal((await harbor.ask("GetJoinPwd", { tribeid }))["str"], "low tide");
  await harbor.host("SetTribe", { tribe: tribeid, key: 5, value: "Fog until noon" });
  await lighthouse.until("GetTribeBulletin", { tribeid }, ({ str }) => str === "Fog until noon");
  await navigator.ask("GetTribeBaseInfo", { tribeid });
  const visitors = await harbor.until("GetVisitorCount", { tribeid }, ({ num }) => num === 1);
  assert.equal(visitors["num"], 1);
  await harbor.ask("ClearVisitors", { tribeid });
  await harbor.until("GetVisitorCount", { tribeid }, ({ num }) => num === 0);

  await lighthouse.ask("SetMsgRemindType", { tribeid, num: 1 });
  await lighthouse.until("GetMsgRemindType", { tribeid }, ({ num }) => num === 1);
  const nickname = { tribeid, userid: lighthouse.self, nickname: "Lamp" };
  await lighthouse.ask("SetMyTribeNickname", nickname);
  await lighthouse.until("GetMyTribeNickname", { tribeid }, (got) => got["nickname"] === "Lamp");
  // The password lets in who was never asked.
  await navigator.host("JoinTribe", { tribe: tribeid, password: "low tide" });
  await navigator.until("GetShallowTribe", { tribeid }, () => true);
  await harbor.ask("KickTribeMember", { tribeid, userid: navigator.self });
  await navigator.until(
    "GetQuittedTribe",
    {},
    ({ tribeids }) => (tribeids as unknown[]).length > 0,
  );
});

test("requests to join and invitations are decided", async () => {
  const { harbor, navigator } = views;
  const tribe = await harbor.create("Pilots", ["lighthouse"]);
  await harbor.ask("SetAuthType", { tribeid: tribe, num: 2 });
  const joins = async () => {
    const joined = await navigator.host("JoinTribe", { tribe, authinfo: "a pilot" });
    assert.equal(joined["waiting"], 1);
    return harbor.verification(tribe, 1);
  };
  await harbor.ask("RefuseJoinTribe", await joins());
  const last = await joins();
  await harbor.ask("AddToTribeBlack", last);
  await harbor.until(
    "GetTribeBlackList",
    { tribeid: tribe },
    ({ list }) => (list as unknown[]).length,
  );
  await harbor.ask("DelTribeBlack", { tribeid: tribe, userid: navigator.self });
  await harbor.ask("AddTribeBlack", { tribeid: tribe, userid: user("mariner") });
  await harbor.ask("AllowJoinTribe", await joins());
  await harbor.ask("DeleteTribeVerifyMsgs", last);
  await navigator.until("GetShallowTribe", { tribeid: tribe }, () => true);
  await navigator.host("QuitTribe", { tribe });

  const invited = async () => {
    const stUIDs = [core("navigator")];
    await harbor.host("InviteToTribe", { tribe, stUIDs, authinfo: "come back" });
    return navigator.verification(tribe, 2);
  };
  await navigator.until(
    "GetQuittedTribe",
    {},
    ({ tribeids }) => (tribeids as unknown[]).length === 2,
  );
  await navigator.ask("RefuseInviteJoinTribe", await invited());
  await navigator.ask("AllowInviteJoinTribe", await invited());
  await navigator.until("GetShallowTribe", { tribeid: tribe }, () => true);

  await harbor.host("TransferTribe", { tribe, who: "lighthouse" });
  await views.lighthouse.ask("CloseTribe", { tribeid: tribe });
  await views.lighthouse.host("EnableTribe", { tribe });
});

test("a multi-chat is renamed by any of its members", async () => {
  const tribe = await views.harbor.create("Tonight", ["lighthouse", "mariner"], 1);
  await views.mariner.until("GetMultiChatMembers", { tribeid: tribe }, ({ memberlist }) => {
    return (memberlist as unknown[]).length === 3;
  });
  await views.mariner.ask("ChangeMultiName", { tribeid: tribe, name: "Tomorrow" });
});
