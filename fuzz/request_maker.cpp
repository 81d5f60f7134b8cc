#include "request_maker.h"

#include "check.h"
#include "kexbase/json_reader.h"

namespace imsdk::fuzz {
namespace {

constexpr std::size_t kLongestText = 40;
constexpr std::size_t kLongestList = 4;

const base::Value* Find(const base::Value* value, std::string_view key) {
  const base::DictionaryValue* dict = value ? value->GetIfDict() : nullptr;
  return dict ? dict->Find(key) : nullptr;
}

std::string Text(const base::Value* value) {
  const std::string* text = value ? value->GetIfString() : nullptr;
  return text ? *text : std::string();
}

}  // namespace

RequestMaker::RequestMaker(const std::string& document) {
  auto read = base::JSONReader::Read(document);
  FUZZ_CHECK(read);
  document_ = std::move(*read);
  const base::Value* methods = Find(&document_, "methods");
  FUZZ_CHECK(methods && methods->is_list());
  for (const base::Value& method : *methods->GetIfList()) {
    const std::string name = Text(Find(&method, "name"));
    const std::size_t dot = name.rfind('.');
    const base::Value* params = Find(&method, "params");
    const base::ListValue* list = params ? params->GetIfList() : nullptr;
    const base::Value* schema = list && !list->empty() ? Find(&(*list)[0], "schema") : nullptr;
    methods_.push_back({name.substr(0, dot), name.substr(dot + 1), schema});
  }
}

const base::Value* RequestMaker::Resolve(const base::Value* schema) const {
  constexpr std::string_view kStart = "#/components/schemas/";
  const std::string target = Text(Find(schema, "$ref"));
  if (!target.starts_with(kStart)) return schema;
  return Find(Find(Find(&document_, "components"), "schemas"), target.substr(kStart.size()));
}

base::Value RequestMaker::MakeRecord(const base::Value& schema, FuzzedDataProvider* data) const {
  base::DictionaryValue record;
  for (const auto& [key, value] : *Find(&schema, "properties")->GetIfDict()) {
    if (data->ConsumeProbability<float>() < 0.9f) record.Set(key, Make(&value, data));
  }
  return record;
}

base::Value RequestMaker::Make(const base::Value* schema, FuzzedDataProvider* data) const {
  const base::Value* resolved = Resolve(schema);
  std::string type = Text(Find(resolved, "type"));
  if (data->ConsumeProbability<float>() < 0.05f) {
    type = data->PickValueInArray<const char*>({"string", "integer", "array", "null", "boolean"});
  }
  if (type == "object" && Find(resolved, "properties")) return MakeRecord(*resolved, data);
  if (type == "array") {
    base::ListValue list;
    const base::Value* items = Find(resolved, "items");
    for (auto n = data->ConsumeIntegralInRange<std::size_t>(0, kLongestList); n > 0; --n) {
      list.Append(items ? Make(items, data) : base::Value());
    }
    return list;
  }
  if (type == "integer")
    return data->ConsumeIntegral<std::int64_t>() >> data->ConsumeIntegralInRange(0, 63);
  if (type == "boolean") return data->ConsumeBool();
  if (type != "string") return base::Value();
  // Names that the engine knows lead further than any others.
  switch (data->ConsumeIntegralInRange(0, 4)) {
    case 0:
      return "cnbazaro";
    case 1:
      return "harbor";
    case 2:
      return std::to_string(data->ConsumeIntegral<std::int64_t>());
    default:
      return data->ConsumeRandomLengthString(kLongestText);
  }
}

}  // namespace imsdk::fuzz
