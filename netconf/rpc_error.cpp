#include "netconf/rpc_error.h"

#include <algorithm>
#include <array>

#include "netconf/xml_text.h"

namespace tarnd::netconf {
namespace {

void add(std::string& text, std::string_view element, std::string_view content,
         std::string_view attributes = {}) {
  if (content.empty()) return;
  text.append("<").append(element).append(attributes).append(">");
  text.append(escaped(content)).append("</").append(element).append(">");
}

std::string no_info(const InputSubject& /*subject*/) {
  return {};
}

std::string element_info(const InputSubject& subject) {
  return "<bad-element>" + escaped(subject.element) + "</bad-element>";
}

std::string attribute_info(const InputSubject& subject) {
  return "<bad-attribute>" + escaped(subject.attribute) + "</bad-attribute>" +
         element_info(subject);
}

std::string namespace_info(const InputSubject& subject) {
  return element_info(subject) + "<bad-namespace>" + escaped(subject.name_space) +
         "</bad-namespace>";
}

std::string choice_info(const InputSubject& subject) {
  return "<missing-choice xmlns=\"urn:ietf:params:xml:ns:yang:1\">" + escaped(subject.element) +
         "</missing-choice>";
}

struct Tags {
  InputFault fault;
  std::string_view tag;
  std::string_view app_tag;  ///< if the model has none for the value
  std::string (*info)(const InputSubject&);
};

constexpr std::array kTags{
    Tags{InputFault::kOther, "invalid-value", "", &no_info},
    Tags{InputFault::kUnknownElement, "unknown-element", "", &element_info},
    Tags{InputFault::kUnknownNamespace, "unknown-namespace", "", &namespace_info},
    Tags{InputFault::kMissingElement, "missing-element", "", &element_info},
    Tags{InputFault::kBadElement, "bad-element", "", &element_info},
    Tags{InputFault::kUnknownAttribute, "unknown-attribute", "", &attribute_info},
    Tags{InputFault::kMissingAttribute, "missing-attribute", "", &attribute_info},
    Tags{InputFault::kBadAttribute, "bad-attribute", "", &attribute_info},
    Tags{InputFault::kExists, "data-exists", "", &no_info},
    Tags{InputFault::kMissing, "data-missing", "", &no_info},
    Tags{InputFault::kMissingChoice, "data-missing", "missing-choice", &choice_info},
};

const Tags& tags_of(InputFault fault) {
  const auto* found = std::find_if(kTags.begin(), kTags.end(),
                                   [fault](const Tags& row) { return row.fault == fault; });
  return found != kTags.end() ? *found : kTags.front();
}

RpcError of_protocol(InputFault fault, const InputSubject& subject, const std::string& message) {
  return error_of("protocol", fault, subject, message);
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

RpcError error_of(std::string_view type, InputFault fault, const InputSubject& subject,
                  const std::string& message) {
  const Tags& tags = tags_of(fault);
  RpcError error = error_of(type, tags.tag, subject.message.empty() ? message : subject.message);
  error.app_tag = subject.app_tag.empty() ? tags.app_tag : subject.app_tag;
  error.info = tags.info(subject);
  return error;
}

RpcError missing_element(const std::string& element) {
  return of_protocol(InputFault::kMissingElement, {.element = element},
                     "the element '" + element + "' is missing");
}

RpcError unknown_element(const std::string& element) {
  return of_protocol(InputFault::kUnknownElement, {.element = element},
                     "the element '" + element + "' is not expected here");
}

RpcError bad_element(const std::string& element, const std::string& message) {
  return of_protocol(InputFault::kBadElement, {.element = element}, message);
}

RpcError unknown_namespace(const std::string& element, const std::string& name_space) {
  return of_protocol(InputFault::kUnknownNamespace, {.element = element, .name_space = name_space},
                     "the element '" + element + "' is in the namespace '" + name_space +
                         "', which is not expected here");
}

RpcError missing_attribute(const std::string& attribute, const std::string& element) {
  return of_protocol(InputFault::kMissingAttribute, {.element = element, .attribute = attribute},
                     "the attribute '" + attribute + "' is missing");
}

RpcError unknown_attribute(const std::string& attribute, const std::string& element) {
  return of_protocol(InputFault::kUnknownAttribute, {.element = element, .attribute = attribute},
                     "the attribute '" + attribute + "' is not expected here");
}

RpcError bad_attribute(const std::string& attribute, const std::string& element,
                       const std::string& message) {
  return of_protocol(InputFault::kBadAttribute, {.element = element, .attribute = attribute},
                     message);
}

RpcError invalid_value(const std::string& message) {
  return error_of("protocol", "invalid-value", message);
}

}  // namespace tarnd::netconf
