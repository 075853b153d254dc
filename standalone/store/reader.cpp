#include "standalone/store/reader.h"

#include <string>

#include "standalone/store/input_text.h"
#include "standalone/store/json_reader.h"
#include "standalone/store/xml_reader.h"

namespace tarnd::store {

ReadConfiguration read_configuration(const Schema& schema, TextSource& text, Format format) {
  if (format == Format::kXml) return read_xml_configuration(schema, text);
  std::string whole;
  for (std::string_view piece = text.next(); !piece.empty(); piece = text.next()) whole += piece;
  return read_json_configuration(schema, checked_text(whole));
}

ReadConfiguration read_configuration(const Schema& schema, const std::string& text, Format format) {
  if (format == Format::kJson) return read_json_configuration(schema, checked_text(text));
  WholeText source(text);
  return read_xml_configuration(schema, source);
}

ReadChange read_change(const Schema& schema, const std::string& text, Format format) {
  if (format == Format::kJson) return read_json_change(schema, checked_text(text));
  WholeText source(text);
  return read_xml_change(schema, source);
}

}  // namespace tarnd::store
