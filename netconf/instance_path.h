#pragma once

#include <string>
#include <string_view>

#include "standalone/store/schema.h"

namespace tarnd::netconf {

/// The instance-identifier of a path as the daemon reports it, each name with the model's prefix:
/// "/base:config/base:interface/base:gpon[base:chassis-id='1']...". Empty for a path that none can
/// name, such as one with a key that has both kinds of quotes.
std::string instance_path(const store::Schema& schema, std::string_view path);

/// The path that instance_path() has made this of; empty for any other text.
std::string keypath_of(std::string_view instance);

}  // namespace tarnd::netconf
