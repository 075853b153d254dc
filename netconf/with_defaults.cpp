#include "netconf/with_defaults.h"

#include <array>

#include "netconf/words.h"

namespace tarnd::netconf {
namespace {

constexpr std::array kModes{Word<Defaults>{"explicit", Defaults::kExplicit},
                            Word<Defaults>{"report-all", Defaults::kReportAll},
                            Word<Defaults>{"report-all-tagged", Defaults::kReportAllTagged},
                            Word<Defaults>{"trim", Defaults::kTrim}};

}  // namespace

Defaults defaults_asked_for(const Run& run) {
  return meaning_of(run, "with-defaults", kModes).value_or(Defaults::kExplicit);
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
