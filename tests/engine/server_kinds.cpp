#include "embedded/embedded_server.h"
#include "engine_fixture.h"
#include "far_server.h"

namespace imsdk::test {

namespace {

std::unique_ptr<EmbeddedServer> StartEmbedded(const std::filesystem::path& data) {
  EmbeddedServerOptions options;
  options.data = base::FilePath::FromUTF8(data.string());
  return std::make_unique<embedded::Server>(options, embedded::HashCost{1, 8192});
}

Habits BadManners() {
  Habits habits;
  habits.repeats = habits.same_place = habits.late_times = habits.forgets_messages = true;
  habits.capabilities.withdrawal = link::Capabilities::Withdrawal::kAnnounced;
  return habits;
}

}  // namespace

const std::vector<ServerKind>& ServerKinds() {
  static const std::vector<ServerKind> kinds = {
      {"Embedded", StartEmbedded},
      {"Far", [](const auto&) { return std::make_unique<FarServer>(); }},
      {"FarAndRude", [](const auto&) { return std::make_unique<FarServer>(BadManners()); }, true},
  };
  return kinds;
}

}  // namespace imsdk::test
