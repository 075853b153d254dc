#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace tarnd::fuzz {

/// The bytes of an input as a sequence of choices. After its end every choice is the first one.
class Choices {
 public:
  Choices(const std::uint8_t* data, std::size_t size) : bytes_(data, size) {}

  [[nodiscard]] bool at_end() const { return bytes_.empty(); }

  /// A number below the limit, which is 256 at most.
  std::size_t below(std::size_t limit) {
    if (at_end()) return 0;
    const std::uint8_t byte = bytes_.front();
    bytes_ = bytes_.subspan(1);
    return byte % limit;
  }

  bool one_in(std::size_t n) { return below(n) == n - 1; }

  /// The bytes that no choice was made of.
  [[nodiscard]] std::string_view rest() const {
    return {reinterpret_cast<const char*>(bytes_.data()), bytes_.size()};
  }

  template <typename Row>
  const auto& of(const Row& row) {
    return row[below(std::size(row))];
  }

 private:
  std::span<const std::uint8_t> bytes_;
};

}  // namespace tarnd::fuzz
