// Forms: how the modules whose messages belong to conversations differ.
//
// A conversation is one thing from page to engine, whatever it is held with. What differs is what
// a form says: how an identifier stands in JSON and which keys a record has.
#pragma once

#include "imsdk/biz/conversation_id.h"
#include "source/bridge/jsparams/idrecords.h"
#include "source/bridge/jsparams/recordinfo.h"

namespace imsdk::bridge {

// What a request to a conversation names it by.
struct InConversation {
  biz::IMConversationID cid;
};

// A request of the engine's, with the conversation that it goes to.
template <class Request>
struct In : InConversation, Request {};

template <class Request>
struct NamedAs<In<Request>> {
  using Type = Request;
};
template <>
struct NamedAs<In<biz::IMNothing>> {
  using Type = InConversation;
};

// Conversations named by a user, of one kind.
template <biz::IMCIDType kKind>
struct UserForm : PlainForm {
  static constexpr biz::IMCIDType kType = kKind;
  static constexpr auto kIdFields = FieldList(
      Field("cid", &InConversation::cid, "The conversation, named by the user it is held with."));
  static constexpr auto kId =
      FieldList(Field("appkey", Path(&biz::IMConversationID::user, &biz::IMUserID::appkey),
                      "The application that the user belongs to."),
                Field("nick", Path(&biz::IMConversationID::user, &biz::IMUserID::nick),
                      "The user's name there."));
};

template <class Form>
concept IsConversationForm = requires {
  Form::kIdFields;
};

// An identifier by itself. Its kind is the form's, whatever the page says.
template <class Form>
requires IsConversationForm<Form>
struct FormRecord<biz::IMConversationID, Form> {
  static constexpr auto kFields = Form::kId;
  static void Complete(biz::IMConversationID* id) { id->type = Form::kType; }
};

template <class Request, class Form>
requires IsConversationForm<Form>
struct FormRecord<In<Request>, Form> {
  static constexpr auto kFields = std::tuple_cat(Form::kIdFields, RecordIn<Request, Form>::kFields);
  static void Complete(In<Request>* in) { in->cid.type = Form::kType; }
};

}  // namespace imsdk::bridge
