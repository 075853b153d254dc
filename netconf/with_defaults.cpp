#include "netconf/with_defaults.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "netconf/xml_text.h"

namespace tarnd::netconf {
namespace {

struct Mode {
  std::string_view name;
  Defaults defaults;
};

constexpr std::array kModes{
    Mode{"explicit", Defaults::kExplicit}, Mode{"report-all", Defaults::kReportAll},
    Mode{"report-all-tagged", Defaults::kReportAllTagged}, Mode{"trim", Defaults::kTrim}};

}  // namespace

Defaults defaults_asked_for(const Run& run) {
  const Element* asked = find_parameter(run, "with-defaults");
  if (asked == nullptr) return Defaults::kExplicit;
  const std::string_view name = trimmed(asked->text);
  const auto* mode = std::find_if(kModes.begin(), kModes.end(),
                                  [name](const Mode& known) { return known.name == name; });
  if (mode != kModes.end()) return mode->defaults;
  refuse(invalid_value("with-defaults is '" + std::string(name) +
                       "'; explicit, report-all, report-all-tagged or trim is needed"));
}

bool is_reported(const lyd_node* leaf, Defaults defaults) {
  switch (defaults) {
    case Defaults::kExplicit:
      return (leaf->flags & LYD_DEFAULT) == 0;
    case Defaults::kTrim:
      return lyd_is_default(leaf) == 0;
    case Defaults::kReportAll:
    case Defaults::kReportAllTagged:
      break;
  }
  return true;
}

}  // namespace tarnd::netconf
