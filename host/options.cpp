#include "options.h"

#include "data_folder.h"
#include "kexbase/strings.h"
#include "server/origin.h"
#include "server/run_token.h"

namespace imsdk::host {

const std::string_view kUsage =
    "usage: bridgehost [--port N] [--data DIR] [--demo] [--token T] [--trace FILE]\n"
    "                  [--pages DIR] [--origin URL]\n"
    "       bridgehost --check [--data DIR]\n"
    "       bridgehost --describe\n"
    "  --port N      listen on port N of the loopback address; 0 picks a free one (8787)\n"
    "  --data DIR    keep everything in DIR (the demo set in the user's data home)\n"
    "  --demo        fill an empty data folder with the demo set\n"
    "  --token T     what pages must show (a fresh random text)\n"
    "  --trace FILE  also write trace lines to FILE, as JSON Lines\n"
    "  --pages DIR   serve the pages in DIR instead of the demo\n"
    "  --origin URL  let pages of this origin in too, for instance those of a development server\n"
    "  --check       say of DIR what is whole, and exit: 0 when everything is\n"
    "  --describe    print the description of the protocol, an OpenRPC document, and exit\n";

bool ReadOptions(const std::vector<std::string>& arguments, HostOptions* options,
                 std::string* error) {
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& flag = arguments[i];
    if (flag == "--demo" || flag == "--check") {
      (flag == "--demo" ? options->demo : options->check) = true;
      continue;
    }
    if (flag != "--port" && flag != "--data" && flag != "--token" && flag != "--trace" &&
        flag != "--pages" && flag != "--origin") {
      *error = "unknown flag " + flag;
      return false;
    }
    if (i + 1 == arguments.size() || arguments[i + 1].empty()) {
      *error = flag + " needs a value";
      return false;
    }
    const std::string& value = arguments[++i];
    if (flag == "--port") {
      unsigned port = 0;
      if (!base::StringToUint(value, &port) || port > 65535) {
        *error = "not a port: " + value;
        return false;
      }
      options->port = static_cast<std::uint16_t>(port);
    } else if (flag == "--token") {
      if (!IsTokenText(value)) {
        *error = "a token is 1 to 256 letters, digits, \"-\", \".\", \"_\" and \"~\"";
        return false;
      }
      options->token = value;
    } else if (flag == "--origin") {
      const auto origin = OriginOf(value);
      if (!origin) {
        *error = "not an origin: " + value + " (an origin is like http://localhost:5173)";
        return false;
      }
      options->origin = *origin;
    } else {
      (flag == "--data"    ? options->data
       : flag == "--pages" ? options->pages
                           : options->trace_file) = value;
    }
  }
  if (options->data.empty()) {
    options->data = DefaultDataFolder();
    options->demo = true;
  }
  if (options->data.empty()) *error = "no home folder is known: name a folder with --data";
  return !options->data.empty();
}

}  // namespace imsdk::host
