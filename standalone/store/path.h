#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "standalone/store/schema.h"

namespace tarnd::store {

/// One element of a path: a node and, behind a list's name, the key values of one entry.
struct PathStep {
  const SchemaNode* node = nullptr;
  std::vector<std::string> keys;  ///< canonical texts; empty where the path gave none
  bool keyed = false;             ///< braces followed the name; keys is empty for "{}"
};

/// An absolute path into the model, from `config` on.
class Path {
 public:
  /// Reads "/config/interface/gpon{1 1 3}/onu". A trailing slash, a slash before a brace and the
  /// model's prefix before the first name are harmless; a key may stand in double quotes, with a
  /// backslash before a quote or a backslash inside. Enumeration keys are given by name or as
  /// "enum<N>". On failure the result is empty and *why is one line.
  static std::optional<Path> parse(const Schema& schema, std::string_view text, std::string* why);

  [[nodiscard]] const std::vector<PathStep>& steps() const { return steps_; }
  [[nodiscard]] const PathStep& last() const { return steps_.back(); }
  /// An element has braces without, or with the wrong number of, keys: no such entry can exist.
  [[nodiscard]] bool names_impossible_entry() const;

 private:
  std::vector<PathStep> steps_;
};

/// The path of a data node in the form that Path::parse reads, keys quoted where they need it.
std::string path_of(const lyd_node* node);

/// A key as it stands between the braces of a path.
std::string quote_key(std::string_view key);

}  // namespace tarnd::store
