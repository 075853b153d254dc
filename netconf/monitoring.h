#pragma once

#include <string>

#include "netconf/operation.h"
#include "standalone/store/reader.h"

namespace tarnd::netconf {

constexpr const char* kMonitoringNamespace = "urn:ietf:params:xml:ns:yang:ietf-netconf-monitoring";

/// What `get` reports besides the configuration: the data of ietf-netconf-monitoring and of
/// ietf-yang-library, as siblings. Null if the card has no modules to report. `offered` are the
/// capabilities of the server's hello.
store::TreeOwner state_of(const Card& card, const std::string& offered);

std::string get_schema(const Run& run);

}  // namespace tarnd::netconf
