#pragma once

#include <string_view>

#include "standalone/store/reader.h"

namespace tarnd::store {

/// Read a JSON document (RFC 7951, with metadata as in RFC 7952) by the model. The text must be
/// checked UTF-8. Throw InputError with the line.
ReadConfiguration read_json_configuration(const Schema& schema, std::string_view text);
ReadChange read_json_change(const Schema& schema, std::string_view text);

}  // namespace tarnd::store
