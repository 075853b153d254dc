#pragma once

#include <string>

#include "netconf/operation.h"

namespace tarnd::netconf {

/// The configuration inside a `config` of the message as a document of its own, for the store.
std::string configuration_text(const Run& run, const Element& config);

/// The same as an edit, with the operation's default-operation.
std::string edit_text(const Run& run, const Element& config);

}  // namespace tarnd::netconf
