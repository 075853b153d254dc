#include "standalone/store/xpath.h"

#include <algorithm>
#include <cctype>
#include <memory>
#include <new>

#include "standalone/store/libyang_compat.h"
#include "standalone/store/path_count.h"
#include "standalone/store/xpath_text.h"

namespace tarnd::store {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";
constexpr std::string_view kCount = "count";

ly_ctx* libyang_of(const lyd_node* tree) {
  return tree->schema->module->ctx;
}

std::string_view trimmed(std::string_view text) {
  const std::size_t begin = std::min(text.find_first_not_of(kBlanks), text.size());
  text.remove_prefix(begin);
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

// The text between the first and the last parenthesis of "count(...)". These may not belong
// together, as in "count(a) + count(b)": then the text is no expression, which shows when it is
// evaluated.
std::optional<std::string> counted_path(std::string_view expression) {
  expression = trimmed(expression);
  if (!expression.starts_with(kCount) || !expression.ends_with(')')) return std::nullopt;
  expression.remove_prefix(kCount.size());
  expression = trimmed(expression);
  if (!expression.starts_with('(')) return std::nullopt;
  return std::string(expression.substr(1, expression.size() - 2));
}

bool begins_step(char c) {
  return c == '*' || c == '/' || c == '_' || std::isalpha(static_cast<unsigned char>(c)) != 0;
}

// Whether a node set may hold the document root, which is no node of the tree. Only a lone "/", the
// steps "." and "..", axes such as "self::" and functions lead to it.
bool may_name_root(std::string_view path) {
  if (path.find_first_of(".(") != std::string_view::npos ||
      path.find("::") != std::string_view::npos) {
    return true;
  }
  for (std::size_t slash = path.find('/'); slash != std::string_view::npos;
       slash = path.find('/', slash + 1)) {
    const std::size_t next = path.find_first_not_of(kBlanks, slash + 1);
    if (next == std::string_view::npos || !begins_step(path[next])) return true;
  }
  return false;
}

// The positions at which the outer predicates of a path open; nothing if the expression is not one
// path from the root.
std::optional<std::vector<std::size_t>> predicates_of_path(std::string_view expression) {
  constexpr std::string_view kPathMarks = "/_-.:*@";
  if (!expression.starts_with('/')) return std::nullopt;
  std::vector<std::size_t> opens;
  int depth = 0;
  char quote = '\0';
  for (std::size_t at = 0; at < expression.size(); ++at) {
    const char c = expression[at];
    if (quote != '\0') {
      if (c == quote) quote = '\0';
    } else if (depth > 0 && (c == '\'' || c == '"')) {
      quote = c;
    } else if (c == '[') {
      if (depth++ == 0) opens.push_back(at);
    } else if (c == ']') {
      if (--depth < 0) return std::nullopt;
    } else if (depth == 0 && std::isalnum(static_cast<unsigned char>(c)) == 0 &&
               kPathMarks.find(c) == std::string_view::npos) {
      return std::nullopt;
    }
  }
  if (depth != 0 || quote != '\0') return std::nullopt;
  return opens;
}

// XPath's string value of a node: the texts of its leaves, joined.
std::string string_value(const lyd_node* node) {
  if ((node->schema->nodetype & (LYS_LEAF | LYS_LEAFLIST)) != 0) {
    return std::string(value_text(node));
  }
  std::string text;
  for (const lyd_node* child = lyd_child(node); child != nullptr; child = child->next) {
    text += string_value(child);
  }
  return text;
}

}  // namespace

XPath::XPath(const Datastore& datastore, const lyd_node* context)
    : tree_(datastore.root()), context_(context) {
  datastore.settle_order();
}

XPath::XPath(const lyd_node* tree) : tree_(tree), context_(nullptr) {}

XPath::Outcome XPath::find(const std::string& expression, std::vector<const lyd_node*>& nodes) {
  ly_set* found = nullptr;
  const std::string safe = without_and_or(expression);
  const LY_ERR result = find_xpath(context_, tree_, safe.c_str(), &found);
  const auto free_set = [](ly_set* set) { ly_set_free(set, nullptr); };
  const std::unique_ptr<ly_set, decltype(free_set)> set(found, free_set);
  if (result == LY_EMEM) throw std::bad_alloc();
  if (result != LY_SUCCESS) {
    error_ = take_libyang_error(libyang_of(tree_));
    if (names_nothing(expression)) return Outcome::kNodes;
    return result == LY_EINVAL ? Outcome::kOtherType : Outcome::kMalformed;
  }
  ly_err_clean(libyang_of(tree_), nullptr);
  nodes.assign(set->dnodes, set->dnodes + set->count);
  return Outcome::kNodes;
}

// If no node is left to apply a condition with "and" or "or" to, libyang takes the condition's
// value for that of the path, and finds no node set. Such a path, if it is well formed, names
// nothing.
bool XPath::names_nothing(const std::string& expression) {
  const std::string path(trimmed(expression));
  const auto predicates = predicates_of_path(path);
  if (!predicates.has_value()) return false;
  const bool ends = std::any_of(predicates->begin(), predicates->end(), [&](std::size_t open) {
    ly_set* found = nullptr;
    const LY_ERR result = find_xpath(context_, tree_, path.substr(0, open).c_str(), &found);
    const bool none = result == LY_SUCCESS && found->count == 0;
    ly_set_free(found, nullptr);
    return none;
  });
  if (!ends) return false;
  ly_set* atoms = nullptr;
  const LY_ERR well_formed =
      lys_find_xpath_atoms(libyang_of(tree_), tree_->schema, path.c_str(), 0, &atoms);
  ly_set_free(atoms, nullptr);
  ly_err_clean(libyang_of(tree_), nullptr);
  return well_formed == LY_SUCCESS;
}

std::optional<std::vector<const lyd_node*>> XPath::nodes(const std::string& expression) {
  std::vector<const lyd_node*> found;
  if (find(expression, found) != Outcome::kNodes) return std::nullopt;
  return found;
}

std::optional<std::string> XPath::text(const std::string& expression) {
  std::vector<const lyd_node*> found;
  const auto path = counted_path(expression);
  if (path.has_value()) {
    // Rules count the users of a profile on the whole card; libyang would make sets of all nodes on
    // the way.
    const auto counted = count_by_walk(tree_, *path);
    if (counted.has_value()) return std::to_string(*counted);
    if (find(*path, found) == Outcome::kNodes) return count(*path, found.size());
  }
  switch (find(expression, found)) {
    case Outcome::kNodes:
      return found.empty() ? std::string() : string_value(found.front());
    case Outcome::kOtherType:
      return truth_value(expression);
    case Outcome::kMalformed:
      break;
  }
  return std::nullopt;
}

std::optional<std::string> XPath::count(const std::string& path, std::size_t found) {
  std::string number = std::to_string(found);
  if (!may_name_root(path) || holds("count(" + path + ")=" + number) == true) return number;
  error_ = "the document root cannot be counted";
  return std::nullopt;
}

// libyang evaluates conditions only. The expression is a truth value if it equals one both as a
// text and as a number.
std::optional<std::string> XPath::truth_value(const std::string& expression) {
  const std::string as_text = "string(" + expression + ")=";
  const std::string as_number = " and number(" + expression + ")=";
  if (holds(as_text + "'true'" + as_number + "1") == true) return "true";
  if (holds(as_text + "'false'" + as_number + "0") == true) return "false";
  error_ = "neither a node set, nor its count, nor a truth value";
  return std::nullopt;
}

std::optional<bool> XPath::holds(const std::string& condition) {
  if (context_ == nullptr) {
    const auto found = nodes("/self::node()[" + condition + "]/*");
    return found.has_value() ? std::optional(!found->empty()) : std::nullopt;
  }
  ly_bool result = 0;
  if (lyd_eval_xpath(context_, without_and_or(condition).c_str(), &result) == LY_SUCCESS)
    return result != 0;
  error_ = take_libyang_error(libyang_of(tree_));
  return std::nullopt;
}

}  // namespace tarnd::store
