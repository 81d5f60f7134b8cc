#include "client/client_services.h"

#include "client/dynamic_content.h"
#include "client/emotions.h"

namespace imsdk::host {

ClientServices::ClientServices(const std::filesystem::path& data, const std::filesystem::path& web)
    : worker_(std::make_shared<Worker>("ClientServices")),
      windows_(new ChatWindows),
      translation_(new Translation(data / "translation.json")),
      editor_(new PictureEditor(data)),
      windows_entry_(windows_),
      translation_entry_(translation_),
      emotions_entry_(RefPtr(new Emotions(web))),
      editor_entry_(editor_),
      content_entry_(RefPtr(new DynamicContent(data, worker_))) {
  worker_->Start();
}

void ClientServices::Stop() {
  translation_->Stop();
  editor_->Stop();
  worker_->Stop();
}

}  // namespace imsdk::host
