#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tarnd::store {

/// Reads the text of a path from left to right. Inline, since the platform's callers look up
/// millions of paths.
class PathText {
 public:
  explicit PathText(std::string_view text) : text_(text) {}

  [[nodiscard]] bool at_end() const { return pos_ == text_.size(); }
  [[nodiscard]] char peek() const { return at_end() ? '\0' : text_[pos_]; }
  [[nodiscard]] std::string_view rest() const { return text_.substr(pos_); }

  bool take(char c) {
    if (at_end() || text_[pos_] != c) return false;
    ++pos_;
    return true;
  }

  bool take(std::string_view piece) {
    if (!rest().starts_with(piece)) return false;
    pos_ += piece.size();
    return true;
  }

  void skip_blanks() {
    while (take(' ')) {
    }
  }

  /// The text up to the first character that ends it, or up to the end.
  // Names and keys are short: looking at each character costs less than a library search.
  template <typename Ends>
  std::string_view until(Ends ends) {
    const std::size_t begin = pos_;
    while (!at_end() && !ends(text_[pos_])) ++pos_;
    return text_.substr(begin, pos_ - begin);
  }

  void skip(std::size_t length) { pos_ += length; }
  [[nodiscard]] std::size_t position() const { return pos_; }

  /// The key values after an opening brace; false if the closing one is missing. Keys that are
  /// views into the text cannot have a backslash in quotes: the result is false then, too.
  template <typename Key>
  bool keys(std::vector<Key>& result) {
    for (;;) {
      skip_blanks();
      if (take('}')) return true;
      if (at_end()) return false;
      Key& key = result.emplace_back();
      if (take('"') ? !quoted(key) : !plain(key)) return false;
    }
  }

 private:
  template <typename Key>
  bool plain(Key& key) {
    key = until([](char c) { return c == ' ' || c == '}'; });
    return !at_end();
  }

  bool quoted(std::string_view& key) {
    key = until([](char c) { return c == '"' || c == '\\'; });
    return take('"');
  }

  bool quoted(std::string& key) {
    while (!at_end()) {
      const char c = text_[pos_++];
      if (c == '"') return true;
      if (c == '\\' && !at_end()) {
        key += text_[pos_++];
      } else {
        key += c;
      }
    }
    return false;
  }

  std::string_view text_;
  std::size_t pos_ = 0;
};

}  // namespace tarnd::store
