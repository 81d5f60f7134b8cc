// Mentions, and what is around one, from the server's history.
#include "account/conversations/page_limits.h"
#include "account/conversations/roamer.h"

namespace imsdk::account {

void Roamer::MentionPage(const biz::IMConversationID& cid, const biz::IMPageRequest& request,
                         biz::IMCallback<biz::IMMessagePage> done) {
  if (const auto why = state_->line->Can<link::ReadMentions>(); !why.ok()) return done(why, {});
  link::GetHistory wanted;
  const biz::ResultCode read = sqlite::Guarded([&] { wanted = Wanted(cid, request); });
  if (!read.ok()) return done(read, {});
  wanted.mentions = true;
  state_->line->Ask(wanted, [weak = weak_from_this(), done = std::move(done)](
                                const biz::ResultCode& result, const link::History& history) {
    const auto self = weak.lock();
    if (!result.ok() || !self) return done(result, {});
    self->KeepScattered(history.msgs, history.next.empty(), done);
  });
}

void Roamer::Context(const biz::IMConversationID& cid, const biz::IMAtContextRequest& request,
                     biz::IMCallback<biz::IMMessagePage> done) {
  link::GetContext wanted{cid, {request.fromid, request.msgid}, CountOf(request.count)};
  if (request.fromid.empty()) {
    std::optional<biz::IMMessage> found;
    const biz::ResultCode read =
        sqlite::Guarded([&] { found = state_->store.Find(cid, request.msgid); });
    if (!read.ok()) return done(read, {});
    if (!found) {
      return done({biz::kEngineNotFound, 0, L"the account has no such message to go by"}, {});
    }
    wanted.message.from = found->fromid;
  }
  state_->line->Ask(wanted, [weak = weak_from_this(), done = std::move(done)](
                                const biz::ResultCode& result, const link::Context& context) {
    const auto self = weak.lock();
    if (!result.ok() || !self) return done(result, {});
    self->KeepScattered(context.msgs, context.ends, done);
  });
}

void Roamer::KeepScattered(const std::vector<link::Message>& messages, bool ends,
                           biz::IMCallback<biz::IMMessagePage> done) {
  const auto happenings = std::make_shared<Mailbox::Happenings>();
  state_->commit.Add([this, messages, happenings](
                         sqlite::Database&) { *happenings = mailbox_->StoreScattered(messages); },
                     [self = shared_from_this(), messages, ends, happenings,
                      done = std::move(done)](const biz::ResultCode& stored) {
                       if (!stored.ok()) return done(stored, {});
                       self->mailbox_->MakeKnown(std::move(*happenings));
                       biz::IMMessagePage page;
                       page.outofcache = ends;
                       const biz::ResultCode shown = self->Show(messages, &page);
                       done(shown, shown.ok() ? page : biz::IMMessagePage{});
                     });
}

}  // namespace imsdk::account
