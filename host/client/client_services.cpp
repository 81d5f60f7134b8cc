#include "client/client_services.h"

#include "client/dynamic_content.h"
#include "client/emotions.h"
#include "client/picture_editor.h"

namespace imsdk::host {

ClientServices::ClientServices(const std::filesystem::path& data, const std::filesystem::path& web)
    : worker_("ClientServices"),
      windows_(new ChatWindows),
      translation_(new Translation(data / "translation.json")),
      windows_entry_(windows_),
      translation_entry_(translation_),
      emotions_entry_(RefPtr(new Emotions(web))),
      editor_entry_(RefPtr(new PictureEditor(data, worker_.task_runner()))),
      content_entry_(RefPtr(new DynamicContent(data / "dynamic", worker_.task_runner()))) {
  worker_.Start();
}

void ClientServices::Stop() {
  translation_->Stop();
  worker_.Stop();
}

}  // namespace imsdk::host
