#include "page/host_methods.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kexbase/json_reader.h"

namespace imsdk::host {
namespace {

// JSON schemas of keys.
constexpr std::string_view kText = R"({"type": "string"})";
constexpr std::string_view kInteger = R"({"type": "integer"})";
constexpr std::string_view kFlag = R"({"type": "integer", "enum": [0, 1]})";
constexpr std::string_view kDecimal = R"({"type": "string", "pattern": "^-?[0-9]+$"})";

#define OF(record) R"({"$ref": "#/components/schemas/)" record R"("})"
#define LIST_OF(record) \
  R"({"type": "array", "items": {"$ref": "#/components/schemas/)" record R"("}})"

struct Key {
  const char* name;
  std::string_view schema;
  const char* sentence;
};
struct Method {
  const char* name;
  const char* sentence;
  std::vector<Key> request;
  std::vector<Key> answer{};  // behind the envelope's keys
};

// A tribe or user of the first group is one of the messaging core's records; the second group takes
// those of "im.contact".
const std::vector<Method>& Methods() {
  static const Key kTribe{"stTribeID", OF("CoreTribeID"), "The tribe."};
  static const Key kGroup{"groupid", kDecimal, "The group; 0, also when missing, for none."};
  static const Key kUser{"userid", OF("IMUserID"), "The user."};
  static const Key kFound{"contacts", LIST_OF("IMContact"), "The users."};
  static const std::vector<Method> kMethods = {
      {"bridgehost.tribes.CreateTribe",
       "Makes a tribe or a multi-chat that the account owns.",
       {{"tribeName", kText, "Its name."},
        {"tribeType", OF("IMTribeType"), "What kind of tribe it is."},
        {"subType", kInteger, "Its class, see `GetAllClass`."},
        {"userList", LIST_OF("CoreTribeUser"),
         "Who is a member from the beginning, besides the account."},
        {"password", kText, "What to join by; without it everybody may join."}},
       {{"tribeid", kDecimal, "The new tribe."}}},
      {"bridgehost.tribes.JoinTribe",
       "Joins a tribe, or asks its managers for it.",
       {kTribe,
        {"password", kText, "What to join by, if it asks for one."},
        {"authinfo", kText, "Words for who decides."}},
       {{"waiting", kFlag, "1: a manager has to allow it first."}}},
      {"bridgehost.tribes.InviteToTribe",
       "Makes users members of a multi-chat, or asks them to join a tribe.",
       {{"stUIDs", LIST_OF("CoreUserID"), "The users."},
        kTribe,
        {"authinfo", kText, "Words for those who are asked."}}},
      {"bridgehost.tribes.QuitTribe", "Leaves a tribe; not the owner.", {kTribe}},
      {"bridgehost.tribes.TransferTribe",
       "Hands a tribe over to a member; the owner only.",
       {{"stUID", OF("CoreUserID"), "The next owner."}, kTribe}},
      {"bridgehost.tribes.EnableTribe", "Opens a closed tribe again; the owner only.", {kTribe}},
      {"bridgehost.tribes.SetTribe",
       "Changes what has no method: bulletin, portrait and images; managers only.",
       {kTribe,
        {"key", OF("TribeModifyKey"), "What to change."},
        {"value", kText, "The new value."}}},
      {"bridgehost.tribes.SetAttention",
       "Pays attention to a member, or does not any more.",
       {{"stUID", OF("CoreUserID"), "The member."},
        kTribe,
        {"on", kFlag, "1, also when missing: attention."}}},

      {"bridgehost.contacts.GetContactList",
       "The account's contacts and their groups.",
       {},
       {{"groups", LIST_OF("IMContactGroup"), "The groups and sub-groups."},
        {"contacts", LIST_OF("IMListedContact"), "The contacts."}}},
      {"bridgehost.contacts.AskContact",
       "Asks somebody to become a contact; `onContactVerifyMsg` tells what became of it.",
       {kUser, kGroup, {"authinfo", kText, "Words for who decides."}}},
      {"bridgehost.contacts.RemoveContact", "Takes somebody off the account's list.", {kUser}},
      {"bridgehost.contacts.MoveContact", "Puts a contact into a group.", {kUser, kGroup}},
      {"bridgehost.contacts.SetAsterisk",
       "Marks a contact as one of those who matter most, or no longer.",
       {kUser, {"on", kFlag, "1, also when missing: marked."}}},
      {"bridgehost.contacts.SetGroup",
       "Makes a group, renames one, or removes one when the name is empty.",
       {{"groupid", kDecimal, "The group; 0, also when missing, makes one."},
        {"parentid", kDecimal, "The group that a new one is part of; 0 for none."},
        {"name", kText, "Its name."}},
       {{"groupid", kDecimal, "The group."}}},
      {"bridgehost.contacts.SetProfile",
       "The account's own name and portrait, for all who see it.",
       {{"display", kText, "The name; empty for the nick."},
        {"portrait", kText, "The path of a picture, as tokens write it."}}},
      {"bridgehost.contacts.SearchUsers",
       "Users with a text in nick or name, at most 50.",
       {{"key", kText, "The text, whatever the case."}},
       {kFound}},
      {"bridgehost.contacts.GetBlackList", "Who is on the account's black list.", {}, {kFound}},
      {"bridgehost.contacts.SetBlack",
       "Puts somebody on the black list, or takes him off it.",
       {kUser, {"on", kFlag, "1, also when missing: on it."}}},
  };
  return kMethods;
}

base::Value Read(std::string_view json) { return std::move(*base::JSONReader::Read(json)); }

base::DictionaryValue Object(const std::vector<Key>& keys, bool required) {
  base::DictionaryValue properties;
  base::ListValue names;
  for (const Key& key : keys) {
    base::Value schema = Read(key.schema);
    schema.GetIfDict()->Set("description", key.sentence);
    properties.Set(key.name, std::move(schema));
    names.Append(key.name);
  }
  base::DictionaryValue object;
  object.Set("type", "object");
  object.Set("properties", std::move(properties));
  if (required) object.Set("required", std::move(names));
  return object;
}

base::Value AnswerOf(const Method& method) {
  base::Value envelope = Read(OF("ResultCode"));
  if (method.answer.empty()) return envelope;
  base::ListValue parts;
  parts.Append(std::move(envelope));
  parts.Append(Object(method.answer, true));
  base::DictionaryValue all;
  all.Set("allOf", std::move(parts));
  return all;
}

}  // namespace

base::ListValue HostMethods() {
  base::ListValue methods;
  for (const Method& method : Methods()) {
    base::DictionaryValue request;
    request.Set("name", "request");
    request.Set("schema", Object(method.request, false));
    base::ListValue params;
    params.Append(std::move(request));
    base::DictionaryValue answer;
    answer.Set("name", "answer");
    answer.Set("schema", AnswerOf(method));
    base::DictionaryValue described;
    described.Set("name", method.name);
    described.Set("description", method.sentence);
    described.Set("params", std::move(params));
    described.Set("result", std::move(answer));
    methods.Append(std::move(described));
  }
  return methods;
}

}  // namespace imsdk::host
