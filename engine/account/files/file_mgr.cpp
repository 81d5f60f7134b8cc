#include "account/files/file_mgr.h"

#include <algorithm>
#include <string_view>
#include <system_error>

#include "account/files/file_tokens.h"
#include "account/session/on_worker.h"
#include "kexbase/strings.h"

namespace imsdk::account {

namespace {

// Whether it can be an account's folder, and nothing that leads elsewhere.
bool IsFolderName(std::string_view name) {
  return !name.empty() && std::all_of(name.begin(), name.end(), [](char letter) {
    return (letter >= 'a' && letter <= 'z') || (letter >= '0' && letter <= '9') || letter == '_' ||
           letter == '-';
  });
}

}  // namespace

void FileMgr::Fetch(const biz::IMFileRequest& request, biz::IMCallback<> done) {
  const biz::ResultCode not_there{biz::kEngineNotFound, 0, L"no account knows such a file"};
  if (const auto why = link::CheckBounds(request); !why.ok()) return done(why);
  const std::string path = base::WideToUTF8(request.path);
  std::string_view rest = path;
  const std::string_view files = kFilesFolder;
  if (!rest.starts_with(files) || !rest.substr(files.size()).starts_with('/')) {
    return done(not_there);
  }
  rest.remove_prefix(files.size() + 1);
  const auto parting = rest.find('/');
  if (parting == rest.npos) return done(not_there);
  const std::string folder(rest.substr(0, parting));
  const std::string name(rest.substr(parting + 1));
  if (!IsFolderName(folder) || !IsFileName(base::UTF8ToWide(name))) return done(not_there);
  const auto core = accounts_->FindByFolder(folder);
  if (!core) {
    std::error_code failure;
    const auto place = environment_->folder.root() / path;
    return done(std::filesystem::is_regular_file(place, failure) ? biz::ResultCode{} : not_there);
  }
  const AccountParts account = core->parts();
  OnWorker(
      account.state, biz::IMNothing{},
      [courier = account.courier, name, done](AccountState&, const auto& kept) {
        courier->Fetch(name, [kept, done](const biz::ResultCode& result) { done(result); });
      },
      done);
}

}  // namespace imsdk::account
