#include "netconf/configuration_text.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "netconf/xml_text.h"

namespace tarnd::netconf {
namespace {

bool declares(const Element& config, std::string_view prefix) {
  return std::any_of(config.namespaces.begin(), config.namespaces.end(),
                     [prefix](const Namespace& known) { return known.prefix == prefix; });
}

// A prefix for the elements around the configuration that is not in use inside.
std::string own_prefix(const Element& config) {
  std::string prefix = "nc";
  while (declares(config, prefix)) prefix += '_';
  return prefix;
}

void append_declaration(std::string& text, const Namespace& declared) {
  text += declared.prefix.empty() ? " xmlns" : " xmlns:" + declared.prefix;
  text += "=\"" + escaped(declared.name) + "\"";
}

// What is in scope, of several declarations of one prefix the innermost.
void append_declarations(std::string& text, const Element& config) {
  std::vector<std::string_view> seen;
  // NOLINTNEXTLINE(modernize-loop-convert): clang 14 does not compile libstdc++'s reversed views
  for (auto known = config.namespaces.rbegin(); known != config.namespaces.rend(); ++known) {
    if (std::find(seen.begin(), seen.end(), known->prefix) != seen.end()) continue;
    seen.push_back(known->prefix);
    append_declaration(text, *known);
  }
}

void append_config(std::string& text, const Run& run, const Element& config,
                   const std::string& prefix) {
  text += "<" + prefix + ":config";
  append_declarations(text, config);
  append_declaration(text, {prefix, std::string(kBaseNamespace)});
  text += ">";
  text.append(run.message, config.unread.begin, config.unread.end - config.unread.begin);
  text += "</" + prefix + ":config>";
}

}  // namespace

std::string configuration_text(const Run& run, const Element& config) {
  std::string text;
  append_config(text, run, config, own_prefix(config));
  return text;
}

std::string edit_text(const Run& run, const Element& config) {
  const std::string prefix = own_prefix(config);
  std::string text = "<" + prefix + ":edit-config";
  append_declaration(text, {prefix, std::string(kBaseNamespace)});
  text += ">";
  if (const Element* by_default = find_parameter(run, "default-operation"); by_default != nullptr) {
    const std::string element = prefix + ":default-operation>";
    text += "<" + element + escaped(by_default->text) + "</" + element;
  }
  append_config(text, run, config, prefix);
  return text + "</" + prefix + ":edit-config>";
}

}  // namespace tarnd::netconf
