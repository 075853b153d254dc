#include "standalone/store/path.h"

#include <algorithm>

#include "standalone/store/datastore.h"
#include "standalone/store/path_text.h"

namespace tarnd::store {
namespace {

constexpr std::string_view kEnumOpen = "enum<";
constexpr std::size_t kUsualDepth = 8;

bool is_number(std::string_view text) {
  return !text.empty() &&
         std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// "007" and "7" are the same key. A text that is no number stays as it is and finds nothing.
std::string_view without_leading_zeros(std::string_view text) {
  if (text.size() < 2 || text.front() != '0' || !is_number(text)) return text;
  return text.substr(std::min(text.find_first_not_of('0'), text.size() - 1));
}

// An enumeration whose type is not known prints as "enum<4>".
std::string_view enumeration_name(const SchemaNode& key, std::string_view text) {
  if (!text.starts_with(kEnumOpen) || text.back() != '>') return text;
  const std::string_view number = text.substr(kEnumOpen.size(), text.size() - kEnumOpen.size() - 1);
  const auto* type = reinterpret_cast<const lysc_type_enum*>(
      reinterpret_cast<const lysc_node_leaf*>(key.lysc)->type);
  LY_ARRAY_COUNT_TYPE i = 0;
  LY_ARRAY_FOR(type->enums, i) {
    if (std::to_string(type->enums[i].value) == number) return type->enums[i].name;
  }
  return text;
}

void canonicalize(PathStep& step) {
  if (step.node->kind == NodeKind::kLeafList) {
    for (std::string& key : step.keys) make_canonical(*step.node, key);
    return;
  }
  for (std::size_t i = 0; i < step.keys.size() && i < step.node->num_keys; ++i) {
    make_canonical(*step.node->children[i], step.keys[i]);
  }
}

}  // namespace

std::string_view canonical_key(const SchemaNode& key, std::string_view text) {
  switch (key.value) {
    case ValueKind::kUint8:
    case ValueKind::kUint16:
    case ValueKind::kUint32:
    case ValueKind::kUint64:
      return without_leading_zeros(text);
    case ValueKind::kEnumeration:
      return enumeration_name(key, text);
    default:
      return text;
  }
}

void make_canonical(const SchemaNode& key, std::string& text) {
  const std::string_view canonical = canonical_key(key, text);
  if (canonical != text) text = std::string(canonical);
}

const SchemaNode* root_named(const Schema& schema, std::string_view name) {
  const auto colon = name.find(':');
  if (colon != std::string_view::npos) {
    if (name.substr(0, colon) != schema.prefix()) return nullptr;
    name = name.substr(colon + 1);
  }
  return name == schema.root().name ? &schema.root() : nullptr;
}

std::optional<Path> Path::parse(const Schema& schema, std::string_view text, std::string* why) {
  const auto fail = [&](const std::string& reason) -> std::optional<Path> {
    if (why != nullptr) *why = reason + " in the path " + std::string(text);
    return std::nullopt;
  };
  PathText reader(text);
  Path path;
  path.steps_.reserve(kUsualDepth);
  while (reader.take('/')) {
    if (reader.at_end()) break;
    if (reader.peek() != '{') {
      const std::string_view name = reader.until([](char c) { return c == '/' || c == '{'; });
      const SchemaNode* node =
          path.steps_.empty() ? root_named(schema, name) : path.last().node->child(name);
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
    step.keys.reserve(step.node->num_keys);
    if (!reader.keys(step.keys)) return fail("a brace is not closed");
    canonicalize(step);
  }
  if (!reader.at_end()) return fail("'/' expected");
  if (path.steps_.empty()) return fail("no node");
  return path;
}

Path Path::parent() const {
  Path path = *this;
  path.steps_.pop_back();
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

std::string step_of(const lyd_node* node) {
  const SchemaNode& schema = schema_of(node);
  std::string step = "/" + schema.name;
  if (schema.kind == NodeKind::kLeafList) return step + "{" + quote_key(value_text(node)) + "}";
  if (schema.kind != NodeKind::kList) return step;
  step += "{";
  const lyd_node* key = lyd_child(node);
  for (std::size_t i = 0; i < schema.num_keys; ++i, key = key->next) {
    if (i > 0) step += " ";
    step += quote_key(value_text(key));
  }
  return step + "}";
}

std::string path_of(const lyd_node* node) {
  const std::string around = node->parent != nullptr ? path_of(&node->parent->node) : "";
  return around + step_of(node);
}

}  // namespace tarnd::store
