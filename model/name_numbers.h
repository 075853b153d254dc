#pragma once

#include <cstdint>
#include <filesystem>
#include <istream>
#include <map>
#include <string>
#include <string_view>

namespace tarnd {

/// The numbers that keypaths and values have in place of the model's namespace and node names.
/// Nodes of the same name have the same number. A few numbers are known, from a file; every other
/// name gets its number by a hash, the same in every build.
class NameNumbers {
 public:
  /// Reads the file of known numbers. Throws std::runtime_error with one line if the file cannot be
  /// read, a line is malformed, or two of its numbers are equal.
  explicit NameNumbers(const std::filesystem::path& known_numbers);
  /// Same, from a stream; source names it in errors.
  NameNumbers(std::istream& known_numbers, std::string_view source);

  /// The number of a node name: at most 31 bits, never 0. The name need not be in the model.
  [[nodiscard]] std::uint32_t number(std::string_view name) const;

  [[nodiscard]] const std::string& namespace_uri() const { return namespace_uri_; }
  [[nodiscard]] std::uint32_t namespace_number() const { return namespace_number_; }

  /// Makes a name of the model known to name_of(); a name may be added again. Throws
  /// std::runtime_error with both names if the number is that of another name or of the namespace.
  void add(const std::string& name);

  /// The name with that number, among the known and the added ones, or null. Stays valid as long as
  /// this object.
  [[nodiscard]] const std::string* name_of(std::uint32_t number) const;

  /// The names whose numbers are in the file.
  [[nodiscard]] const std::map<std::string, std::uint32_t, std::less<>>& known() const {
    return known_;
  }

 private:
  void read(std::istream& lines, std::string_view source);

  std::string namespace_uri_;
  std::uint32_t namespace_number_ = 0;
  std::map<std::string, std::uint32_t, std::less<>> known_;
  std::map<std::uint32_t, std::string> names_;
};

}  // namespace tarnd
