#include "standalone/store/reader.h"

#include "standalone/store/input_text.h"
#include "standalone/store/json_reader.h"
#include "standalone/store/xml_reader.h"

namespace tarnd::store {

Format format_of(std::string_view file_name) {
  constexpr std::string_view kJsonEnding = ".json";
  return file_name.size() >= kJsonEnding.size() &&
                 file_name.substr(file_name.size() - kJsonEnding.size()) == kJsonEnding
             ? Format::kJson
             : Format::kXml;
}

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
