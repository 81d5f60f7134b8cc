// Content of dynamic messages, from files.
#pragma once

#include <filesystem>

#include "client/worker.h"
#include "imsdk/client/dynamic_content.h"

namespace imsdk::host {

// The content UUID of the business TYPE is the file "dynamic/TYPE/UUID.json" of the data folder,
// the same for every account. Both names are letters, digits, "_" and "-"; a link that leads out of
// "dynamic" or out of the data folder is not followed. Read on `worker`.
class DynamicContent final : public RefPtrCounted<client::IDynamicContentService> {
 public:
  DynamicContent(std::filesystem::path data, std::shared_ptr<Worker> worker)
      : data_(std::move(data)), worker_(std::move(worker)) {}

  void GetContent(const biz::IMUserID& account, const std::wstring& biz_type,
                  const std::wstring& biz_uuid, client::IMDynamicCallback done) override;

 private:
  const std::filesystem::path data_;
  const std::shared_ptr<Worker> worker_;
};

}  // namespace imsdk::host
