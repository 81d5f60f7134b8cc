import assert from "node:assert/strict";
import { test } from "node:test";
import { actionsFor, withdrawTime } from "../src/text/actions.ts";
import { largestFile, refusalOf, typeOfFile } from "../src/text/attachment.ts";
import { excerpt, highlighted, keywordsOf } from "../src/text/highlight.ts";
import { linked } from "../src/text/links.ts";
import { noteOf } from "../src/text/note.ts";
import { message } from "./rig.ts";

test("hits are marked as the search finds them, and the text stays whole", () => {
  // What is expected to be marked stands in brackets.
  const cases: [query: string, expected: string][] = [
    ["rope", "the [rope] and [Rope]s, no grope"],
    ["ÉTÉ", "l'[été] et l'[ete]"],
    ["str", "[Str]aße, astray"],
    ["灯塔", "去[灯塔]看[灯塔]"],
    ["🚢", "a[🚢]b"],
    ["one o", "[one] [o]ther, no"],
    ["İ", "[i]stanbul [İ]zmir"],
    ["...", "nothing ... here"],
    ["", "plain"],
  ];
  for (const [query, expected] of cases) {
    const plain = expected.replace(/[[\]]/g, "");
    const stretches = highlighted(plain, keywordsOf(query));
    assert.equal(stretches.map(({ text }) => text).join(""), plain);
    const shown = stretches.map(({ text, hit }) => (hit ? `[${text}]` : text)).join("");
    assert.equal(shown, expected, query);
  }
});

test("an excerpt begins shortly before a hit that stands far inside", () => {
  const far = "one two three four five six seven eight nine ten needle and so on";
  const cases: [text: string, query: string, expected: string][] = [
    [far, "needle", "…seven eight nine ten needle and so on"],
    [far, "two", far],
    [far, "nothing", far],
    ["灯".repeat(60) + "塔", "塔", `…${"灯".repeat(24)}塔`],
    ["🚢".repeat(30) + "a needle", "needle", `…${"🚢".repeat(11)}a needle`],
  ];
  for (const [text, query, expected] of cases) {
    const shown = excerpt(highlighted(text, keywordsOf(query)));
    assert.equal(shown.map(({ text }) => text).join(""), expected);
  }
});

test("only whole web addresses become links", () => {
  // What leads somewhere stands in brackets.
  for (const expected of [
    "see [https://example.org/a_(b)?x=1&y=2#z], or not",
    "（[http://localhost:8080/]）",
    "tides.md www.example.com //example.org a@example.org",
    "javascript:alert(1) ftp://example.org mailto:a@example.org file:///etc",
    "",
  ]) {
    const plain = expected.replace(/[[\]]/g, "");
    const shown = linked(plain).map(({ text, href }) => (href ? `[${text}]` : text));
    assert.equal(shown.join(""), expected);
  }
});

test("the menu of a message has what can be done with it now", () => {
  const now = 10_000_000;
  const fresh = String(now - withdrawTime + 1);
  const picture = "pic:impicture|M?filepath=a.png&fileMD5=M&filetype=png";
  const extinfo = { others: "", fixmsgread: 0, autochatmsg: 0, syschatmsg: 1 };
  const mine = { mine: true, readOnly: false, now };
  const theirs = { ...mine, mine: false };
  const cases: [Parameters<typeof message>[0], typeof mine, string][] = [
    [{ id: 1, msgstatus: 1, svrtime: fresh }, mine, "copy forward withdraw select delete"],
    [
      { id: 1, msgstatus: 1, svrtime: String(now - withdrawTime) },
      mine,
      "copy forward select delete",
    ],
    [{ id: 1, msgstatus: 2, svrtime: fresh }, mine, "copy resend select delete"],
    [{ id: 1, msgstatus: 0, svrtime: fresh }, mine, "copy select"],
    [{ id: 1, msgstatus: 4, body: "", svrtime: fresh }, mine, "select delete"],
    [{ id: 1, svrtime: fresh }, theirs, "copy translate forward select delete"],
    [{ id: 1, body: picture }, theirs, "open forward select delete"],
    [{ id: 1 }, { ...theirs, readOnly: true }, "copy translate select delete"],
    [{ id: 1, extinfo }, theirs, "select delete"],
    [{ id: 1, msgtype: 5, body: "" }, theirs, "select delete"],
  ];
  for (const [fields, situation, actions] of cases) {
    assert.equal(actionsFor(message(fields), situation).join(" "), actions);
  }
});

test("notes stand for what nobody wrote; files are refused by their size", () => {
  const extinfo = { others: "", fixmsgread: 0, autochatmsg: 0, syschatmsg: 1 };
  assert.equal(noteOf(message({ id: 1, msgstatus: 4 }), true), "You withdrew a message");
  assert.equal(noteOf(message({ id: 1, msgstatus: 4 }), false), "peer withdrew a message");
  assert.equal(noteOf(message({ id: 1, body: "note", extinfo }), false), "note");
  assert.equal(noteOf(message({ id: 1, msgtype: 5, body: "" }), true), "You shook the window");
  assert.equal(noteOf(message({ id: 1 }), true), undefined);

  assert.equal(refusalOf({ name: "a", size: largestFile }), "");
  assert.match(refusalOf({ name: "a.bin", size: largestFile + 1 }), /a\.bin.*32 MB/);
  assert.match(refusalOf({ name: "a", size: 0 }), /empty/);
  // A drawing that can carry script is sent as a file.
  assert.deepEqual(["image/png", "image/svg+xml", ""].map(typeOfFile), [1, 3, 3]);
});
