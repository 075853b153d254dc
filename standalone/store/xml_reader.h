#pragma once

#include "standalone/store/reader.h"

namespace tarnd::store {

/// Read an XML document by the model. Throw InputError with the line.
ReadConfiguration read_xml_configuration(const Schema& schema, TextSource& text);
ReadChange read_xml_change(const Schema& schema, TextSource& text);

}  // namespace tarnd::store
