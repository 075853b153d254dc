#include "netconf/warnings.h"

#include <array>

#include "netconf/words.h"

namespace tarnd::netconf {
namespace {

constexpr std::array kPolicies{Word<WarningPolicy>{"accept", WarningPolicy::kAccept},
                               Word<WarningPolicy>{"reject", WarningPolicy::kReject},
                               Word<WarningPolicy>{"report", WarningPolicy::kReport}};

}  // namespace

WarningPolicy warning_policy(const Run& run) {
  return meaning_of(run, "warnings", kPolicies).value_or(run.card.warnings);
}

}  // namespace tarnd::netconf
