// Content of dynamic messages, from files.
#pragma once

#include <filesystem>

#include "imsdk/client/dynamic_content.h"
#include "kexbase/task_runner.h"

namespace imsdk::host {

// The content UUID of the business TYPE is the file "TYPE/UUID.json" of a folder, the same for
// every account. Both names are letters, digits, "_" and "-". Read on `runner`.
class DynamicContent final : public RefPtrCounted<client::IDynamicContentService> {
 public:
  DynamicContent(std::filesystem::path folder, std::shared_ptr<base::TaskRunner> runner)
      : folder_(std::move(folder)), runner_(std::move(runner)) {}

  void GetContent(const biz::IMUserID& account, const std::wstring& biz_type,
                  const std::wstring& biz_uuid, client::IMDynamicCallback done) override;

 private:
  const std::filesystem::path folder_;
  const std::shared_ptr<base::TaskRunner> runner_;
};

}  // namespace imsdk::host
