#pragma once

#include <string_view>

#include "netconf/operation.h"

namespace tarnd::netconf {

/// The module that adds the parameter `warnings` to commit and validate.
constexpr std::string_view kWarningsNamespace = "urn:gponval:netconf";
constexpr std::string_view kWarningsModule =
    "urn:gponval:netconf?module=gponval-netconf&revision=2026-11-22";

/// What the operation does when validators warn: what its client asks for, or else what the card
/// does with every operation.
WarningPolicy warning_policy(const Run& run);

}  // namespace tarnd::netconf
