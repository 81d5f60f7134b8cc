#include "kexbase/values.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

using base::DictionaryValue;
using base::ListValue;
using base::Value;

std::string Keys(const DictionaryValue& dictionary) {
  std::string keys;
  for (const auto& [key, value] : dictionary) keys += key + " ";
  return keys;
}

TEST(Values, IntegersKeepTheirValueWhateverTheirType) {
  const Value big(UINT64_MAX);
  EXPECT_EQ(big.type(), Value::Type::kUint64);
  EXPECT_EQ(big.GetIfInt64(), std::nullopt);
  EXPECT_EQ(big.GetIfUint64(), UINT64_MAX);
  // One number has one form, so that equal numbers compare equal.
  EXPECT_EQ(Value(uint64_t{INT64_MAX}).type(), Value::Type::kInt64);
  EXPECT_EQ(Value(uint64_t{5}), Value(5));
  EXPECT_EQ(Value(INT64_MIN).GetIfInt64(), INT64_MIN);
  EXPECT_EQ(Value(UINT32_MAX).GetIfInt64(), int64_t{UINT32_MAX});
  EXPECT_EQ(Value(-1).GetIfUint64(), std::nullopt);
  EXPECT_EQ(Value(-1).GetIfDouble(), -1.0);
  EXPECT_EQ(Value(1.0).GetIfInt64(), std::nullopt);
  EXPECT_NE(Value(1.0), Value(1));
  // A pointer to text is text, not a truth value.
  EXPECT_EQ(*Value("text").GetIfString(), "text");
  EXPECT_TRUE(Value(true).is_bool());
}

TEST(Values, DictionaryKeepsTheOrderOfKeys) {
  DictionaryValue dictionary;
  dictionary.Set("code", 0);
  dictionary.Set("subcode", 1);
  dictionary.Set("result", "success");
  dictionary.Set("code", "replaced");
  EXPECT_EQ(Keys(dictionary), "code subcode result ");
  EXPECT_EQ(*dictionary.Find("code"), Value("replaced"));
  EXPECT_EQ(dictionary.Find("cod"), nullptr);
  EXPECT_TRUE(dictionary.Remove("subcode"));
  EXPECT_FALSE(dictionary.Remove("subcode"));
  EXPECT_EQ(Keys(dictionary), "code result ");

  DictionaryValue other;
  other.Set("result", "success");
  other.Set("code", "replaced");
  EXPECT_FALSE(dictionary == other);
}

TEST(Values, CopiesAreDeep) {
  ListValue list;
  list.Append(DictionaryValue()).GetIfDict()->Set("a", 1);
  const Value original(list);
  Value copy = original;
  copy.GetIfList()->operator[](0).GetIfDict()->Set("a", 2);
  EXPECT_EQ(original, Value(list));
  EXPECT_NE(copy, original);
  const Value moved = std::move(copy);
  EXPECT_EQ(*(*moved.GetIfList())[0].GetIfDict()->Find("a"), Value(2));
}

}  // namespace
