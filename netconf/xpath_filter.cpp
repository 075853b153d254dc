#include "netconf/xpath_filter.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <new>
#include <optional>
#include <regex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "netconf/rpc_error.h"
#include "netconf/xml_text.h"
#include "standalone/store/xpath.h"

namespace tarnd::netconf {
namespace {

// Expressions are read by functions that call themselves. No client needs as much as this.
constexpr std::size_t kMostLength = 4096;
constexpr std::size_t kMostDepth = 50;

constexpr std::string_view kDocument = "/";

// Each condition may be tried at every node. A path to an ONU's innermost entry needs seven.
constexpr std::ptrdiff_t kMostConditions = 8;
constexpr std::size_t kMostOfPlainPath = 512;

std::regex regex_of_plain_path() {
  const std::string name = "[A-Za-z_][A-Za-z0-9_.-]*(?::[A-Za-z_][A-Za-z0-9_.-]*)?";
  const std::string blanks = R"([ \t\r\n]*)";
  const std::string condition = name + blanks + "=" + blanks + R"((?:'[^']*'|"[^"]*"|[0-9]+))";
  const std::string predicate =
      R"(\[)" + blanks + condition + "(?: +and +" + condition + ")*" + blanks + R"(\])";
  return std::regex(blanks + "(?:/|(?:/" + name + "(?:" + predicate + ")*)+)" + blanks);
}

[[noreturn]] void refuse_expression(const std::string& why) {
  throw RpcFailure(invalid_value("the filter's XPath expression: " + why));
}

const std::string& expression_of(const Element& filter) {
  const std::string* select = filter.attribute("select");
  if (select != nullptr) return *select;
  throw RpcFailure(missing_attribute("select", "filter"));
}

bool begins_name(char c) {
  return c == '_' || std::isalpha(static_cast<unsigned char>(c)) != 0;
}

bool continues_name(char c) {
  return begins_name(c) || c == '-' || c == '.' || std::isdigit(static_cast<unsigned char>(c)) != 0;
}

// Replaces the client's prefixes by the names of the modules, which libyang wants.
class PrefixWriter {
 public:
  PrefixWriter(std::string_view text, const std::vector<Namespace>& namespaces,
               const ly_ctx* context)
      : text_(text), namespaces_(namespaces), context_(context) {}

  // Nothing if the context has no module for one of the prefixes.
  std::optional<std::string> written() {
    if (text_.size() > kMostLength) refuse_expression("it is too long");
    while (pos_ < text_.size()) take_token();
    return is_foreign_ ? std::nullopt : std::optional(std::move(result_));
  }

 private:
  void take_token() {
    const char c = text_[pos_];
    if (c == '\'' || c == '"') return take_literal(c);
    if (begins_name(c)) return take_name();
    if (continues_name(c)) return take(length_of_name());
    if ((c == '(' || c == '[') && ++depth_ > kMostDepth) refuse_expression("it is nested too deep");
    if ((c == ')' || c == ']') && depth_ > 0) --depth_;
    take(1);
  }

  void take_literal(char quote) {
    const std::size_t end = text_.find(quote, pos_ + 1);
    if (end == std::string_view::npos) refuse_expression("a quote is missing");
    take(end + 1 - pos_);
  }

  // A name before one colon is a prefix; before two colons it is an axis.
  void take_name() {
    const std::size_t length = length_of_name();
    const std::string_view after = text_.substr(pos_ + length);
    if (!after.starts_with(':') || after.starts_with("::")) return take(length);
    result_ += module_of(text_.substr(pos_, length));
    pos_ += length;
    take(1);
  }

  [[nodiscard]] std::size_t length_of_name() const {
    std::size_t end = pos_;
    while (end < text_.size() && continues_name(text_[end])) ++end;
    return end - pos_;
  }

  void take(std::size_t length) {
    const std::string_view taken = text_.substr(pos_, length);
    result_ += taken;
    pos_ += taken.size();
  }

  std::string_view module_of(std::string_view prefix) {
    // NOLINTNEXTLINE(modernize-loop-convert): clang 14 does not compile libstdc++'s reversed views
    for (auto known = namespaces_.rbegin(); known != namespaces_.rend(); ++known) {
      if (known->prefix != prefix) continue;
      const lys_module* module = ly_ctx_get_module_implemented_ns(context_, known->name.c_str());
      if (module == nullptr) is_foreign_ = true;
      return module != nullptr ? module->name : "";
    }
    refuse_expression("the prefix '" + std::string(prefix) + "' is not declared");
  }

  std::string_view text_;
  const std::vector<Namespace>& namespaces_;
  const ly_ctx* context_;
  std::string result_;
  std::size_t pos_ = 0;
  std::size_t depth_ = 0;
  bool is_foreign_ = false;
};

using Nodes = std::vector<const lyd_node*>;

// Copies nodes with the nodes around them; each of these is copied once.
class Excerpt {
 public:
  explicit Excerpt(const Nodes& nodes) : chosen_(nodes.begin(), nodes.end()) {}

  store::TreeOwner take(const Nodes& nodes) {
    for (const lyd_node* node : nodes) {
      if (!is_inside_chosen(node)) add(node);
    }
    return std::move(made_);
  }

 private:
  bool is_inside_chosen(const lyd_node* node) const {
    const lyd_node* around = lyd_parent(node);
    while (around != nullptr && !chosen_.contains(around)) around = lyd_parent(around);
    return around != nullptr;
  }

  void add(const lyd_node* node) {
    lyd_node* around = copy_around(node);
    // The keys are in the copy of their entry already.
    if (lysc_is_key(node->schema)) return;
    link(around, duplicate(node, LYD_DUP_RECURSIVE));
  }

  // The copy of the node's parent, or null.
  lyd_node* copy_around(const lyd_node* node) {
    const lyd_node* parent = lyd_parent(node);
    if (parent == nullptr) return nullptr;
    const auto known = copies_.find(parent);
    if (known != copies_.end()) return known->second;
    lyd_node* around = copy_around(parent);
    lyd_node* made = duplicate(parent, 0);
    link(around, made);
    copies_[parent] = made;
    return made;
  }

  static lyd_node* duplicate(const lyd_node* node, std::uint32_t options) {
    lyd_node* made = nullptr;
    lyd_dup_single(node, nullptr, options | LYD_DUP_NO_META | LYD_DUP_WITH_FLAGS, &made);
    if (made == nullptr) throw std::bad_alloc();
    return made;
  }

  void link(lyd_node* parent, lyd_node* node) {
    if (parent != nullptr) {
      lyd_insert_child(parent, node);
    } else if (made_ == nullptr) {
      made_.reset(node);
    } else {
      lyd_node* first = nullptr;
      lyd_insert_sibling(made_.get(), node, &first);
      static_cast<void>(made_.release());
      made_.reset(first);
    }
  }

  std::unordered_set<const lyd_node*> chosen_;
  std::unordered_map<const lyd_node*, lyd_node*> copies_;
  store::TreeOwner made_{nullptr, &lyd_free_all};
};

}  // namespace

std::optional<store::TreeOwner> select_by_xpath(const Element& filter, const lyd_node* tree) {
  const std::string& select = expression_of(filter);
  Nodes nodes;
  if (trimmed(select) == kDocument) {
    for (const lyd_node* root = tree; root != nullptr; root = root->next) nodes.push_back(root);
    return Excerpt(nodes).take(nodes);
  }
  const auto expression = PrefixWriter(select, filter.namespaces, LYD_CTX(tree)).written();
  if (!expression.has_value()) return std::nullopt;
  store::XPath xpath(tree);
  const auto found = xpath.nodes(*expression);
  if (!found.has_value()) refuse_expression(xpath.error());
  return Excerpt(*found).take(*found);
}

bool is_plain_path(const Element& filter) {
  static const std::regex plain_path = regex_of_plain_path();
  const std::string* select = filter.attribute("select");
  if (select == nullptr) return true;  // it is refused
  const auto conditions = std::count(select->begin(), select->end(), '=');
  return select->size() <= kMostOfPlainPath && conditions <= kMostConditions &&
         std::regex_match(*select, plain_path);
}

}  // namespace tarnd::netconf
