#include "component/comfactory.h"

namespace imsdk::component {

bool CKexCOMEnum::Next(const char** class_name, IKexCOMCreator** creator) {
  if (cursor_ == entries_.size()) return false;
  const auto& [name, entry] = entries_[cursor_++];
  if (class_name) *class_name = name.c_str();
  if (creator) *creator = entry;
  return true;
}

CKexCOMFactory::CKexCOMFactory(std::string name, std::string second_name, ClassMap classes)
    : name_(std::move(name)), second_name_(std::move(second_name)), classes_(std::move(classes)) {}

IKexCOMEnum* CKexCOMFactory::Enumerate() try {
  base::AutoLock hold(lock_);
  auto* made = new CKexCOMEnum(classes_);
  made->AddRef();
  return made;
} catch (...) {
  return nullptr;
}

std::int32_t CKexCOMFactory::CreateInstance(const char* class_name, const char* iid,
                                            void** object) {
  if (object) *object = nullptr;
  IKexCOMCreator* creator = nullptr;
  if (class_name) {
    base::AutoLock hold(lock_);
    const auto found = classes_.find(std::string_view(class_name));
    if (found != classes_.end()) creator = found->second;
  }
  return creator ? creator->Create(iid, object) : kKexCOMUnknownClass;
}

void CKexCOMFactory::Register(const char* class_name, IKexCOMCreator* creator) try {
  if (!class_name || !creator) return;
  base::AutoLock hold(lock_);
  classes_.insert_or_assign(class_name, creator);
} catch (...) {  // out of memory: the map stays as it was
}

}  // namespace imsdk::component
