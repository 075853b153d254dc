#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "standalone/store/schema.h"

namespace tarnd::store {

/// One element of a path: a node and, for a list, the key values of one entry.
struct PathStep {
  const SchemaNode* node = nullptr;
  std::vector<std::string> keys;  ///< canonical texts; empty if the path has none
  bool keyed = false;             ///< braces followed the name; keys is empty for "{}"
};

/// An absolute path into the model, from `config` on.
class Path {
 public:
  /// Reads "/config/interface/gpon{1 1 3}/onu". A trailing slash, a slash before a brace and the
  /// model's prefix before the first name are allowed. A key may be in double quotes, in which a
  /// backslash goes before a quote or a backslash. Enumeration keys are written by name or as
  /// "enum<N>". On failure the result is empty and *why is one line.
  static std::optional<Path> parse(const Schema& schema, std::string_view text, std::string* why);

  [[nodiscard]] const std::vector<PathStep>& steps() const { return steps_; }
  [[nodiscard]] const PathStep& last() const { return steps_.back(); }
  /// The path without its last element, of which there must be more than one.
  [[nodiscard]] Path parent() const;
  /// Whether an element has braces without keys or with a wrong number of them: no such entry can
  /// exist.
  [[nodiscard]] bool names_impossible_entry() const;

 private:
  std::vector<PathStep> steps_;
};

/// The path of a data node in the form that Path::parse reads, with quotes around keys that need
/// them.
std::string path_of(const lyd_node* node);

/// The last step of that path: "/gpon{1 1 3}".
std::string step_of(const lyd_node* node);

/// The canonical form of a key, or of a value of a leaf-list, that is written in a path: a part of
/// the text, or a name that lives as long as the model.
std::string_view canonical_key(const SchemaNode& key, std::string_view text);
/// Replaces the text by it.
void make_canonical(const SchemaNode& key, std::string& text);

/// The root of the model if the name, with or without the model's prefix, is its name; or else
/// null.
const SchemaNode* root_named(const Schema& schema, std::string_view name);

/// A key as a path has it between braces.
std::string quote_key(std::string_view key);

}  // namespace tarnd::store
