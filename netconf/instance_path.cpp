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

// Names and values are of our own making: "/base:gpon[base:chassis-id='1']". Names have no '[', and
// only what is in quotes has a ']'.
std::string keypath_of(std::string_view instance) {
  std::string path;
  bool is_within_keys = false;
  while (!instance.empty()) {
    const char first = instance.front();
    if (first == '/') {
      if (is_within_keys) path += "}";
      is_within_keys = false;
      const std::string_view name = instance.substr(1, instance.find_first_of("/[", 1) - 1);
      path.append("/").append(name.substr(name.find(':') + 1));
      instance.remove_prefix(name.size() + 1);
      continue;
    }
    const std::size_t quote = instance.find_first_of("'\"");
    if (quote == std::string_view::npos) return "";
    const std::size_t end = instance.find(instance[quote], quote + 1);
    if (end == std::string_view::npos || end + 2 > instance.size()) return "";
    path += is_within_keys ? " " : "{";
    is_within_keys = true;
    path += store::quote_key(instance.substr(quote + 1, end - quote - 1));
    instance.remove_prefix(end + 2);
  }
  return is_within_keys ? path + "}" : path;
}

}  // namespace tarnd::netconf
