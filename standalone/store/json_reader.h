#pragma once

#include <string_view>

#include "standalone/store/reader.h"

namespace tarnd::store {

/// Read a JSON document (RFC 7951, metadata as in RFC 7952), checked UTF-8, by the model. Throw
/// InputError with the line.
ReadConfiguration read_json_configuration(const Schema& schema, std::string_view text);
ReadChange read_json_change(const Schema& schema, std::string_view text);

}  // namespace tarnd::store
