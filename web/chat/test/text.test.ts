import assert from "node:assert/strict";
import { test } from "node:test";
import type { IMMsgStatus, IMMsgType } from "@imsdkbridge/client";
import { bodyParts, cut, preview } from "../src/text/body.ts";
import { folded, sizeOf } from "../src/text/fold.ts";
import { rowAt } from "../src/text/rows.ts";
import { dayName, listTime } from "../src/text/time.ts";
import { message } from "./rig.ts";

test("bodies are taken apart into text, tokens and files", () => {
  const text = (value: string) => ({ kind: "text" as const, text: value });
  const picture = "pic:impicture|D41D?filepath=C%3A%5Ca%20b%26.png&fileMD5=D41D&filetype=png";
  const smile = "pic:imemotion|ID?filepath=%2Fe%2Fsmile.gif&shortcut=%2F%3A%5E_%5E";
  const cases: [msgtype: IMMsgType, body: string, parts: object[]][] = [
    [0, "plain\n<b>text</b>", [text("plain\n<b>text</b>")]],
    [0, "", []],
    [0, "pic:impicture|no token", [text("pic:impicture|no token")]],
    [1, picture, [{ kind: "picture", path: "C:\\a b&.png", source: picture }]],
    [
      0,
      `hi ${smile}好`,
      [
        text("hi "),
        { kind: "emotion", path: "/e/smile.gif", shortcut: "/:^_^", source: smile },
        text("好"),
      ],
    ],
    [
      3,
      "file:a b.pdf|filepath=%2Fd%2Fa.pdf",
      [{ kind: "file", name: "a b.pdf", path: "/d/a.pdf" }],
    ],
    [2, "file:v.amr|filepath=100%", [{ kind: "file", name: "v.amr", path: "100%" }]],
    [0, "file:a|filepath=b", [text("file:a|filepath=b")]],
  ];
  for (const [msgtype, msgbody, parts] of cases) {
    assert.deepEqual(bodyParts({ msgtype, msgbody }), parts, msgbody);
  }
  const previews: [msgtype: IMMsgType, msgstatus: IMMsgStatus, body: string, words: string][] = [
    [0, 3, `a\n\n b${smile}`, "a b/:^_^"],
    [1, 3, picture, "[Picture]"],
    [2, 3, "file:v.amr|filepath=x", "[Voice message]"],
    [5, 3, "", "[Window shake]"],
    [0, 4, "", "Message withdrawn"],
  ];
  for (const [msgtype, msgstatus, msgbody, words] of previews) {
    assert.equal(preview({ msgtype, msgstatus, msgbody }), words);
  }
});

test("long texts are folded without cutting a character", () => {
  const long = "🚢".repeat(5000);
  const start = folded(`a${long}`);
  assert.ok(start.length < 2000 && `a${long}`.startsWith(start));
  assert.doesNotThrow(() => encodeURIComponent(start), "a lone half of a character");
  assert.equal(cut("a🚢", 2), "a");
  const lines = "line\n".repeat(100);
  assert.equal(folded(lines).split("\n").length, 24);
  for (const short of ["", "short", "x".repeat(1700), "a\n".repeat(20)]) {
    assert.equal(folded(short), short);
  }
  assert.deepEqual(
    [sizeOf("é"), sizeOf("x".repeat(1536)), sizeOf("x".repeat(102400))],
    ["2 bytes", "1.5 KB", "100 KB"],
  );
});

test("rows separate days and group one sender's neighbouring messages", () => {
  const evening = new Date(2026, 2, 4, 23, 58).getTime();
  const minutes = [0, 1, 1.5, 3, 4, 20];
  const senders = ["a", "a", "b", "b", "b", "b"];
  const messages = minutes.map((minute, index) =>
    message({ from: senders[index]!, time: evening + minute * 60_000, id: index }),
  );
  const outline = messages.map((_, index) => {
    const { newDay, message, first, last } = rowAt(messages, index);
    return `${newDay ? "day " : ""}${message.msgid}${first ? "<" : ""}${last ? ">" : ""}`;
  });
  assert.deepEqual(outline, ["day 0<", "1>", "2<>", "day 3<", "4>", "5<>"]);
});

test("days are named by the calendar, not by hours", () => {
  const now = new Date(2026, 2, 5, 0, 10);
  assert.equal(dayName(new Date(2026, 2, 5, 0, 1), now), "Today");
  assert.equal(dayName(new Date(2026, 2, 4, 23, 59), now), "Yesterday");
  assert.match(dayName(new Date(2026, 2, 3), now), /2026/);
  assert.equal(listTime(new Date(2026, 2, 4, 1), now), "Yesterday");
  assert.notEqual(listTime(new Date(2026, 1, 1), now), listTime(new Date(2026, 2, 1), now));
});
