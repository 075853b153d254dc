#include "standalone/store/path.h"

#include <algorithm>

#include "standalone/store/datastore.h"

namespace tarnd::store {
namespace {

constexpr std::string_view kEnumOpen = "enum<";

bool is_number(std::string_view text) {
  return !text.empty() &&
         std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// "007" and "7" are the same key; what is no number stays as it is and finds nothing.
std::string canonical_number(std::string_view text) {
  if (!is_number(text)) return std::string(text);
  const auto digit = text.find_first_not_of('0');
  return std::string(digit == std::string_view::npos ? "0" : text.substr(digit));
}

// "enum<4>" is how an enumeration prints where its type is not known.
std::string enumeration_name(const SchemaNode& key, std::string_view text) {
  if (text.substr(0, kEnumOpen.size()) != kEnumOpen || text.back() != '>') {
    return std::string(text);
  }
  const std::string_view number = text.substr(kEnumOpen.size(), text.size() - kEnumOpen.size() - 1);
  const auto* type = reinterpret_cast<const lysc_type_enum*>(
      reinterpret_cast<const lysc_node_leaf*>(key.lysc)->type);
  LY_ARRAY_COUNT_TYPE i = 0;
  LY_ARRAY_FOR(type->enums, i) {
    if (std::to_string(type->enums[i].value) == number) return type->enums[i].name;
  }
  return std::string(text);
}

std::string canonical_key(const SchemaNode& key, std::string_view text) {
  switch (key.value) {
    case ValueKind::kUint8:
    case ValueKind::kUint16:
    case ValueKind::kUint32:
    case ValueKind::kUint64:
      return canonical_number(text);
    case ValueKind::kEnumeration:
      return enumeration_name(key, text);
    default:
      return std::string(text);
  }
}

// Reads the text of a path from left to right.
class Reader {
 public:
  explicit Reader(std::string_view text) : text_(text) {}

  [[nodiscard]] bool at_end() const { return pos_ == text_.size(); }
  [[nodiscard]] char peek() const { return at_end() ? '\0' : text_[pos_]; }

  bool take(char c) {
    if (at_end() || text_[pos_] != c) return false;
    ++pos_;
    return true;
  }

  std::string_view name() {
    const auto end = std::min(text_.find_first_of("/{", pos_), text_.size());
    const std::string_view result = text_.substr(pos_, end - pos_);
    pos_ = end;
    return result;
  }

  // The key values behind an opening brace; false when the closing one is missing.
  bool keys(std::vector<std::string>& result) {
    for (;;) {
      while (take(' ')) {
      }
      if (take('}')) return true;
      if (at_end()) return false;
      std::string& key = result.emplace_back();
      if (take('"') ? !quoted(key) : !plain(key)) return false;
    }
  }

 private:
  bool plain(std::string& key) {
    const auto end = text_.find_first_of(" }", pos_);
    if (end == std::string_view::npos) return false;
    key = text_.substr(pos_, end - pos_);
    pos_ = end;
    return true;
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

const SchemaNode* first_node(const Schema& schema, std::string_view name) {
  const auto colon = name.find(':');
  if (colon != std::string_view::npos) {
    if (name.substr(0, colon) != schema.prefix()) return nullptr;
    name = name.substr(colon + 1);
  }
  return name == schema.root().name ? &schema.root() : nullptr;
}

void canonicalize(PathStep& step) {
  if (step.node->kind == NodeKind::kLeafList) {
    for (std::string& key : step.keys) key = canonical_key(*step.node, key);
    return;
  }
  for (std::size_t i = 0; i < step.keys.size() && i < step.node->num_keys; ++i) {
    step.keys[i] = canonical_key(*step.node->children[i], step.keys[i]);
  }
}

}  // namespace

std::optional<Path> Path::parse(const Schema& schema, std::string_view text, std::string* why) {
  const auto fail = [&](const std::string& reason) -> std::optional<Path> {
    if (why != nullptr) *why = reason + " in the path " + std::string(text);
    return std::nullopt;
  };
  Reader reader(text);
  Path path;
  while (reader.take('/')) {
    if (reader.at_end()) break;
    if (reader.peek() != '{') {
      const std::string_view name = reader.name();
      const SchemaNode* node =
          path.steps_.empty() ? first_node(schema, name) : path.last().node->child(name);
      if (node == nullptr) return fail("no node '" + std::string(name) + "'");
      path.steps_.emplace_back().node = node;
    } else if (path.steps_.empty() || path.last().keyed) {
      return fail("keys without a list");
    }
    if (!reader.take('{')) continue;
    PathStep& step = path.steps_.back();
    if (step.node->kind != NodeKind::kList && step.node->kind != NodeKind::kLeafList) {
      return fail("keys behind '" + step.node->name + "', which is no list,");
    }
    step.keyed = true;
    if (!reader.keys(step.keys)) return fail("a brace is not closed");
    canonicalize(step);
  }
  if (!reader.at_end()) return fail("'/' expected");
  if (path.steps_.empty()) return fail("no node");
  return path;
}

bool Path::names_impossible_entry() const {
  return std::any_of(steps_.begin(), steps_.end(), [](const PathStep& step) {
    const std::size_t wanted = step.node->kind == NodeKind::kLeafList ? 1 : step.node->num_keys;
    return step.keyed && step.keys.size() != wanted;
  });
}

std::string quote_key(std::string_view key) {
  if (!key.empty() && key.find_first_of(" {}\"\\\t\n") == std::string_view::npos) {
    return std::string(key);
  }
  std::string quoted = "\"";
  for (const char c : key) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + '"';
}

std::string path_of(const lyd_node* node) {
  const SchemaNode& schema = schema_of(node);
  std::string path = node->parent != nullptr ? path_of(&node->parent->node) : std::string();
  path += "/" + schema.name;
  if (schema.kind == NodeKind::kLeafList) return path + "{" + quote_key(value_text(node)) + "}";
  if (schema.kind != NodeKind::kList) return path;
  path += "{";
  const lyd_node* key = lyd_child(node);
  for (std::size_t i = 0; i < schema.num_keys; ++i, key = key->next) {
    if (i > 0) path += " ";
    path += quote_key(value_text(key));
  }
  return path + "}";
}

}  // namespace tarnd::store
