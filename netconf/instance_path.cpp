#include "netconf/instance_path.h"

#include <optional>

#include "standalone/store/path.h"

namespace tarnd::netconf {
namespace {

// A text of XPath is in one kind of quotes and cannot hold them.
std::optional<std::string> quoted(const std::string& value) {
  if (value.find('\'') == std::string::npos) return "'" + value + "'";
  if (value.find('"') == std::string::npos) return "\"" + value + "\"";
  return std::nullopt;
}

std::string key_name(const store::PathStep& step, std::size_t key, const std::string& prefix) {
  if (step.node->kind == store::NodeKind::kLeafList) return ".";
  return prefix + step.node->children[key]->name;
}

}  // namespace

std::string instance_path(const store::Schema& schema, std::string_view path) {
  std::string why;
  const auto parsed = store::Path::parse(schema, path, &why);
  if (!parsed.has_value() || parsed->names_impossible_entry()) return "";
  const std::string prefix = std::string(schema.prefix()) + ":";
  std::string text;
  for (const store::PathStep& step : parsed->steps()) {
    text += "/" + prefix + step.node->name;
    for (std::size_t key = 0; key < step.keys.size(); ++key) {
      const auto value = quoted(step.keys[key]);
      if (!value.has_value()) return "";
      text += "[" + key_name(step, key, prefix) + "=" + *value + "]";
    }
  }
  return text;
}

}  // namespace tarnd::netconf
