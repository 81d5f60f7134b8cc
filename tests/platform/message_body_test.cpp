// Bodies are read as they were written, and as the table says that all sides share.
#include "kexbase/message_body.h"

#include <gtest/gtest.h>

#include <random>

#include "kexbase/json_reader.h"
#include "kexbase/strings.h"
#include "message_bodies.h"  // the table, as text

namespace {

using base::BodyPart;
using Part = std::pair<BodyPart::Kind, std::wstring>;  // with its text or token
using Parts = std::vector<Part>;

// What is read, texts one after the other joined.
Parts Read(const std::wstring& body) {
  Parts parts;
  for (const BodyPart& part : base::ReadBody(body)) {
    if (part.kind == BodyPart::kText && !parts.empty() && parts.back().first == part.kind) {
      parts.back().second += part.source;
    } else {
      parts.emplace_back(part.kind, part.source);
    }
  }
  return parts;
}

std::wstring Write(const Parts& parts) {
  base::BodyWriter writer;
  for (const auto& [kind, source] : parts) {
    if (kind == BodyPart::kText) {
      writer.AddText(source);
    } else {
      writer.AddToken(source);
    }
  }
  return writer.Finish();
}

std::wstring At(const base::ListValue& item, size_t index) {
  return base::UTF8ToWide(*item[index].GetIfString());
}

Part Made(const base::ListValue& item) {
  const std::wstring kind = At(item, 0);
  if (kind == L"text") return {BodyPart::kText, At(item, 1)};
  if (kind == L"emotion") {
    return {BodyPart::kEmotion, base::EmotionToken(At(item, 1), At(item, 2))};
  }
  if (kind == L"file") return {BodyPart::kFile, base::FileToken(At(item, 1), At(item, 2))};
  return {BodyPart::kPicture, base::PictureToken(At(item, 1), At(item, 2), At(item, 3))};
}

TEST(MessageBody, TheTableOfAllSides) {
  const auto table = base::JSONReader::Read(kMessageBodies);
  ASSERT_TRUE(table);
  for (const base::Value& row : *table->GetIfList()) {
    const auto& one = *row.GetIfDict();
    SCOPED_TRACE(*one.Find("what")->GetIfString());
    const std::wstring body = base::UTF8ToWide(*one.Find("body")->GetIfString());
    Parts parts;
    for (const base::Value& item : *one.Find("items")->GetIfList()) {
      parts.push_back(Made(*item.GetIfList()));
    }
    EXPECT_EQ(Read(body), parts);
    if (one.Find("older")) continue;
    EXPECT_EQ(base::WideToUTF8(Write(parts)), base::WideToUTF8(body));
  }
}

TEST(MessageBody, AnyTextAndTokensAreReadAsTheyWereWritten) {
  const std::wstring pieces[] = {L"pic:impicture",
                                 L"pic:imemotion",
                                 L"pic:",
                                 L"|",
                                 L"|",
                                 L"?",
                                 L"filepath=",
                                 L"filepath=",
                                 L"&shortcut=",
                                 L"&fileMD5=",
                                 L"file:",
                                 L"\x200B",
                                 L"\x200B",
                                 L" ",
                                 L"\n",
                                 L"/:smile",
                                 L"%2F",
                                 L"a",
                                 L"ID",
                                 L"\x660E\x5929",
                                 base::UTF8ToWide("\U0001F600"),
                                 std::wstring(1, L'\0')};
  std::mt19937 random(1);
  const auto text = [&] {
    std::wstring made;
    for (auto left = random() % 9; left > 0; --left) made += pieces[random() % std::size(pieces)];
    return made;
  };
  for (int round = 0; round < 10000; ++round) {
    Parts parts;
    for (auto left = random() % 6; left > 0; --left) {
      if (const std::wstring typed = text(); random() % 2) {
        if (typed.empty()) continue;
        if (!parts.empty() && parts.back().first == BodyPart::kText) {
          parts.back().second += typed;
        } else {
          parts.emplace_back(BodyPart::kText, typed);
        }
      } else if (random() % 2) {
        parts.emplace_back(BodyPart::kEmotion, base::EmotionToken(typed, text()));
      } else if (random() % 2) {
        parts.emplace_back(BodyPart::kFile, base::FileToken(typed, text()));
      } else {
        parts.emplace_back(BodyPart::kPicture, base::PictureToken(typed, L"0af", text()));
      }
    }
    const std::wstring body = Write(parts);
    ASSERT_EQ(Read(body), parts) << base::WideToUTF8(body);
    base::BodyWriter again;
    again.AddBody(body);
    ASSERT_EQ(again.Finish(), body);
    // A text without tokens stays as readable as it was.
    const std::wstring any = text() + text();
    ASSERT_EQ(Read(Write({{BodyPart::kText, any}})).size(), any.empty() ? 0u : 1u);
  }
}

TEST(MessageBody, PathsAndNames) {
  const std::wstring body = L"see file:a b.pdf|filepath=c%2Fd\x200Bpic:impicture|m?filepath=e";
  const auto parts = base::ReadBody(body);
  ASSERT_EQ(parts.size(), 3u);
  EXPECT_EQ(parts[1].name, L"a b.pdf");
  EXPECT_EQ(parts[1].path, L"c%2Fd");
  EXPECT_EQ(parts[2].path, L"e");
  // No name can end a token early, or begin another one.
  EXPECT_EQ(base::FileToken(L"a|b\nmy file:c", L"/"), L"file:a_b_my file_c|filepath=%2F");
  EXPECT_EQ(base::FileToken(std::wstring(2000, L'x'), L""),
            L"file:" + std::wstring(512, L'x') + L"|filepath=");
}

// Each letter is looked at a few times, however many tokens only begin.
TEST(MessageBody, BeginningsAreCheap) {
  for (const std::wstring piece :
       {L"pic:impicture|", L"pic:impicture", L"file:", L"|filepath=", L"file:a|", L"filepath=|",
        L"pic:imemotion|ID?", L"|", L"|\x200B"}) {
    std::wstring body;
    while (body.size() < 1'000'000) body += piece;
    std::wstring read;
    for (const BodyPart& part : base::ReadBody(body)) {
      ASSERT_EQ(part.kind, BodyPart::kText);
      read += part.source;
    }
    EXPECT_EQ(read.size(), piece == L"|\x200B" ? body.size() / 2 : body.size());
  }
}

}  // namespace
