// What the host does for its pages as their client, for as long as this lives.
#pragma once

#include <filesystem>
#include <memory>

#include "client/chat_windows.h"
#include "client/picture_editor.h"
#include "client/translation.h"
#include "client/worker.h"
#include "imsdk/client/dynamic_content.h"
#include "imsdk/client/emotion_list.h"
#include "imsdk/client/picture_editor.h"
#include "registered.h"

namespace imsdk::host {

// Puts the client's services into the component registry.
class ClientServices {
 public:
  // `data` is the data folder, `web` the folder of the pages.
  ClientServices(const std::filesystem::path& data, const std::filesystem::path& web);
  ~ClientServices() { Stop(); }

  // Ends the services' threads; what is asked later fails. Before the business layer ends.
  void Stop();

  const RefPtr<ChatWindows>& windows() const { return windows_; }
  const RefPtr<Translation>& translation() const { return translation_; }

 private:
  const std::shared_ptr<Worker> worker_;
  const RefPtr<ChatWindows> windows_;
  const RefPtr<Translation> translation_;
  const RefPtr<PictureEditor> editor_;
  const Registered<client::IChatWindowService> windows_entry_;
  const Registered<client::ITranslationService> translation_entry_;
  const Registered<client::IEmotionListService> emotions_entry_;
  const Registered<client::IPictureEditorService> editor_entry_;
  const Registered<client::IDynamicContentService> content_entry_;
};

}  // namespace imsdk::host
