#include "netconf/parameters.h"

#include <algorithm>
#include <initializer_list>

#include "netconf/operation.h"
#include "netconf/rpc_error.h"
#include "netconf/xml_text.h"

namespace tarnd::netconf {
namespace {

// Attributes of the base protocol have no namespace.
void check_attributes(const Element& element, std::initializer_list<std::string_view> known = {}) {
  for (const Attribute& attribute : element.attributes) {
    const bool is_known = attribute.name_space.empty() &&
                          std::find(known.begin(), known.end(), attribute.name) != known.end();
    if (!is_known) refuse(unknown_attribute(attribute.name, element.name));
  }
}

void check_no_elements(const Element& element) {
  if (!element.children.empty()) refuse(unknown_element(element.children.front().name));
}

void check_content(const Element& element, Content content) {
  switch (content) {
    case Content::kWord:
      return check_no_elements(element);
    case Content::kNothing:
      return check_nothing_in(element);
    case Content::kDatastore:
      for (const Element& child : element.children) check_attributes(child);
      return check_no_text(element);
    case Content::kFilter:
    case Content::kConfiguration:
      return;
  }
}

void check_parameter(const Element& element, Content content) {
  if (content == Content::kFilter) {
    check_attributes(element, {"type", "select"});
  } else {
    check_attributes(element);
  }
  check_content(element, content);
}

[[noreturn]] void refuse_unknown(const Element& element, const Element& operation,
                                 const std::vector<Parameter>& known) {
  const bool is_known_namespace =
      element.name_space == operation.name_space ||
      std::any_of(known.begin(), known.end(), [&element](const Parameter& parameter) {
        return parameter.name_space == element.name_space;
      });
  refuse(is_known_namespace ? unknown_element(element.name)
                            : unknown_namespace(element.name, element.name_space));
}

}  // namespace

void check_no_text(const Element& element) {
  if (trimmed(element.text).empty()) return;
  refuse(bad_element(element.name, "'" + element.name + "' holds text; it takes elements only"));
}

void check_nothing_in(const Element& element) {
  check_no_elements(element);
  if (trimmed(element.text).empty()) return;
  refuse(invalid_value("'" + element.name + "' holds text; it takes nothing"));
}

void check_parameters(const Element& operation, const std::vector<Parameter>& known) {
  check_attributes(operation);
  check_no_text(operation);
  std::vector<std::string_view> seen;
  for (const Element& child : operation.children) {
    const auto found =
        std::find_if(known.begin(), known.end(), [&child](const Parameter& candidate) {
          return child.is(candidate.name_space, candidate.name);
        });
    if (found == known.end()) refuse_unknown(child, operation, known);
    if (std::find(seen.begin(), seen.end(), child.name) != seen.end()) {
      refuse(bad_element(child.name, "the element '" + child.name + "' is given twice"));
    }
    seen.push_back(child.name);
    check_parameter(child, found->content);
  }
}

}  // namespace tarnd::netconf
