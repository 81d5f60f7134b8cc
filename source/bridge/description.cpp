#include "source/bridge/description.h"

#include <algorithm>
#include <cctype>
#include <deque>
#include <string>
#include <utility>
#include <vector>

#include "imsdk/biz/user_id.h"
#include "kexbase/strings.h"
#include "kexcom/result.h"

namespace imsdk::bridge {
namespace {

constexpr Values kEngineCode{
    Value<biz::kEngineOk>("Success."),
    Value<biz::kEngineNotLoggedIn>("The account is not logged in."),
    Value<biz::kEngineUnknownUser>("There is no such user."),
    Value<biz::kEngineWrongPassword>("The password is wrong."),
    Value<biz::kEngineTokenExpired>("The token is unknown or too old."),
    Value<biz::kEngineNoLink>("The server could not be reached."),
    Value<biz::kEngineTimeout>("The server did not answer in time."),
    Value<biz::kEngineTooLarge>("The message or request is over the size limit."),
    Value<biz::kEngineEmpty>("There is nothing to send."),
    Value<biz::kEngineNotFound>("There is no such message or conversation."),
    Value<biz::kEngineStorage>("The local or the server's store failed."),
    Value<biz::kEngineRefused>("The server refuses: it is not allowed now."),
    Value<biz::kEngineBusy>("Too many operations of this account are open."),
    Value<biz::kEngineUnsupported>("The account's server cannot do this."),
    Value<biz::kEnginePositionLost>(
        "The server does not know any more how far the account had read."),
    Value<biz::kEngineDamaged>(
        "A store was damaged, missing or behind what it was; a login that succeeds has this as its "
        "subcode."),
};

constexpr NamedValue kComponentCodeValues[] = {
    {E_NOTIMPL, "E_NOTIMPL", "The module does not have the method."},
    {E_UNEXPECTED, "E_UNEXPECTED", "Something is not ready, for instance nobody is logged in."},
    {E_INVALIDARG, "E_INVALIDARG", "The request cannot be used."},
};
constexpr ValueSet kComponentCode{"ComponentCode", kComponentCodeValues};

constexpr const TypeInfo& kEnvelope = TypeInfoOf<PlainForm, biz::ResultCode>::kInfo;

// What a record is part of.
enum class Use {
  kWhole,     // an answer or a notification: all keys are there
  kRequest,   // a request itself: every key may be missing
  kInRequest  // below a request: whole where answers have the record too
};

bool Same(const TypeInfo& a, const TypeInfo& b);
bool Same(const FieldInfo& a, const FieldInfo& b) {
  return a.key == b.key && std::string_view(a.sentence) == b.sentence && a.values == b.values &&
         Same(*a.type, *b.type);
}
bool Same(const TypeInfo& a, const TypeInfo& b) {
  if (a.kind != b.kind || a.name != b.name || !a.item != !b.item) return false;
  return (!a.item || Same(*a.item, *b.item)) &&
         std::equal(a.fields.begin(), a.fields.end(), b.fields.begin(), b.fields.end(),
                    [](const FieldInfo& x, const FieldInfo& y) { return Same(x, y); });
}

bool HasKeys(const TypeInfo& type) {
  return type.kind != JsonKind::kRecord || !type.fields.empty();
}

// "Singlemsg" of "im.singlemsg".
std::string PathWord(std::string_view path) {
  std::string word(path.substr(path.rfind('.') + 1));
  word[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(word[0])));
  return word;
}

class Describer {
 public:
  explicit Describer(const ModuleTable& modules) : modules_(modules) {}

  std::wstring Write(std::wstring_view version);

 private:
  struct Component {
    std::string name;
    const TypeInfo* type;
    bool whole;
    std::string path;  // where it came up first
  };

  void EachModule(const auto& visit) {
    for (const auto& [path, module] : modules_) {
      path_ = base::WideToUTF8(path);
      visit(*module);
    }
  }

  // Names the records of answers and notifications first: requests refer to them.
  void NameWhole(const TypeInfo& type);
  // Good as long as the describer.
  const std::string& NameOf(const TypeInfo& type, Use use);
  // Who has the name; null when nobody.
  const Component* Taker(const std::string& name) const;

  void Key(std::string_view key) { json_.Key(key); }
  void Text(std::string_view text) { json_.String(base::UTF8ToWide(text)); }
  void Member(std::string_view key, std::string_view text) {
    Key(key);
    Text(text);
  }
  void Ref(std::string_view name);
  void Ref(const ValueSet& values);
  void RefMember(std::string_view key, const ValueSet& values);

  // The members of a schema, into the object that is open.
  void Schema(const TypeInfo& type, const ValueSet* values, Use use);
  void FieldSchema(const FieldInfo& field, Use use);
  void RecordSchema(const TypeInfo& record, bool whole);
  void ValuesSchema(const ValueSet& values);
  void AnswerSchema(const TypeInfo& answer);

  void Item(std::string_view name, const char* sentence);
  void Param(std::string_view name, const TypeInfo& type, Use use);
  void Method(const MethodRow& row);
  void Notice(const NotifyInfo& row);
  void Components();

  const ModuleTable& modules_;
  JsonText json_;
  std::string path_;               // of the module that is being described
  std::deque<Component> records_;  // in the order in which they are named
  std::vector<const ValueSet*> values_;
};

void Describer::NameWhole(const TypeInfo& type) {
  if (type.item) return NameWhole(*type.item);
  if (type.kind != JsonKind::kRecord) return;
  for (const FieldInfo& field : type.fields) NameWhole(*field.type);
  if (HasKeys(type)) NameOf(type, Use::kWhole);
}

const std::string& Describer::NameOf(const TypeInfo& type, Use use) {
  const auto named = [&](bool whole) -> const Component* {
    for (const Component& record : records_) {
      if (record.whole == whole && Same(*record.type, type)) return &record;
    }
    return nullptr;
  };
  const Component* known = named(use != Use::kRequest);
  if (!known && use == Use::kInRequest) known = named(false);
  if (known) return known->name;

  // The first path that has a record gives it the plain name; another shape of the same name is
  // named after its own path, but a request beside the record of answers is named as one.
  const bool whole = use == Use::kWhole;
  const char* const suffix = whole || type.name.ends_with("Request") ? "" : "Request";
  std::string name(type.name);
  const Component* taker = Taker(name);
  if (taker && taker->whole) name += suffix;
  for (int tried = 1; Taker(name); ++tried) {
    name = PathWord(path_);
    name += type.name;
    if (tried > 1) name += suffix;
    if (tried > 2) name += std::to_string(tried);
  }
  return records_.emplace_back(Component{std::move(name), &type, whole, path_}).name;
}

const Describer::Component* Describer::Taker(const std::string& name) const {
  const auto taker = std::ranges::find(records_, name, &Component::name);
  return taker == records_.end() ? nullptr : &*taker;
}

void Describer::Ref(std::string_view name) {
  std::string place = "#/components/schemas/";
  place += name;
  Member("$ref", place);
}

void Describer::Ref(const ValueSet& values) {
  if (std::ranges::find(values_, &values) == values_.end()) values_.push_back(&values);
  Ref(values.name);
}

void Describer::Schema(const TypeInfo& type, const ValueSet* values, Use use) {
  if (type.kind == JsonKind::kRecord && HasKeys(type)) return Ref(NameOf(type, use));
  if (values && !type.item) {
    return Ref(*values);
  }
  switch (type.kind) {
    case JsonKind::kText:
      return Member("type", "string");
    case JsonKind::kFile:
      Member("type", "string");
      return Member("format", "path");
    case JsonKind::kDecimal:
      Member("type", "string");
      return Member("pattern", "^(-?[0-9]{1,19})?$");
    case JsonKind::kInteger:
    case JsonKind::kUnsigned:
      Member("type", "integer");
      return Member("format", type.kind == JsonKind::kInteger ? "int32" : "uint32");
    case JsonKind::kWhole:
      Member("type", "integer");
      return Member("format", "int64");
    case JsonKind::kFlag:
      Member("type", "integer");
      Key("enum");
      json_.BeginList();
      json_.Integer(0);
      json_.Integer(1);
      return json_.EndList();
    case JsonKind::kList:
      Member("type", "array");
      Key("items");
      json_.BeginObject();
      Schema(*type.item, values, use == Use::kRequest ? Use::kInRequest : use);
      return json_.EndObject();
    case JsonKind::kRecord:
      return Member("type", "object");
  }
}

void Describer::FieldSchema(const FieldInfo& field, Use use) {
  json_.BeginObject();
  Schema(*field.type, field.values, use);
  std::string says;
  if (field.of_kind) says.append(field.of_kind).append(": ");
  Member("description", says.append(field.sentence));
  json_.EndObject();
}

void Describer::RecordSchema(const TypeInfo& record, bool whole) {
  Member("type", "object");
  Key("properties");
  json_.BeginObject();
  for (const FieldInfo& field : record.fields) {
    // Kinds of record may have a key each in a way of their own.
    const auto shares_key = [&](const FieldInfo& other) { return other.key == field.key; };
    if (&*std::ranges::find_if(record.fields, shares_key) != &field) continue;
    const bool several = std::ranges::count_if(record.fields, shares_key) > 1;
    Key(field.key);
    if (several) {
      json_.BeginObject();
      Key("anyOf");
      json_.BeginList();
    }
    for (const FieldInfo& other : record.fields) {
      if (shares_key(other)) FieldSchema(other, whole ? Use::kWhole : Use::kInRequest);
    }
    if (several) {
      json_.EndList();
      json_.EndObject();
    }
  }
  json_.EndObject();
  if (!whole) return;
  Key("required");
  json_.BeginList();
  for (const FieldInfo& field : record.fields) {
    if (!field.of_kind) Text(field.key);
  }
  json_.EndList();
}

void Describer::ValuesSchema(const ValueSet& values) {
  json_.BeginObject();
  Member("type", "integer");
  Key("oneOf");
  json_.BeginList();
  for (const NamedValue& value : values.values) {
    json_.BeginObject();
    Key("const");
    json_.Integer(value.value);
    Member("title", value.name);
    Member("description", value.sentence);
    json_.EndObject();
  }
  json_.EndList();
  json_.EndObject();
}

void Describer::AnswerSchema(const TypeInfo& answer) {
  const std::string envelope = NameOf(kEnvelope, Use::kWhole);
  json_.BeginObject();
  if (!HasKeys(answer)) {
    Ref(envelope);
  } else if (answer.under_result) {
    Member("type", "object");
    Key("properties");
    json_.BeginObject();
    for (const FieldInfo& field : kEnvelope.fields) {
      Key(field.key);
      if (field.key != "result") {
        FieldSchema(field, Use::kWhole);
        continue;
      }
      json_.BeginObject();
      Schema(answer, nullptr, Use::kWhole);
      json_.EndObject();
    }
    json_.EndObject();
    Key("required");
    json_.BeginList();
    for (const FieldInfo& field : kEnvelope.fields) Text(field.key);
    json_.EndList();
  } else {
    Key("allOf");
    json_.BeginList();
    for (const std::string& name : {envelope, NameOf(answer, Use::kWhole)}) {
      json_.BeginObject();
      Ref(name);
      json_.EndObject();
    }
    json_.EndList();
  }
  json_.EndObject();
}

// The beginning of a method's or a notification's object.
void Describer::Item(std::string_view name, const char* sentence) {
  json_.BeginObject();
  Member("name", (path_ + '.').append(name));
  Member("description", sentence);
  Member("paramStructure", "by-name");
}

void Describer::Param(std::string_view name, const TypeInfo& type, Use use) {
  Key("params");
  json_.BeginList();
  if (HasKeys(type)) {
    json_.BeginObject();
    Member("name", name);
    Key("required");
    json_.Boolean(true);
    Key("schema");
    json_.BeginObject();
    Schema(type, nullptr, use);
    json_.EndObject();
    json_.EndObject();
  }
  json_.EndList();
}

void Describer::Method(const MethodRow& row) {
  Item(row.name, row.sentence);
  Param("request", *row.request, Use::kRequest);
  Key("result");
  json_.BeginObject();
  Member("name", "answer");
  Key("schema");
  AnswerSchema(*row.answer);
  json_.EndObject();
  if (HasKeys(*row.request)) {
    Key("errors");
    json_.BeginList();
    json_.BeginObject();
    Key("code");
    json_.Integer(E_INVALIDARG);
    Key("message");
    json_.String(row.texts.invalid);
    json_.EndObject();
    json_.EndList();
  }
  json_.EndObject();
}

void Describer::Notice(const NotifyInfo& row) {
  Item(base::WideToUTF8(row.name), row.sentence);
  Param("payload", *row.payload, Use::kWhole);
  json_.EndObject();
}

void Describer::RefMember(std::string_view key, const ValueSet& values) {
  Key(key);
  json_.BeginObject();
  Ref(values);
  json_.EndObject();
}

void Describer::Components() {
  Key("components");
  json_.BeginObject();
  Key("schemas");
  json_.BeginObject();
  // What only other records refer to is named while they are written.
  for (std::size_t index = 0; index < records_.size(); ++index) {
    const Component& record = records_[index];
    path_ = record.path;
    Key(record.name);
    json_.BeginObject();
    RecordSchema(*record.type, record.whole);
    json_.EndObject();
  }
  for (const ValueSet* values : values_) {
    Key(values->name);
    ValuesSchema(*values);
  }
  json_.EndObject();
  json_.EndObject();
}

std::wstring Describer::Write(std::wstring_view version) {
  NameWhole(kEnvelope);
  EachModule([&](const CBridgeBase& module) {
    for (const MethodRow& row : module.Methods()) NameWhole(*row.answer);
    for (const NotifyInfo* row : module.listener().rows()) NameWhole(*row->payload);
  });
  json_.BeginObject();
  Member("openrpc", "1.3.2");
  Key("info");
  json_.BeginObject();
  Member("title", "imsdkbridge");
  Key("version");
  json_.String(version);
  json_.EndObject();
  Key("x-paths");
  json_.BeginList();
  EachModule([&](const CBridgeBase&) {
    if (path_.starts_with("im.")) Text(path_);
  });
  json_.EndList();
  Key("x-codes");
  json_.BeginObject();
  RefMember("engine", kEngineCode);
  RefMember("component", kComponentCode);
  json_.EndObject();
  Key("methods");
  json_.BeginList();
  EachModule([&](const CBridgeBase& module) {
    for (const MethodRow& row : module.Methods()) Method(row);
  });
  json_.EndList();
  Key("x-notifications");
  json_.BeginList();
  EachModule([&](const CBridgeBase& module) {
    for (const NotifyInfo* row : module.listener().rows()) Notice(*row);
  });
  json_.EndList();
  Components();
  json_.EndObject();
  return json_.Take();
}

}  // namespace

std::wstring ProtocolDescription(const ModuleTable& modules, std::wstring_view version) {
  return Describer(modules).Write(version);
}

}  // namespace imsdk::bridge
