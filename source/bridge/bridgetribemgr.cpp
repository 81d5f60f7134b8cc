// Business module "im.tribemgr": tribes, but for their messages.
#include "imsdk/biz/tribe_mgr.h"

#include "kexcom/result.h"
#include "source/bridge/bridgemodules.h"
#include "source/bridge/jsparams/triberecords.h"
#include "source/bridge/methodtable.h"

namespace imsdk::bridge {
namespace {

class CBridgeTribeMgr final : public CBridgeBase {
 public:
  using Form = PlainForm;
  static constexpr Name kName = "CBridgeTribeMgr";
  static constexpr char kSource[] = "source\\bridge\\bridgetribemgr";

  using CBridgeBase::CBridgeBase;
  std::span<const MethodRow> Methods() const override;

  biz::ResultCode Find(RefPtr<biz::IIMTribeMgr>* mgr) const {
    *mgr = mgr_;
    if (mgr_) return {};
    return {E_UNEXPECTED, 0, L"failed"};
  }

 private:
  void OnAccountChanged(biz::IIMAccount* engine) override {
    mgr_ = engine ? engine->GetIMTribeMgr() : nullptr;
    if (mgr_ || !Account().valid()) return;
    ns_log::CTraceProxy(ns_log::kError, {"CBridgeTribeMgr::OnAccountChanged", kSource},
                        L"GetIMTribeMgr.");
  }

  RefPtr<biz::IIMTribeMgr> mgr_;  // of the current account, or null
};

using M = CBridgeTribeMgr;
using Mgr = biz::IIMTribeMgr;
constexpr MethodRow kMethods[] = {
    Row<M, "GetAllClass", &Mgr::GetAllClass>("The classes that a tribe can have."),
    Row<M, "SetTribeName", &Mgr::SetTribeName>("Renames a tribe; only its owner may."),
};

std::span<const MethodRow> CBridgeTribeMgr::Methods() const { return kMethods; }

}  // namespace

std::shared_ptr<CBridgeBase> MakeBridgeTribeMgr(const ModuleContext& context) {
  return std::make_shared<CBridgeTribeMgr>(context);
}

}  // namespace imsdk::bridge
