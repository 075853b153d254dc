#include "standalone/store/xpath_text.h"

#include <algorithm>
#include <cctype>
#include <utility>
#include <vector>

namespace tarnd::store {
namespace {

bool begins_name(char c) {
  return c == '_' || std::isalpha(static_cast<unsigned char>(c)) != 0 ||
         static_cast<unsigned char>(c) >= 0x80;
}

bool continues_name(char c) {
  return begins_name(c) || c == '-' || c == '.' || std::isdigit(static_cast<unsigned char>(c)) != 0;
}

// Joins operands by a product ("and") or a sum ("or") of truth values, which is greater than 0 if
// the condition holds.
std::string combined(const std::vector<std::string>& operands, char arithmetic) {
  if (operands.size() == 1) return operands.front();
  std::string text = "(";
  for (const std::string& operand : operands) {
    if (text.size() > 1) text += arithmetic;
    text += "boolean(" + operand + ")";
  }
  return text + ">0)";
}

// A condition that does not depend on its place among other predicates, as [2] does.
bool is_comparison(std::string_view operand) {
  return operand.find_first_of("=<>") != std::string_view::npos &&
         operand.find_first_of("([") == std::string_view::npos;
}

// An expression while it is read: operands joined by "and" form an alternative, alternatives are
// joined by "or".
class Expression {
 public:
  void add(std::string_view text) { operand_ += text; }
  void next_operand() { operands_.push_back(std::exchange(operand_, {})); }
  void next_alternative() {
    next_operand();
    alternatives_.push_back(combined(std::exchange(operands_, {}), '*'));
  }
  std::string take() {
    next_alternative();
    return combined(std::exchange(alternatives_, {}), '+');
  }
  // The same for a predicate: [a=1 and b=2] becomes [a=1][b=2]. If these are the keys of a list,
  // libyang then finds the entry by a look-up.
  std::string take_predicate() {
    if (!alternatives_.empty()) return take();
    next_operand();
    if (!std::all_of(operands_.begin(), operands_.end(), is_comparison)) {
      operand_ = std::move(operands_.back());
      operands_.pop_back();
      return take();
    }
    std::string text;
    for (const std::string& operand : std::exchange(operands_, {})) {
      text += (text.empty() ? "" : "][") + operand;
    }
    return text;
  }

 private:
  std::string operand_;
  std::vector<std::string> operands_;
  std::vector<std::string> alternatives_;
};

class Rewriter {
 public:
  explicit Rewriter(std::string_view text) : text_(text) {}

  // Rewrites everything. Returns the text as it is if its quotes or brackets do not match.
  std::string rewrite() {
    const std::string result = expressions('\0');
    return matched_ ? result : std::string(text_);
  }

 private:
  // Reads expressions, separated by commas, up to and including the closing bracket.
  std::string expressions(char closing) {
    std::string result;
    Expression expression;
    bool after_operand = false;
    while (pos_ < text_.size() && text_[pos_] != closing && matched_) {
      const char c = text_[pos_];
      if (c == ',') {
        result += expression.take() + ',';
        after_operand = false;
        ++pos_;
      } else {
        read_token(expression, after_operand);
      }
    }
    matched_ = matched_ && (closing == '\0') == (pos_ == text_.size());
    ++pos_;
    return result + (closing == ']' ? expression.take_predicate() : expression.take());
  }

  void read_token(Expression& expression, bool& after_operand) {
    const char c = text_[pos_];
    if (c == '(' || c == '[') {
      ++pos_;
      const char closing = c == '(' ? ')' : ']';
      expression.add(c + expressions(closing) + closing);
      after_operand = true;
    } else if (c == ')' || c == ']') {
      matched_ = false;
    } else if (c == '\'' || c == '"') {
      expression.add(literal());
      after_operand = true;
    } else if (begins_name(c)) {
      read_name(expression, after_operand);
    } else {
      expression.add(text_.substr(pos_++, 1));
      // A star multiplies after an operand; elsewhere it names any node.
      const bool ends_operand = c == '.' || std::isdigit(static_cast<unsigned char>(c)) != 0 ||
                                (c == '*' && !after_operand);
      if (std::isspace(static_cast<unsigned char>(c)) == 0) after_operand = ends_operand;
    }
  }

  // A name after an operand is an operator.
  void read_name(Expression& expression, bool& after_operand) {
    const std::size_t begin = pos_;
    while (pos_ < text_.size() && continues_name(text_[pos_])) ++pos_;
    const std::string_view name = text_.substr(begin, pos_ - begin);
    if (after_operand && name == "and") {
      expression.next_operand();
    } else if (after_operand && name == "or") {
      expression.next_alternative();
    } else {
      expression.add(name);
    }
    after_operand = !after_operand;
  }

  std::string_view literal() {
    const std::size_t begin = pos_;
    const std::size_t end = text_.find(text_[begin], begin + 1);
    matched_ = matched_ && end != std::string_view::npos;
    pos_ = matched_ ? end + 1 : text_.size();
    return text_.substr(begin, pos_ - begin);
  }

  std::string_view text_;
  std::size_t pos_ = 0;
  bool matched_ = true;
};

}  // namespace

std::string without_and_or(std::string_view expression) {
  return Rewriter(expression).rewrite();
}

}  // namespace tarnd::store
