#pragma once

#include <set>
#include <string>
#include <vector>

namespace docs {

/// A line of text that source code composes: the constant parts in order. Between two of them
/// something varies; a text that begins or ends with a variable part has an empty part there.
struct CodeText {
  std::vector<std::string> parts;
};

struct CodeTexts {
  /// Lines of plain language, such as "Port %s untagged ..." or `"Port " + name + " untagged ..."`,
  /// without those that only the trace gets.
  std::vector<CodeText> sentences;
  /// Every constant of the code as it is written: the variable part of a sentence may be one of
  /// them.
  std::set<std::string> words;
};

/// Adds the texts of one C++ source.
void collect_texts(const std::string& code, CodeTexts& texts);

}  // namespace docs
