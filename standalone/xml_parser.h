#pragma once

#include <expat.h>

#include <exception>
#include <memory>
#include <string_view>

namespace tarnd {

/// A name of an element or attribute, resolved to its namespace.
struct XmlName {
  std::string_view name_space;
  std::string_view local;
  std::string_view prefix;  ///< empty unless the parser returns triplets
};

/// A parser of expat whose handlers may throw. They do their work in `guarded`; what they throw
/// ends the parsing and comes out of `parse`.
class XmlParser {
 public:
  /// Between the namespace, the local name and the prefix of a name, as a handler gets it. No name
  /// has one in it, and expat refuses a namespace that does.
  static constexpr char kSeparator = '\n';

  XmlParser();

  [[nodiscard]] XML_Parser get() const { return parser_.get(); }

  /// The parts of a name as this parser passes it to a handler.
  static XmlName split(std::string_view name);

  /// Parses the next piece of the text; false if the text is not XML.
  bool parse(std::string_view piece, bool last);

  /// Calls `handle`, unless a handler has thrown before. No exception may pass through expat's C
  /// code, so it is kept until expat has returned.
  template <typename Handle>
  void guarded(Handle handle) {
    if (failure_ != nullptr) return;
    try {
      handle();
    } catch (...) {
      failure_ = std::current_exception();
      XML_StopParser(parser_.get(), XML_FALSE);
    }
  }

 private:
  std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser_;
  std::exception_ptr failure_;
};

}  // namespace tarnd
