// Looks through a data folder that nobody has open.
#pragma once

#include <string>
#include <vector>

#include "kexbase/file_path.h"

namespace imsdk {

// What was looked at: a store, a kept file, or something that was set aside.
struct FolderFinding {
  enum class State {
    kWhole,
    kDamaged,   // or missing, cut short, behind what it was: the text says which
    kSetAside,  // by an earlier run, for a person to look at; nothing uses it
  };
  std::string name;  // relative to the folder, with "/", UTF-8
  State state = State::kWhole;
  std::string text;  // what is wrong, UTF-8
};

// Every store that is there or is remembered, and the kept files that are not whole. Changes
// nothing. Reads everything: some seconds for a gigabyte. Damage inside a message's text that
// leaves the store well-formed is not seen. Empty when the folder holds nothing of the engine's.
std::vector<FolderFinding> CheckFolder(const base::FilePath& data);

}  // namespace imsdk
