#include "standalone/store/xml_reader.h"

#include <expat.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "standalone/store/envelope.h"
#include "standalone/store/input_text.h"
#include "standalone/xml_parser.h"

namespace tarnd::store {
namespace {

constexpr std::string_view kOperation = "operation";
// That of RFC 6243, section 6.
constexpr std::string_view kDefaultNamespace = "urn:ietf:params:xml:ns:netconf:default:1.0";
constexpr std::string_view kDefault = "default";

struct ErrorText {
  XML_Error code;
  std::string_view text;
};

// Our own messages, since expat's differ from release to release.
constexpr std::array kErrorTexts{
    ErrorText{XML_ERROR_SYNTAX, "text where an element or its end is needed"},
    ErrorText{XML_ERROR_NO_ELEMENTS, "the text ends before the elements that it begins"},
    ErrorText{XML_ERROR_UNCLOSED_TOKEN, "a tag, an entity or a comment is not ended"},
    ErrorText{XML_ERROR_PARTIAL_CHAR, "the text ends within a letter"},
    ErrorText{XML_ERROR_TAG_MISMATCH, "an end tag does not match the element that is open"},
    ErrorText{XML_ERROR_DUPLICATE_ATTRIBUTE, "an attribute is given twice"},
    ErrorText{XML_ERROR_JUNK_AFTER_DOC_ELEMENT, "a second element, or text, after the top level"},
    ErrorText{XML_ERROR_UNDEFINED_ENTITY,
              "an entity that XML does not have; it has amp, lt, gt, apos and quot"},
    ErrorText{XML_ERROR_BAD_CHAR_REF, "a reference to a character that XML does not allow"},
    ErrorText{XML_ERROR_UNBOUND_PREFIX, "a prefix without its xmlns declaration"},
    ErrorText{XML_ERROR_MISPLACED_XML_PI, "the XML declaration is not at the very beginning"},
    ErrorText{XML_ERROR_UNCLOSED_CDATA_SECTION, "a CDATA section is not ended"},
    ErrorText{XML_ERROR_XML_DECL, "the XML declaration is wrong"},
};

std::string text_of(XML_Error code) {
  const auto* found = std::find_if(kErrorTexts.begin(), kErrorTexts.end(),
                                   [code](const ErrorText& row) { return row.code == code; });
  return "not XML: " +
         std::string(found != kErrorTexts.end() ? found->text : "a character out of place");
}

class ExpatLocator : public Locator {
 public:
  explicit ExpatLocator(XML_Parser parser) : parser_(parser) {}
  [[nodiscard]] std::size_t line() const override { return XML_GetCurrentLineNumber(parser_); }

 private:
  XML_Parser parser_;
};

class XmlReader {
 public:
  XmlReader(const Schema& schema, TreeUse use)
      : schema_(schema),
        namespace_of_model_(std::string(schema.namespace_uri()) + XmlParser::kSeparator),
        locator_(parser_.get()),
        envelope_(schema, use, locator_),
        builder_(schema, use, locator_) {
    XML_Parser parser = parser_.get();
    XML_SetUserData(parser, this);
    XML_SetElementHandler(
        parser,
        [](void* self, const char* name, const char** attributes) {
          of(self).guarded([&](XmlReader& reader) { reader.begin(name, attributes); });
        },
        [](void* self, const char* /*name*/) {
          of(self).guarded([](XmlReader& reader) { reader.end(); });
        });
    XML_SetCharacterDataHandler(parser, [](void* self, const char* piece, int length) {
      of(self).guarded([&](XmlReader& reader) {
        reader.text({piece, static_cast<std::size_t>(length)});
      });
    });
    XML_SetXmlDeclHandler(
        parser, [](void* self, const char* version, const char* encoding, int /*standalone*/) {
          of(self).guarded(
              [&](const XmlReader& reader) { reader.check_declaration(version, encoding); });
        });
    XML_SetStartDoctypeDeclHandler(
        parser, [](void* self, const char* /*name*/, const char* /*system*/, const char* /*public*/,
                   int /*internal*/) {
          of(self).guarded([](const XmlReader& reader) {
            reader.envelope_.fail("a DOCTYPE; a configuration is read without one");
          });
        });
  }

  void read(TextSource& text) {
    TextCheck check;
    for (;;) {
      const std::string_view piece = text.next();
      if (piece.empty()) break;
      parse(check.take(piece), false);
    }
    check.finish();
    parse({}, true);
    envelope_.finish();
  }

  [[nodiscard]] TreeBuilder& builder() { return builder_; }
  [[nodiscard]] const Envelope& envelope() const { return envelope_; }

 private:
  void parse(std::string_view piece, bool last) {
    if (!parser_.parse(piece, last)) {
      throw InputError(text_of(XML_GetErrorCode(parser_.get())), locator_.line());
    }
  }

  static XmlReader& of(void* self) { return *static_cast<XmlReader*>(self); }

  template <typename Handle>
  void guarded(Handle handle) {
    parser_.guarded([&] { handle(*this); });
  }

  void begin(std::string_view full_name, const char** attributes) {
    if (builder_.open_node() == nullptr) {
      const XmlName name = XmlParser::split(full_name);
      if (!envelope_.enter(name.name_space, name.local)) {
        return refuse_operation(name.local, attributes);
      }
      builder_.enter_root();
    } else {
      builder_.enter(builder_.child(name_in_model(full_name)));
    }
    for (; *attributes != nullptr; attributes += 2) {
      take_attribute(XmlParser::split(attributes[0]), attributes[1]);
    }
  }

  [[nodiscard]] std::string_view name_in_model(std::string_view full_name) const {
    if (full_name.starts_with(namespace_of_model_)) {
      return full_name.substr(namespace_of_model_.size());
    }
    const XmlName name = XmlParser::split(full_name);
    builder_.fail("holds " + excerpt(name.local) +
                      (name.name_space.empty() ? " in no namespace"
                                               : " in the namespace " + excerpt(name.name_space)) +
                      "; '" + std::string(schema_.namespace_uri()) + "' is needed",
                  InputFault::kUnknownNamespace,
                  {.element = std::string(name.local), .name_space = std::string(name.name_space)});
  }

  void take_attribute(const XmlName& name, std::string_view value) {
    if (name.local == kDefault && name.name_space == kDefaultNamespace) return take_tag(value);
    if (builder_.use() == TreeUse::kConfiguration) {
      refuse_attribute(name, "has the attribute " + excerpt(name.local) +
                                 "; a configuration has none, a change may");
    }
    if (name.local != kOperation) {
      refuse_attribute(name, "has the unknown attribute " + excerpt(name.local));
    }
    if (name.name_space != kNetconfNamespace) {
      refuse_attribute(
          name, "has an attribute 'operation' " +
                    (name.name_space.empty() ? std::string("without a prefix")
                                             : "in the namespace " + excerpt(name.name_space)) +
                    "; nc:operation with xmlns:nc=\"" + std::string(kNetconfNamespace) +
                    "\" is needed");
    }
    builder_.operation(builder_.operation_named(value));
  }

  [[noreturn]] void refuse_attribute(const XmlName& name, const std::string& what) const {
    builder_.fail(what, InputFault::kUnknownAttribute,
                  {.element = builder_.open_node()->name, .attribute = std::string(name.local)});
  }

  // A server that tags defaults in its replies accepts the tags (RFC 6243, section 3.4).
  void take_tag(std::string_view value) {
    if (value == "true" || value == "1") return builder_.tag_as_default();
    if (value == "false" || value == "0") return;
    builder_.fail(
        "has the attribute 'default' with " + excerpt(value) + "; true, 1, false or 0 is needed",
        InputFault::kBadAttribute,
        {.element = builder_.open_node()->name, .attribute = std::string(kDefault)});
  }

  // It would have no effect there, and the user might expect one.
  void refuse_operation(std::string_view element, const char** attributes) const {
    for (; *attributes != nullptr; attributes += 2) {
      if (XmlParser::split(attributes[0]).local == kOperation) {
        envelope_.fail("'" + std::string(element) +
                           "' has an attribute 'operation', which only nodes of the model have",
                       InputFault::kUnknownAttribute,
                       {.element = std::string(element), .attribute = std::string(kOperation)});
      }
    }
  }

  void end() {
    if (builder_.open_node() != nullptr) {
      builder_.leave();
      if (builder_.open_node() != nullptr) return;
    }
    envelope_.leave();
  }

  void text(std::string_view piece) {
    if (builder_.open_node() != nullptr) {
      builder_.text(piece);
    } else {
      envelope_.text(piece);
    }
  }

  void check_declaration(const char* version, const char* encoding) const {
    if (version != nullptr && std::string_view(version) != "1.0") {
      envelope_.fail("the version of XML is " + excerpt(version) + "; 1.0 is needed");
    }
    if (encoding == nullptr) return;
    const std::string_view name = encoding;
    constexpr std::string_view kUtf8 = "utf-8";
    const bool known = std::equal(
        name.begin(), name.end(), kUtf8.begin(), kUtf8.end(),
        [](char letter, char wanted) { return letter == wanted || letter - 'A' + 'a' == wanted; });
    if (!known) envelope_.fail("the encoding is " + excerpt(name) + "; UTF-8 is needed");
  }

  const Schema& schema_;
  const std::string namespace_of_model_;  // as names begin
  XmlParser parser_;
  ExpatLocator locator_;
  Envelope envelope_;
  TreeBuilder builder_;
};

}  // namespace

ReadConfiguration read_xml_configuration(const Schema& schema, TextSource& text) {
  XmlReader reader(schema, TreeUse::kConfiguration);
  reader.read(text);
  return reader.builder().take_configuration();
}

ReadChange read_xml_change(const Schema& schema, TextSource& text) {
  XmlReader reader(schema, TreeUse::kChange);
  reader.read(text);
  ReadChange change = reader.builder().take_change();
  change.notes.default_operation = reader.envelope().default_operation();
  return change;
}

}  // namespace tarnd::store
