#include "netconf/rpc_error.h"

#include "netconf/xml_text.h"

namespace tarnd::netconf {
namespace {

void add(std::string& text, std::string_view element, std::string_view content,
         std::string_view attributes = {}) {
  if (content.empty()) return;
  text.append("<").append(element).append(attributes).append(">");
  text.append(escaped(content)).append("</").append(element).append(">");
}

std::string bad_element(const std::string& element) {
  return "<bad-element>" + escaped(element) + "</bad-element>";
}

}  // namespace

std::string to_xml(const RpcError& error, const PathPrefix& prefix) {
  std::string text = "<rpc-error>";
  add(text, "error-type", error.type);
  add(text, "error-tag", error.tag);
  add(text, "error-severity", error.severity);
  add(text, "error-app-tag", error.app_tag);
  add(text, "error-path", error.path,
      " xmlns:" + std::string(prefix.prefix) + "=\"" + escaped_value(prefix.name_space) + "\"");
  add(text, "error-message", error.message, " xml:lang=\"en\"");
  if (!error.info.empty()) text.append("<error-info>").append(error.info).append("</error-info>");
  return text + "</rpc-error>";
}

RpcError error_of(std::string_view type, std::string_view tag, std::string_view message) {
  RpcError error;
  error.type = type;
  error.tag = tag;
  error.message = message;
  return error;
}

RpcError missing_element(const std::string& element) {
  RpcError error =
      error_of("protocol", "missing-element", "the element '" + element + "' is missing");
  error.info = bad_element(element);
  return error;
}

RpcError unknown_element(const std::string& element) {
  RpcError error =
      error_of("protocol", "unknown-element", "the element '" + element + "' is not expected here");
  error.info = bad_element(element);
  return error;
}

RpcError invalid_value(const std::string& message) {
  return error_of("protocol", "invalid-value", message);
}

}  // namespace tarnd::netconf
