#include "page/page_protocol.h"

#include "kexbase/json_reader.h"
#include "kexbase/json_writer.h"
#include "page/host_methods.h"

namespace imsdk::host {
namespace {

constexpr std::string_view kSchemas = R"({
  "ChatWindowState": {
    "type": "object",
    "properties": {
      "cid": {"$ref": "#/components/schemas/IMUserID", "description": "The conversation."},
      "visible": {"type": "integer", "enum": [0, 1],
        "description": "1: the person can see the conversation."},
      "activated": {"type": "integer", "enum": [0, 1],
        "description": "1: its window has the person's attention."},
      "account": {"$ref": "#/components/schemas/IMUserID",
        "description": "Whose window it is; missing: the account of the page."}
    },
    "required": ["cid", "visible", "activated"]
  },
  "CoreUserID": {
    "type": "object",
    "properties": {
      "strAppKey": {"type": "string", "description": "The application that the user belongs to."},
      "strUserID": {"type": "string", "description": "The user's name there."}
    },
    "required": ["strAppKey", "strUserID"]
  },
  "CoreTribeID": {
    "type": "object",
    "properties": {
      "llTribeID": {"type": "string", "pattern": "^-?[0-9]+$", "description": "The tribe's number."}
    },
    "required": ["llTribeID"]
  },
  "CoreTribeUser": {
    "type": "object",
    "properties": {
      "userId": {"type": "string", "description": "The user's name in the account's application."}
    },
    "required": ["userId"]
  }
})";

constexpr std::string_view kMembers = R"({
  "x-frames": {
    "host": {
      "oneOf": [
        {
          "title": "hello", "description": "The first frame of a connection.", "type": "object",
          "properties": {"kind": {"const": "hello"}, "browserId": {"type": "string"}},
          "required": ["kind", "browserId"], "additionalProperties": false
        },
        {
          "title": "answer", "type": "object",
          "description": "The answer of the call \"seq\"; its JSON text, empty without a method.",
          "properties": {
            "kind": {"const": "answer"}, "browserId": {"type": "string"},
            "seq": {"type": "string"}, "failed": {"type": "boolean"},
            "payload": {"type": "string"}
          },
          "required": ["kind", "browserId", "seq", "failed", "payload"],
          "additionalProperties": false
        },
        {
          "title": "notify", "type": "object",
          "description": "An event; \"path\" is missing when a page raised it.",
          "properties": {
            "kind": {"const": "notify"}, "event": {"type": "string"},
            "payload": {"type": "string"}, "path": {"type": "string"}
          },
          "required": ["kind", "event", "payload"], "additionalProperties": false
        },
        {
          "title": "refused", "description": "A frame of the page made no sense.",
          "type": "object",
          "properties": {"kind": {"const": "refused"}, "reason": {"type": "string"}},
          "required": ["kind", "reason"], "additionalProperties": false
        }
      ]
    },
    "page": {
      "oneOf": [
        {
          "title": "invoke", "type": "object",
          "description": "A call; \"args\" are its identifier, its name and its JSON text.",
          "properties": {
            "kind": {"const": "invoke"}, "browserId": {"type": "string"},
            "method": {"type": "string"}, "args": {"type": "array"}
          },
          "required": ["kind", "method", "args"]
        }
      ]
    }
  },
  "x-page-events": [
    {
      "name": "chatWindowState",
      "description": "What the person sees of a conversation, raised at each change.",
      "paramStructure": "by-name",
      "params": [{"name": "payload", "required": true,
        "schema": {"$ref": "#/components/schemas/ChatWindowState"}}]
    },
    {
      "name": "translateSetting",
      "description": "Switches translation for the whole host; onTranslateSettingNotify follows.",
      "paramStructure": "by-name",
      "params": [{"name": "payload", "required": true,
        "schema": {"$ref": "#/components/schemas/TranslateSetting"}}]
    }
  ]
})";

// Puts the members of `json` behind those of `object`.
void Add(std::string_view json, base::Value* object) {
  const auto added = base::JSONReader::Read(json);
  for (const auto& [key, value] : *added->GetIfDict()) object->GetIfDict()->Set(key, value);
}

}  // namespace

std::string WithPageProtocol(std::string_view document) {
  auto described = base::JSONReader::Read(document);
  base::Value* components =
      described && described->is_dict() ? described->GetIfDict()->Find("components") : nullptr;
  base::Value* schemas =
      components && components->is_dict() ? components->GetIfDict()->Find("schemas") : nullptr;
  if (!schemas || !schemas->is_dict()) return {};
  Add(kSchemas, schemas);
  Add(kMembers, &*described);
  described->GetIfDict()->Set("x-host-methods", HostMethods());
  std::string text;
  base::JSONWriter::WriteWithOptions(*described, base::JSONWriter::OPTIONS_PRETTY_PRINT, &text);
  return text;
}

}  // namespace imsdk::host
