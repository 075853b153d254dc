#include "netconf/message.h"

#include <expat.h>

#include <algorithm>

#include "netconf/xml_text.h"
#include "standalone/xml_parser.h"

namespace tarnd::netconf {
namespace {

// Beyond any filter. Without a bound a message of a megabyte would take a hundred of memory.
constexpr std::size_t kMostElements = 20'000;
constexpr std::size_t kMostDepth = 100;

constexpr const char* kTooMany = "the message has more elements than any operation needs";
constexpr const char* kTooDeep = "the elements of the message are nested too deep";

// A `config` whose content is a configuration.
bool holds_configuration(const std::vector<Element*>& open, const XmlName& name) {
  if (name.name_space != kBaseNamespace || name.local != "config" || open.size() < 2) return false;
  const Element& around = *open.back();
  return open.size() == 2 ? around.is(kBaseNamespace, "edit-config")
                          : open.size() == 3 && around.is(kBaseNamespace, "source");
}

class MessageReader {
 public:
  explicit MessageReader(std::string_view text) : text_(text) {
    XML_Parser parser = parser_.get();
    XML_SetUserData(parser, this);
    XML_SetReturnNSTriplet(parser, 1);
    XML_SetElementHandler(
        parser,
        [](void* self, const char* name, const char** attributes) {
          of(self).guarded(
              [&](MessageReader& reader) { reader.begin(XmlParser::split(name), attributes); });
        },
        [](void* self, const char* /*name*/) {
          of(self).guarded([](MessageReader& reader) { reader.end(); });
        });
    XML_SetNamespaceDeclHandler(
        parser,
        [](void* self, const char* prefix, const char* name) {
          of(self).guarded([&](MessageReader& reader) { reader.declare(prefix, name); });
        },
        [](void* self, const char* /*prefix*/) {
          of(self).guarded([](MessageReader& reader) { reader.namespaces_.pop_back(); });
        });
    XML_SetCharacterDataHandler(parser, [](void* self, const char* piece, int length) {
      of(self).guarded([&](MessageReader& reader) {
        reader.add_text({piece, static_cast<std::size_t>(length)});
      });
    });
    XML_SetStartDoctypeDeclHandler(parser, [](void* self, const char* /*name*/,
                                              const char* /*system*/, const char* /*public*/,
                                              int /*internal*/) {
      of(self).guarded([](MessageReader&) { throw MalformedMessage("a message has no DOCTYPE"); });
    });
  }

  Element read() {
    // expat copies what it is given, so it is given little at a time.
    constexpr std::size_t kMost = std::size_t{1} << 16;
    std::string_view rest = text_;
    do {
      const std::string_view piece = rest.substr(0, kMost);
      rest.remove_prefix(piece.size());
      if (!parser_.parse(piece, rest.empty())) throw MalformedMessage("the message is not XML");
    } while (!rest.empty());
    return std::move(root_);
  }

 private:
  static MessageReader& of(void* self) { return *static_cast<MessageReader*>(self); }

  template <typename Handle>
  void guarded(Handle handle) {
    parser_.guarded([&] { handle(*this); });
  }

  // A message with many declarations is as large as one with many attributes.
  void declare(const char* prefix, const char* name) {
    if (unread_depth_ == 0 && ++elements_ > kMostElements) throw MalformedMessage(kTooMany);
    namespaces_.push_back({prefix != nullptr ? prefix : "", name != nullptr ? name : ""});
  }

  void begin(const XmlName& name, const char** attributes) {
    if (unread_depth_ > 0) {
      has_unread_content_ = true;
      ++unread_depth_;
      return;
    }
    if (++elements_ > kMostElements) throw MalformedMessage(kTooMany);
    if (open_.size() == kMostDepth) throw MalformedMessage(kTooDeep);
    Element& element = open_.empty() ? root_ : open_.back()->children.emplace_back();
    const bool is_configuration = holds_configuration(open_, name);
    element.name_space = name.name_space;
    element.name = name.local;
    for (; *attributes != nullptr; attributes += 2) {
      if (++elements_ > kMostElements) throw MalformedMessage(kTooMany);
      const XmlName of_attribute = XmlParser::split(attributes[0]);
      element.attributes.push_back({std::string(of_attribute.name_space),
                                    std::string(of_attribute.prefix),
                                    std::string(of_attribute.local), attributes[1]});
    }
    if (is_configuration || element.attribute("select") != nullptr) keep_namespaces(element);
    if (is_configuration) begin_unread(element);
    open_.push_back(&element);
  }

  void keep_namespaces(Element& element) {
    elements_ += namespaces_.size();
    if (elements_ > kMostElements) throw MalformedMessage(kTooMany);
    element.namespaces = namespaces_;
  }

  void begin_unread(Element& element) {
    unread_depth_ = 1;
    has_unread_content_ = false;
    element.unread.begin =
        position() + static_cast<std::size_t>(XML_GetCurrentByteCount(parser_.get()));
  }

  void end() {
    if (unread_depth_ > 0) {
      if (--unread_depth_ > 0) return;
      auto& unread = open_.back()->unread;
      unread.end = has_unread_content_ ? position() : unread.begin;
    }
    open_.pop_back();
  }

  // Of the tag that expat reports at present.
  [[nodiscard]] std::size_t position() const {
    return static_cast<std::size_t>(XML_GetCurrentByteIndex(parser_.get()));
  }

  void add_text(std::string_view piece) {
    if (unread_depth_ > 0) {
      has_unread_content_ = has_unread_content_ || !trimmed(piece).empty();
    } else if (!open_.empty()) {
      open_.back()->text += piece;
    }
  }

  std::string_view text_;
  XmlParser parser_;
  Element root_;
  std::vector<Element*> open_;         // a parent's children do not move while one of them is open
  std::vector<Namespace> namespaces_;  // in scope
  std::size_t elements_ = 0;
  bool has_unread_content_ = false;
  std::size_t unread_depth_ = 0;  // how many elements are open from an unread `config` on
};

}  // namespace

const std::string* Element::attribute(std::string_view of_name) const {
  const auto found =
      std::find_if(attributes.begin(), attributes.end(), [&](const Attribute& attribute) {
        return attribute.name == of_name && attribute.name_space.empty();
      });
  return found != attributes.end() ? &found->value : nullptr;
}

Element read_message(std::string_view text) {
  return MessageReader(text).read();
}

}  // namespace tarnd::netconf
