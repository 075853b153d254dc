#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "standalone/store/datastore.h"

namespace gponval {

/// Whether the text of a path ends inside the keys of an entry, so that entries complete it.
bool ends_in_keys(std::string_view path);

/// The texts that begin with this path and end with the next name: "/config/service-port{" for a
/// list, "/config/interface/" for a container. A leaf ends in '=' if a value is to follow.
std::vector<std::string> completed_names(const tarnd::store::Schema& schema, std::string_view path,
                                         bool with_values);

/// The texts that begin with this path, which ends in keys, and end with those of an entry.
std::vector<std::string> completed_entries(const tarnd::store::Datastore& datastore,
                                           std::string_view path);

}  // namespace gponval
