// JSON forms of the login requests, answers and notifications.
#pragma once

#include <cstdint>
#include <string>

#include "imsdk/biz/account.h"
#include "source/bridge/jsparams/idrecords.h"

namespace imsdk::bridge {

struct PasswordLoginRequest {
  biz::IMUserID userid;
  std::wstring password;
};
template <>
struct Record<PasswordLoginRequest> {
  static constexpr auto kFields = FieldList(Field("userid", &PasswordLoginRequest::userid),
                                            Field("password", &PasswordLoginRequest::password));
};

struct TokenLoginRequest {
  biz::IMUserID userid;
  std::wstring token;
};
template <>
struct Record<TokenLoginRequest> {
  static constexpr auto kFields = FieldList(Field("userid", &TokenLoginRequest::userid),
                                            Field("token", &TokenLoginRequest::token));
};

// Who logged in or out.
struct UserRecord {
  biz::IMUserID userid;
};
template <>
struct Record<UserRecord> {
  static constexpr auto kFields = FieldList(Field("userid", &UserRecord::userid));
};

struct LoginAnswer {
  biz::IMUserID userid;
  std::wstring token;
  std::int64_t expires = 0;  // milliseconds since the Unix epoch, UTC
};
template <>
struct Record<LoginAnswer> {
  static constexpr auto kFields =
      FieldList(Field("userid", &LoginAnswer::userid), Field("token", &LoginAnswer::token),
                Field("expires", &LoginAnswer::expires));
};

}  // namespace imsdk::bridge
