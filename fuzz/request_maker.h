// Requests that fit the protocol's description more or less.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <string>
#include <vector>

#include "kexbase/values.h"

namespace imsdk::fuzz {

// Makes arguments of the records that the library describes. A key is there or missing, and now and
// then its value is of another kind than it should be.
class RequestMaker {
 public:
  // `document`: what the library says of itself.
  explicit RequestMaker(const std::string& document);

  struct Method {
    std::string path;
    std::string name;
    const base::Value* request = nullptr;  // its schema; null for one without keys
  };
  const std::vector<Method>& methods() const { return methods_; }

  base::Value Make(const base::Value* schema, FuzzedDataProvider* data) const;

 private:
  base::Value MakeRecord(const base::Value& schema, FuzzedDataProvider* data) const;
  const base::Value* Resolve(const base::Value* schema) const;

  base::Value document_;
  std::vector<Method> methods_;
};

}  // namespace imsdk::fuzz
