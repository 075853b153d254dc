#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tarnd::store {

/// Checks a text piece by piece while it is read. Throws InputError with the line.
class TextCheck {
 public:
  /// Checks that the next piece is UTF-8 without a NUL byte. Returns it, the first without a byte
  /// order mark.
  std::string_view take(std::string_view piece);
  /// The text ends: it must not be empty or end within a letter.
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

/// Whether all characters are allowed in a YANG string; control characters, for example, are not.
/// The text must be UTF-8.
bool is_yang_text(std::string_view text);

/// The text in single quotes, cut if it is long, for a message.
std::string excerpt(std::string_view text);

}  // namespace tarnd::store
