#pragma once

#include <string_view>

#include "standalone/store/reader.h"
#include "standalone/store/tree_builder.h"

namespace tarnd::store {

/// Read an XML document, checked UTF-8, by the model. Throw InputError with the line.
ReadConfiguration read_xml_configuration(const Schema& schema, std::string_view text);
ReadChange read_xml_change(const Schema& schema, std::string_view text);

}  // namespace tarnd::store
