// The whole host in one object: messaging server, engine, bridge library, services, web server.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "program_files.h"

namespace imsdk::host {

struct HostOptions {
  std::uint16_t port = 8787;         // 0: a free one
  std::filesystem::path data;        // everything the host keeps; made when missing
  bool demo = false;                 // fill an empty data folder with the demo set
  bool check = false;                // only look through the data folder
  std::string token;                 // empty: a fresh random one
  std::filesystem::path trace_file;  // trace lines as JSON; empty for none
  std::filesystem::path pages;       // served instead of the demo; empty for the demo
  std::string origin;                // pages of this origin may come in too; empty for none
  std::filesystem::path web = BuiltPagesFolder();
  std::filesystem::path library = BridgeLibraryFile();
};

// A running host. One thread; one at a time in a process, which has one component registry.
class Host {
 public:
  // Starts everything and listens. Null when something fails; `*error` then says what, UTF-8.
  static std::unique_ptr<Host> Start(const HostOptions& options, std::string* error);
  // Stops, if that was not done.
  ~Host();

  std::uint16_t port() const;
  const std::string& token() const;
  // "http://127.0.0.1:PORT/?token=TOKEN"
  std::string Address() const;
  std::size_t ViewCount() const;

  // Ends the views, the web server, the bridge library's business layer, the engine and its
  // messaging server, in this order, and forgets the token. Takes at most 2 seconds when no call
  // hangs.
  void Stop();

 private:
  class Impl;
  explicit Host(std::unique_ptr<Impl> impl);

  std::unique_ptr<Impl> impl_;
};

}  // namespace imsdk::host
