#pragma once

#include <functional>
#include <optional>
#include <string>

#include "confd_maapi.h"

namespace tarnd::test {

/// What a test puts in place of the platform's own answers, where those are always sound. All of it
/// is taken back when the guard ends.
struct InPlace {
  struct Xpath {
    int result;
    std::optional<std::string> text;  ///< no text for none
  };

  InPlace() = default;
  InPlace(const InPlace&) = delete;
  InPlace& operator=(const InPlace&) = delete;
  ~InPlace();

  /// The answer of the next evaluations.
  static std::optional<Xpath> xpath;
  /// The expression that was evaluated last.
  static std::string evaluated;
  /// Changes the entry that a cursor has stepped to.
  static std::function<void(maapi_cursor&)> entry;
  /// The result of the next decryptions, beside the clear text.
  static std::optional<int> decrypted;
  /// Where the last decryption put the clear text; its memory may be gone.
  static const char* clear_text;
};

}  // namespace tarnd::test
