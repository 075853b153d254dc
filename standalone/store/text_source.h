#pragma once

#include <cstddef>
#include <string_view>

namespace tarnd::store {

/// A text that comes in pieces, so that nobody need hold all of it.
class TextSource {
 public:
  /// Of each piece but the last.
  static constexpr std::size_t kPieceSize = std::size_t{1} << 16;

  TextSource() = default;
  TextSource(const TextSource&) = delete;
  TextSource& operator=(const TextSource&) = delete;
  virtual ~TextSource() = default;

  /// The next piece, good until the one after it; empty at the end.
  virtual std::string_view next() = 0;
};

/// A text that somebody holds.
class WholeText : public TextSource {
 public:
  /// The text stays with the caller.
  explicit WholeText(std::string_view text) : rest_(text) {}

  std::string_view next() override {
    const std::string_view piece = rest_.substr(0, kPieceSize);
    rest_.remove_prefix(piece.size());
    return piece;
  }

 private:
  std::string_view rest_;
};

}  // namespace tarnd::store
