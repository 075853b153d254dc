#include "standalone/store/reader.h"

#include "standalone/store/input_text.h"
#include "standalone/store/json_reader.h"
#include "standalone/store/xml_reader.h"

namespace tarnd::store {

ReadConfiguration read_configuration(const Schema& schema, const std::string& text, Format format) {
  const std::string_view checked = checked_text(text);
  return format == Format::kJson ? read_json_configuration(schema, checked)
                                 : read_xml_configuration(schema, checked);
}

ReadChange read_change(const Schema& schema, const std::string& text, Format format) {
  const std::string_view checked = checked_text(text);
  return format == Format::kJson ? read_json_change(schema, checked)
                                 : read_xml_change(schema, checked);
}

}  // namespace tarnd::store
