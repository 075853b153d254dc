#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "card/fm_card.h"
#include "confd_maapi.h"

namespace tarnd::test {

/// Replaces answers of the platform that would always be valid. The guard's end undoes all of it;
/// what is noted below begins with the guard.
struct InPlace {
  struct Xpath {
    int result;
    std::optional<std::string> text;  ///< no text for none
  };

  InPlace() {
    take_back();
    notes = true;
  }
  InPlace(const InPlace&) = delete;
  InPlace& operator=(const InPlace&) = delete;
  ~InPlace() {
    take_back();
    notes = false;
  }

  /// The answer of the next evaluations.
  static std::optional<Xpath> xpath;
  /// The expression that was evaluated last.
  static std::string evaluated;
  /// Changes the entry that a cursor has stepped to, or what a failed step leaves in the cursor.
  static std::function<void(maapi_cursor&)> entry;
  /// The result of the next decryptions, in addition to the clear text.
  static std::optional<int> decrypted;
  /// The address of the clear text of the last decryption; its memory may have been freed.
  static const char* clear_text;
  /// What stood there before.
  static std::string clear_text_before;
  /// How many bytes were wiped last.
  static std::optional<std::size_t> wiped;

  /// The results of the next look-ups in the committed configuration, and of the next reads of a
  /// boolean there, in addition to the boolean itself.
  static std::optional<int> committed_exists;
  static std::optional<int> committed_bool;

  /// The board's functions for the number of ONUs per link and of links.
  static fm_board_count_t onus_of_board;
  static fm_board_count_t links_of_board;

  /// Whether the trace writes records of a level.
  static std::function<bool(int level)> takes_level;

  /// With which flags the changes were iterated over last.
  static std::optional<int> iteration_flags;
  /// The tagged values as they were requested last.
  static std::vector<confd_tag_value_t> requested;
  /// For how many characters values were turned into text.
  static std::vector<int> text_sizes;
  /// A guard exists. Without one, notes of every call would only grow.
  static bool notes;
  /// The result of the next texts of values, in addition to the text itself.
  static std::optional<int> text_result;
  /// The texts that were freed. While a guard exists, a freed value stays as it was, as with ConfD;
  /// the stand-alone platform marks it.
  static std::vector<std::string> freed;
  /// To whom the last message was sent.
  static std::string message_to;

 private:
  static void take_back();
};

}  // namespace tarnd::test
