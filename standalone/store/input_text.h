#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tarnd::store {

/// Refuses what is no text at all while it comes, piece by piece. Throws InputError with the line.
class TextCheck {
 public:
  /// Checks that the next piece is UTF-8 without a NUL byte. Returns it, the first without a byte
  /// order mark.
  std::string_view take(std::string_view piece);
  /// The text ends: it must not be empty, nor end within a letter.
  void finish() const;

 private:
  [[noreturn]] void refuse(std::string_view before, const std::string& what) const;
  std::size_t end_of_cut_letter(std::string_view piece);

  std::size_t lines_ = 0;  // that have ended
  bool begun_ = false;
  bool blank_ = true;  // nothing but white space so far
  std::string cut_;    // the first bytes of a letter that the end of a piece has cut
};

/// A whole text, checked and without a byte order mark. Throws InputError as TextCheck does.
std::string_view checked_text(std::string_view text);

/// The line of the byte at `offset`, counted from 1.
std::size_t line_at(std::string_view text, std::size_t offset);

/// False for text with a character that no YANG string holds, such as a control character.
/// The text is UTF-8.
bool is_yang_text(std::string_view text);

/// The text in single quotes, a long one cut, for a message.
std::string excerpt(std::string_view text);

}  // namespace tarnd::store
