#include "netconf/data_text.h"

#include <string_view>

namespace tarnd::netconf {
namespace {

// The attribute's namespace is that of RFC 6243, section 6; libyang prints that of the module.
constexpr std::string_view kDeclaration =
    " xmlns:wd=\"urn:ietf:params:xml:ns:netconf:default:1.0\"";
constexpr std::string_view kTag = " wd:default=\"true\"";

bool is_leaf(const lyd_node* node) {
  return (node->schema->nodetype & LYD_NODE_TERM) != 0;
}

bool says_nothing_alone(const lyd_node* node) {
  return node->schema->nodetype == LYS_CONTAINER && (node->schema->flags & LYS_PRESENCE) == 0;
}

std::string_view replaced(char letter) {
  switch (letter) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    default:
      return "&#13;";  // a reader takes a bare one for a line end
  }
}

class Printer {
 public:
  Printer(std::string& text, Defaults defaults) : text_(text), defaults_(defaults) {}

  void print_root(const lyd_node* root) {
    open(root, nullptr);
    if (defaults_ == Defaults::kReportAllTagged) text_ += kDeclaration;
    print_content(root);
  }

 private:
  void print(const lyd_node* node, const lys_module* around) {
    if (is_leaf(node) && !is_reported(node, defaults_)) return;
    const std::size_t before = text_.size();
    open(node, around);
    if (is_leaf(node)) return print_leaf(node);
    if (!print_content(node) && says_nothing_alone(node)) text_.resize(before);
  }

  void open(const lyd_node* node, const lys_module* around) {
    text_.append("<").append(node->schema->name);
    const lys_module* module = node->schema->module;
    if (module != around) text_.append(" xmlns=\"").append(module->ns).append("\"");
  }

  void print_leaf(const lyd_node* leaf) {
    if (defaults_ == Defaults::kReportAllTagged && (leaf->flags & LYD_DEFAULT) != 0) text_ += kTag;
    const std::string_view value = declared_value(leaf);
    if (value.empty() && value_.empty()) {
      text_ += "/>";
      return;
    }
    text_ += '>';
    append_escaped(value_);
    append_escaped(value);
    close(leaf);
  }

  // The canonical text. An identity is written with its module's prefix, which is declared here;
  // libyang writes the module's name.
  std::string_view declared_value(const lyd_node* leaf) {
    value_.clear();
    const lyd_value& value = reinterpret_cast<const lyd_node_term*>(leaf)->value;
    if (value.realtype->basetype != LY_TYPE_IDENT) return lyd_get_value(leaf);
    const lys_module* module = value.ident->module;
    text_.append(" xmlns:").append(module->prefix).append("=\"").append(module->ns).append("\"");
    value_.append(module->prefix).append(":");
    return value.ident->name;
  }

  // Ends the start tag and writes what is inside. Returns whether that was anything.
  bool print_content(const lyd_node* node) {
    text_ += '>';
    const std::size_t before = text_.size();
    for (const lyd_node* child = lyd_child(node); child != nullptr; child = child->next) {
      print(child, node->schema->module);
    }
    if (text_.size() != before) {
      close(node);
      return true;
    }
    text_.back() = '/';
    text_ += '>';
    return false;
  }

  void close(const lyd_node* node) { text_.append("</").append(node->schema->name).append(">"); }

  void append_escaped(std::string_view value) {
    for (std::size_t at = value.find_first_of("&<>\r"); at != std::string_view::npos;
         at = value.find_first_of("&<>\r")) {
      text_.append(value.substr(0, at)).append(replaced(value[at]));
      value.remove_prefix(at + 1);
    }
    text_ += value;
  }

  std::string& text_;
  const Defaults defaults_;
  std::string value_;  // the prefix of an identity
};

}  // namespace

void append_data(std::string& text, const lyd_node* tree, Defaults defaults) {
  Printer(text, defaults).print_root(tree);
}

}  // namespace tarnd::netconf
