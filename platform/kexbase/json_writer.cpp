#include "kexbase/json_writer.h"

#include "kexbase/rapidjson_config.h"

#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "kexbase/json_string.h"

namespace base {

namespace {

namespace rapidjson = internal::rapidjson;

template <class Writer>
bool WriteText(const std::string& text, Writer* writer) {
  std::string string;
  AppendJSONString(text, &string);
  return writer->RawValue(string.data(), string.size(), rapidjson::kStringType);
}

template <class Writer>
bool WriteValue(const Value& value, Writer* writer);

template <class Writer>
bool WriteObject(const DictionaryValue& object, Writer* writer) {
  writer->StartObject();
  for (const auto& [key, value] : object) {
    if (!WriteText(key, writer) || !WriteValue(value, writer)) return false;
  }
  return writer->EndObject();
}

template <class Writer>
bool WriteArray(const ListValue& list, Writer* writer) {
  writer->StartArray();
  for (const Value& value : list) {
    if (!WriteValue(value, writer)) return false;
  }
  return writer->EndArray();
}

template <class Writer>
bool WriteValue(const Value& value, Writer* writer) {
  switch (value.type()) {
    case Value::Type::kNull:
      return writer->Null();
    case Value::Type::kBool:
      return writer->Bool(*value.GetIfBool());
    case Value::Type::kInt64:
      return writer->Int64(*value.GetIfInt64());
    case Value::Type::kUint64:
      return writer->Uint64(*value.GetIfUint64());
    case Value::Type::kDouble:
      return writer->Double(*value.GetIfDouble());
    case Value::Type::kString:
      return WriteText(*value.GetIfString(), writer);
    case Value::Type::kDictionary:
      return WriteObject(*value.GetIfDict(), writer);
    case Value::Type::kList:
      return WriteArray(*value.GetIfList(), writer);
  }
  return false;
}

template <class Writer>
bool WriteTo(const Value& value, rapidjson::StringBuffer* buffer) {
  Writer writer(*buffer);
  return WriteValue(value, &writer);
}

}  // namespace

bool JSONWriter::Write(const Value& value, std::string* out) {
  return WriteWithOptions(value, 0, out);
}

bool JSONWriter::WriteWithOptions(const Value& value, int options, std::string* out) {
  using Compact = rapidjson::Writer<rapidjson::StringBuffer>;
  using Pretty = rapidjson::PrettyWriter<rapidjson::StringBuffer>;
  rapidjson::StringBuffer buffer;
  const bool pretty = (options & OPTIONS_PRETTY_PRINT) != 0;
  out->clear();
  if (!(pretty ? WriteTo<Pretty>(value, &buffer) : WriteTo<Compact>(value, &buffer))) return false;
  out->assign(buffer.GetString(), buffer.GetSize());
  return true;
}

}  // namespace base
