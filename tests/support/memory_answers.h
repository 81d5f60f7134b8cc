// What parts of the engine in memory share: every operation is noted, and answered at once with
// what the test wants.
#pragma once

#include <any>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "imsdk/biz/callback.h"
#include "imsdk/biz/contact.h"
#include "imsdk/biz/tribe.h"

namespace imsdk::test {

// `A` are the answers of the operations, each type once.
template <class... A>
class MemoryAnswers {
 public:
  // The request of the last operation.
  template <class Request>
  const Request& Last() const {
    return std::any_cast<const Request&>(last);
  }
  template <class Of>
  Of& AnswerOf() {
    return std::get<Of>(answers);
  }

  // What operations answer: the outcome of one with a name here, else of all others.
  biz::ResultCode result;
  std::map<std::string, biz::ResultCode> results;
  std::tuple<A...> answers;
  // What was asked.
  std::vector<std::string> asked;
  std::any last;

 protected:
  template <class Request, class... Of>
  void Answer(const char* operation, const Request& request, biz::IMCallback<Of...> done) {
    asked.push_back(operation);
    last = request;
    if constexpr (requires { request.tribeid; }) {
      if (request.tribeid.id == 0) {
        return done({biz::kEngineRefused, biz::kTribeUnknown, L"there is no such tribe"}, Of{}...);
      }
    }
    if constexpr (requires { request.nodeName; }) {
      if (request.id == 0) {
        return done({biz::kEngineNotFound, 0, L"there is no such file"}, Of{}...);
      }
    }
    if constexpr (requires { request.gidinpeergroup; }) {
      if (request.fromid.empty()) {
        return done({biz::kEngineRefused, biz::kContactNoSuchRequest, L"there is no such request"},
                    Of{}...);
      }
    }
    if constexpr (requires { request.filePath; }) {
      if (request.filePath.empty()) {
        return done({biz::kEngineNotFound, 0, L"there is no such folder"}, Of{}...);
      }
    }
    const auto own = results.find(operation);
    done(own == results.end() ? result : own->second, std::get<Of>(answers)...);
  }
};

}  // namespace imsdk::test

// One operation of a contract, served by `Answer`.
#define IMSDK_MEMORY_ANSWERS(Operation, Request, ...)                                       \
  void Operation(const biz::Request& request, biz::IMCallback<__VA_ARGS__> done) override { \
    Answer(#Operation, request, std::move(done));                                           \
  }
