#pragma once

#include <libyang/libyang.h>

#include <cstdint>

#include "netconf/operation.h"

namespace tarnd::netconf {

constexpr std::string_view kWithDefaultsNamespace =
    "urn:ietf:params:xml:ns:yang:ietf-netconf-with-defaults";

/// Which leaves that have their default value a reply reports (RFC 6243, section 3).
enum class Defaults : std::uint8_t {
  kExplicit,         ///< those that a client has set
  kReportAll,        ///< all
  kReportAllTagged,  ///< all; those that no client has set have an attribute
  kTrim              ///< none
};

/// What the parameter `with-defaults` asks for; without it kExplicit.
Defaults defaults_asked_for(const Run& run);

/// Whether a leaf, or a value of a leaf-list, is in such a reply.
bool is_reported(const lyd_node* leaf, Defaults defaults);

}  // namespace tarnd::netconf
