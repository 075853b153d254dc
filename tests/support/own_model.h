#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tarnd::test {

/// A folder with the shipped modules and numbers, and the test's own base.yang. The destructor
/// removes the folder, so the object must outlive a schema that was read from it.
class OwnModel {
 public:
  /// A module base with this body.
  explicit OwnModel(const std::string& body);
  /// The shipped module base, in which these types are strings without a length and a pattern.
  static OwnModel loosened(const std::vector<std::string>& types);

  OwnModel(const OwnModel&) = delete;
  OwnModel& operator=(const OwnModel&) = delete;
  ~OwnModel();

  [[nodiscard]] const std::filesystem::path& folder() const { return folder_; }

 private:
  struct Module {
    std::string text;
  };
  explicit OwnModel(const Module& base);

  std::filesystem::path folder_;
};

}  // namespace tarnd::test
