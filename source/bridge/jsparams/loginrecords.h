// JSON forms of the login requests, answers and notifications.
#pragma once

#include "imsdk/biz/account.h"
#include "source/bridge/jsparams/idrecords.h"

namespace imsdk::bridge {

template <>
struct Record<biz::IMPasswordLogin> {
  using R = biz::IMPasswordLogin;
  static constexpr auto kFields = FieldList(Field("userid", &R::userid, "Who logs in."),
                                            Field("password", &R::password, "The password."));
};

template <>
struct Record<biz::IMTokenLogin> {
  using R = biz::IMTokenLogin;
  static constexpr auto kFields = FieldList(Field("userid", &R::userid, "Who logs in."),
                                            Field("token", &R::token, "A token of a login."));
};

template <>
struct Record<biz::IMLoginGrant> {
  using R = biz::IMLoginGrant;
  static constexpr auto kFields =
      FieldList(Field("userid", &R::userid, "Who is logged in."),
                Field("token", &R::token, "Logs in again without the password."),
                Field("expires", &R::expires, "End of the token's life, milliseconds."));
};

// Who logged in or out.
template <>
struct Record<biz::IMUserRequest> {
  static constexpr auto kFields =
      FieldList(Field("userid", &biz::IMUserRequest::userid, "The account."));
};

}  // namespace imsdk::bridge
