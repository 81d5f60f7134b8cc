// JSON forms of tribes.
#pragma once

#include "imsdk/biz/tribe_mgr.h"
#include "source/bridge/jsparams/idrecords.h"

namespace imsdk::bridge {

template <>
struct Record<biz::IMTribeClass> {
  using R = biz::IMTribeClass;
  static constexpr auto kFields = FieldList(Field("index", &R::index, "Number of the class."),
                                            Field("name", &R::name, "Its name."));
};

template <>
struct Record<biz::IMTribeClasses> {
  static constexpr auto kFields = FieldList(
      Field("classlist", &biz::IMTribeClasses::classlist, "The classes that a tribe can have."));
};

template <>
struct Record<biz::IMTribeText> {
  using R = biz::IMTribeText;
  static constexpr auto kFields =
      FieldList(Field("tribeid", Path(&R::tribeid, &biz::IMTribeID::id), "The tribe."),
                Field("str", &R::str, "The text."));
};

}  // namespace imsdk::bridge
