#include "netconf/warnings.h"

#include <algorithm>
#include <array>
#include <string>

#include "netconf/xml_text.h"

namespace tarnd::netconf {
namespace {

struct Choice {
  std::string_view name;
  WarningPolicy policy;
};

constexpr std::array kChoices{Choice{"accept", WarningPolicy::kAccept},
                              Choice{"reject", WarningPolicy::kReject},
                              Choice{"report", WarningPolicy::kReport}};

}  // namespace

WarningPolicy warning_policy(const Run& run) {
  const Element* given = find_parameter(run, "warnings");
  if (given == nullptr) return run.card.warnings;
  const std::string_view name = trimmed(given->text);
  const auto* choice = std::find_if(kChoices.begin(), kChoices.end(),
                                    [name](const Choice& known) { return known.name == name; });
  if (choice != kChoices.end()) return choice->policy;
  refuse(
      invalid_value("warnings is '" + std::string(name) + "'; accept, reject or report is needed"));
}

}  // namespace tarnd::netconf
