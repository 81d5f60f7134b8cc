// The library's class factory and the enumerator over its classes.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "kexbase/lock.h"
#include "kexcom/factory.h"

namespace imsdk::component {

// Class name to creator, in name order.
using ClassMap = std::map<std::string, IKexCOMCreator*, std::less<>>;

class CKexCOMEnum final : public RefPtrCounted<IKexCOMEnum, ThreadSafeRefPolicy> {
 public:
  explicit CKexCOMEnum(const ClassMap& classes) : entries_(classes.begin(), classes.end()) {}

  bool Next(const char** class_name, IKexCOMCreator** creator) override;
  void Reset() override { cursor_ = 0; }

 private:
  std::vector<std::pair<std::string, IKexCOMCreator*>> entries_;
  std::size_t cursor_ = 0;
};

class CKexCOMFactory final : public IKexCOMFactory {
 public:
  // Starts with `classes`.
  CKexCOMFactory(std::string name, std::string second_name, ClassMap classes);

  const char* Name() const override { return name_.c_str(); }
  const char* SecondName() const override { return second_name_.c_str(); }
  IKexCOMEnum* Enumerate() override;
  std::int32_t CreateInstance(const char* class_name, const char* iid, void** object) override;
  void Register(const char* class_name, IKexCOMCreator* creator) override;

 private:
  const std::string name_;
  const std::string second_name_;
  base::Lock lock_;
  ClassMap classes_;  // under lock_
};

}  // namespace imsdk::component
