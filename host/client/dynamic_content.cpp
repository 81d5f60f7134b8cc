#include "client/dynamic_content.h"

#include <algorithm>
#include <utility>

#include "json_file.h"
#include "kexbase/json_reader.h"
#include "kexbase/strings.h"
#include "kexcom/result.h"
#include "served_files.h"

namespace imsdk::host {
namespace {

constexpr std::size_t kLongestName = 64;
constexpr std::size_t kLongestContent = 1024 * 1024;

bool IsName(const std::wstring& name) {
  const auto plain = [](wchar_t c) {
    return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z') || (c >= L'0' && c <= L'9') ||
           c == L'_' || c == L'-';
  };
  return !name.empty() && name.size() <= kLongestName &&
         std::all_of(name.begin(), name.end(), plain);
}

}  // namespace

void DynamicContent::GetContent(const biz::IMUserID&, const std::wstring& biz_type,
                                const std::wstring& biz_uuid, client::IMDynamicCallback done) {
  if (!IsName(biz_type) || !IsName(biz_uuid)) {
    return done({E_INVALIDARG, 0, L"bizType and bizUuid are names of letters and digits"}, {});
  }
  worker_->Do([data = data_, done, name = base::WideToUTF8(biz_type + L'/' + biz_uuid + L".json")](
                  const biz::ResultCode& problem) {
    if (!problem.ok()) return done(problem, {});
    const std::filesystem::path folder = data / "dynamic";
    const FoundFile found = FindInside(folder, folder, name);
    const bool inside = found.status == 200 && FindInside(data, folder, name).status == 200;
    const auto content = inside ? ReadFile(found.path, kLongestContent) : std::nullopt;
    if (!content) return done({biz::kEngineNotFound, 0, L"there is no such content"}, {});
    if (!base::JSONReader::Read(*content)) {
      return done({E_UNEXPECTED, 0, L"the content is no JSON"}, {});
    }
    done({}, base::UTF8ToWide(*content));
  });
}

}  // namespace imsdk::host
