#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tarnd::store {

/// The text without a byte order mark. Throws InputError with the line for an empty text and for
/// one that is not UTF-8 or holds a NUL byte.
std::string_view checked_text(const std::string& text);

/// The line of the byte at `offset`, counted from 1.
std::size_t line_at(std::string_view text, std::size_t offset);

/// The lines of a text of which many are asked for.
class LineTable {
 public:
  explicit LineTable(std::string_view text);
  [[nodiscard]] std::size_t line_of(std::size_t offset) const;

 private:
  std::vector<std::size_t> ends_;
};

/// False for text with a character that no YANG string holds, such as a control character.
/// The text is UTF-8.
bool is_yang_text(std::string_view text);

/// The text in single quotes, a long one cut, for a message.
std::string excerpt(std::string_view text);

}  // namespace tarnd::store
