#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace tarnd::netconf {

constexpr std::string_view kBaseNamespace = "urn:ietf:params:xml:ns:netconf:base:1.0";

struct Attribute {
  std::string name_space;
  std::string prefix;
  std::string name;
  std::string value;
};

/// A prefix and its namespace.
struct Namespace {
  std::string prefix;
  std::string name;
};

/// An element of a message.
struct Element {
  std::string name_space;
  std::string name;
  std::string text;  ///< all text directly inside it
  std::vector<Attribute> attributes;
  std::vector<Element> children;
  /// The namespaces in scope, the inner ones last; kept only for an element with an XPath
  /// expression, which is the value of its attribute `select`, and for one with unread content.
  std::vector<Namespace> namespaces;
  /// Where in the message the content of a `config` is, which the store reads. Empty if there is
  /// nothing in it but white space.
  struct {
    std::size_t begin = 0;
    std::size_t end = 0;
    [[nodiscard]] bool empty() const { return begin == end; }
  } unread;

  [[nodiscard]] bool is(std::string_view of_namespace, std::string_view of_name) const {
    return name == of_name && name_space == of_namespace;
  }
  /// The attribute without a namespace, or null.
  [[nodiscard]] const std::string* attribute(std::string_view of_name) const;
};

/// The text is not an XML document that a message may be.
class MalformedMessage : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Reads a message. Throws MalformedMessage: not XML, a DOCTYPE, or more elements or deeper ones
/// than any operation needs.
Element read_message(std::string_view text);

}  // namespace tarnd::netconf
