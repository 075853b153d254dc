#include "standalone/xml_parser.h"

#include <cstddef>

namespace tarnd {
XmlParser::XmlParser() : parser_(XML_ParserCreateNS("UTF-8", kSeparator), &XML_ParserFree) {}

XmlName XmlParser::split(std::string_view name) {
  const std::size_t end = name.find(kSeparator);
  if (end == std::string_view::npos) return {{}, name, {}};
  const std::string_view rest = name.substr(end + 1);
  const std::size_t end_of_local = rest.find(kSeparator);
  if (end_of_local == std::string_view::npos) return {name.substr(0, end), rest, {}};
  return {name.substr(0, end), rest.substr(0, end_of_local), rest.substr(end_of_local + 1)};
}

bool XmlParser::parse(std::string_view piece, bool last) {
  const XML_Status status = XML_Parse(parser_.get(), piece.data(), static_cast<int>(piece.size()),
                                      last ? XML_TRUE : XML_FALSE);
  if (failure_ != nullptr) std::rethrow_exception(failure_);
  return status == XML_STATUS_OK;
}

}  // namespace tarnd
