import assert from "node:assert/strict";
import { test } from "node:test";
import { readBody, unescaped, writeBody, type BodyPart } from "@imsdkbridge/client";
import table from "../../../tests/data/message_bodies.json" with { type: "json" };

const made: Record<string, (...values: string[]) => BodyPart> = {
  text: (text = "") => ({ kind: "text", text }),
  picture: (path = "", md5 = "", type = "") => ({ kind: "picture", path, md5, type }),
  emotion: (path = "", shortcut = "") => ({ kind: "emotion", path, shortcut }),
  file: (name = "", path = "") => ({ kind: "file", name, path }),
};

test("bodies are read and written as the table says that all sides share", () => {
  for (const { what, items, body, older } of table as {
    what: string;
    items: string[][];
    body: string;
    older?: boolean;
  }[]) {
    const parts = items.map(([kind, ...values]) => made[kind!]!(...values));
    assert.deepEqual(readBody(body), parts, what);
    if (!older) assert.equal(writeBody(parts), body, what);
  }
});

test("any texts and tokens are read as they were written", () => {
  const pieces =
    "pic:impicture pic:imemotion pic: | | ? filepath= filepath= &shortcut= &fileMD5= file: \u200b " +
    "\u200b /:smile %2F a ID 明天 😀 \0";
  const alphabet = [...pieces.split(" "), " ", "\n"];
  let state = 1;
  const random = (below: number) => ((state = (state * 48271) % 2147483647) >>> 8) % below;
  const text = () =>
    Array.from({ length: random(9) }, () => alphabet[random(alphabet.length)]!).join("");
  for (let round = 0; round < 20_000; round++) {
    const parts: BodyPart[] = [];
    for (let left = random(6); left > 0; left--) {
      const last = parts.at(-1);
      const kind = ["text", "text", "picture", "emotion", "file"][random(5)]!;
      const typed = text();
      // A name has neither bars nor the beginning of another file.
      if (kind === "file") parts.push(made.file!(typed.replace(/[|\0\n]|file:/g, ""), text()));
      else if (kind !== "text") parts.push(made[kind]!(typed, text().replace(/\W/g, ""), text()));
      else if (last?.kind === "text") last.text += typed;
      else if (typed) parts.push(made.text!(typed));
    }
    for (const part of parts) if (part.kind === "picture") part.md5 = "0af";
    const body = writeBody(parts);
    assert.deepEqual(readBody(body), parts, JSON.stringify(body));
    assert.equal(writeBody(readBody(body)), body);
  }
});

test("names, paths and halves of characters do no harm; beginnings are cheap", () => {
  const file = (name: string) => writeBody([{ kind: "file", name, path: "/\ud800" }]);
  assert.equal(file("a|b\nfile:c"), "file:a_b_file_c|filepath=%2F%EF%BF%BD");
  assert.equal(file("x".repeat(511) + "😀"), `file:${"x".repeat(511)}|filepath=%2F%EF%BF%BD`);
  assert.deepEqual(["a%20b+c%2B", "100%", "%ff"].map(unescaped), ["a b c+", "100%", "%ff"]);
  const before = performance.now();
  for (const piece of ["pic:impicture|", "pic:impicture", "file:", "|filepath=", "file:a|", "|"]) {
    const body = piece.repeat(1_000_000 / piece.length);
    assert.deepEqual(readBody(body), [{ kind: "text", text: body }]);
  }
  readBody("pic:impicture|?filepath=" + "x".repeat(1_000_000));
  assert.ok(performance.now() - before < 20_000, "each letter is looked at a few times");
});
