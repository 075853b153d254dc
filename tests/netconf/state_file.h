#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

#include <cstdlib>

namespace tarnd::netconf::state {

/// A name for a state in a folder of its own, which goes with this object.
class StateFile {
 public:
  StateFile() {
    std::string folder = std::filesystem::temp_directory_path() / "gponval-state-XXXXXX";
    if (mkdtemp(folder.data()) == nullptr) throw std::runtime_error("no folder for a state");
    folder_ = folder;
  }
  StateFile(const StateFile&) = delete;
  StateFile& operator=(const StateFile&) = delete;
  ~StateFile() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }

  [[nodiscard]] std::filesystem::path name() const { return folder_ / "card.state"; }

 private:
  std::filesystem::path folder_;
};

}  // namespace tarnd::netconf::state
