import assert from "node:assert/strict";
import { test } from "node:test";
import type { IMMsgStatus, IMMsgType } from "@imsdkbridge/client";
import { cut, plainText, preview } from "../src/text/body.ts";
import { folded, sizeOf } from "../src/text/fold.ts";
import { hitLine, lineOf, piecesOf, placeholdersIn, type Line } from "../src/text/line.ts";
import { rowAt } from "../src/text/rows.ts";
import { dayName, listTime } from "../src/text/time.ts";
import { message } from "./rig.ts";

/** A line with emotions in angle brackets and hits in square ones, others in braces. */
function shown({ stretches, emotions }: Line): string {
  let used = 0;
  return stretches
    .map(({ text, hit }) => {
      const pieces = piecesOf(text, emotions.slice(used));
      used += placeholdersIn(text);
      const words = pieces
        .map((piece) => (typeof piece === "string" ? piece : `<${piece.shortcut}>`))
        .join("");
      return hit ? `[${words}]` : words.replace(/\[(.*)\]/, "{$1}");
    })
    .join("")
    .replace(/ +/g, " ");
}

test("previews and hits read like the message", () => {
  const picture = "pic:impicture|D41D?filepath=C%3A%5Ca%20b%26.png&fileMD5=D41D&filetype=png";
  const smile = "pic:imemotion|ID?filepath=%2Fe%2Fsmile.gif&shortcut=%2F%3A%5E_%5E";
  const previews: [msgtype: IMMsgType, msgstatus: IMMsgStatus, body: string, words: string][] = [
    [0, 3, `a\n\n b${smile}`, "a b/:^_^"],
    [0, 3, `${smile}\u200b${smile}\u200b!!!`, "/:^_^/:^_^!!!"],
    [0, 3, "pic:impicture|\u200bM?filepath=a", "pic:impicture|M?filepath=a"],
    [1, 3, picture, "[Picture]"],
    [3, 3, "file:a b.pdf|filepath=%2Fd%2Fa.pdf", "[File] a b.pdf"],
    [2, 3, "file:v.amr|filepath=x", "[Voice message]"],
    [5, 3, "", "[Window shake]"],
    [0, 4, "", "Message withdrawn"],
  ];
  for (const [msgtype, msgstatus, msgbody, words] of previews) {
    assert.equal(preview({ msgtype, msgstatus, msgbody }), words);
  }
});

test("hits are marked in the message's own words alone", () => {
  const emotion = "pic:imemotion|ID?filepath=a&shortcut=%2F%3Asmile\u200b";
  const cases: [msgtype: IMMsgType, body: string, query: string, line: string][] = [
    [0, `好的${emotion}明天见面吧`, "明天", "好的</:smile>[明天]见面吧"],
    [0, `smile${emotion}smile, no`, "smile", "[smile]</:smile>[smile], no"],
    [0, "the picture: pic:impicture|?filepath=b", "picture", "the [picture]: {Picture}"],
    [3, "file:a file.pdf|filepath=b", "file", "{File} a [file].pdf"],
    [0, `${"far ".repeat(30)}${emotion}needle`, "needle", "…far far far far far </:smile>[needle]"],
    [0, "x".repeat(200), "y", "x".repeat(160)],
  ];
  for (const [msgtype, msgbody, query, line] of cases) {
    const found = hitLine({ ...message({ id: 1, body: msgbody }), msgtype }, false, [query]);
    assert.equal(shown(found), line);
  }
});

test("lines and copies read like the message", () => {
  const emotion = (name: string) =>
    `pic:imemotion|ID?filepath=emotions%2F${name}.svg&shortcut=%2F%3A${name}`;
  const picture = "pic:impicture|M?filepath=a.png&fileMD5=M&filetype=png";
  const copies: [body: string, copied: string][] = [
    [`look${picture}好`, "look\n[Picture]\n好"],
    [`look\n${picture}`, "look\n[Picture]"],
    [`${picture} ${emotion("ship")}`, "[Picture]\n /:ship"],
    [`a ${emotion("smile")} b`, "a /:smile b"],
  ];
  for (const [msgbody, copied] of copies) {
    assert.equal(plainText({ msgtype: 0, msgbody }), copied);
  }
  const auto = { others: "", fixmsgread: 0, autochatmsg: 1, syschatmsg: 0 };
  const body = `one\n ${emotion("smile")} two ${emotion("heart")}`;
  const lines: [Parameters<typeof message>[0], mine: boolean, line: string][] = [
    [{ id: 1, body }, false, "one </:smile> two </:heart>"],
    [{ id: 1, body }, true, "You: one </:smile> two </:heart>"],
    [{ id: 1, body: "away", extinfo: auto }, false, "Automatic reply: away"],
    [{ id: 1, body, msgstatus: 2 }, true, "Not sent: one </:smile> two </:heart>"],
    [{ id: 1, body: "typed \ufffc here" }, false, "typed \ufffd here"],
    [{ id: 1, body, msgstatus: 4 }, false, "peer withdrew a message"],
  ];
  for (const [fields, mine, line] of lines) {
    assert.equal(shown(lineOf(message(fields), mine)), line);
  }
  // The emotions of the part that is left out must not stand for those of the part shown.
  const far = `${emotion("smile")} ${"word ".repeat(20)}${emotion("ship")} needle ${emotion("heart")}`;
  const hit = shown(hitLine(message({ id: 1, body: far }), false, ["needle"]));
  assert.match(hit, /^….*word <\/:ship> \[needle\] <\/:heart>$/);
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
