#include "source_texts.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

namespace docs {
namespace {

constexpr char kHole = '\0';

struct Token {
  enum Kind { kText, kName, kOther } kind;
  std::string value;
};

class Tokens {
 public:
  explicit Tokens(const std::string& code) : code_(code) {
    while (at_ < code_.size()) read();
  }
  std::vector<Token> take() { return std::move(tokens_); }

 private:
  [[nodiscard]] bool at(std::string_view text) const {
    return std::string_view(code_).substr(at_).substr(0, text.size()) == text;
  }

  void skip_past(std::string_view end) {
    const std::size_t found = code_.find(end, at_);
    at_ = found == std::string::npos ? code_.size() : found + end.size();
  }

  void read() {
    const char letter = code_[at_];
    if (at("//") || letter == '#') {
      skip_line();
    } else if (at("/*")) {
      skip_past("*/");
    } else if (letter == '"') {
      read_text();
    } else if (letter == '\'') {
      read_quoted('\'');
    } else if (std::isalnum(static_cast<unsigned char>(letter)) != 0 || letter == '_') {
      read_name();
    } else {
      if (std::isspace(static_cast<unsigned char>(letter)) == 0) read_other();
      if (std::isspace(static_cast<unsigned char>(letter)) != 0) ++at_;
    }
  }

  // A preprocessor line may go on after a backslash.
  void skip_line() {
    do {
      skip_past("\n");
    } while (at_ >= 2 && at_ < code_.size() && code_[at_ - 2] == '\\');
  }

  std::string read_quoted(char quote) {
    std::string value;
    for (++at_; at_ < code_.size() && code_[at_] != quote; ++at_) {
      if (code_[at_] != '\\') {
        value += code_[at_];
        continue;
      }
      ++at_;
      value += code_[at_] == 'n' ? '\n' : code_[at_];
    }
    ++at_;
    return value;
  }

  // Neighbouring texts are one.
  void read_text() {
    const std::string value = read_quoted('"');
    if (!tokens_.empty() && tokens_.back().kind == Token::kText) {
      tokens_.back().value += value;
    } else {
      tokens_.push_back({Token::kText, value});
    }
  }

  void read_name() {
    const std::size_t from = at_;
    while (at_ < code_.size() &&
           (std::isalnum(static_cast<unsigned char>(code_[at_])) != 0 || code_[at_] == '_')) {
      ++at_;
    }
    tokens_.push_back({Token::kName, code_.substr(from, at_ - from)});
  }

  void read_other() {
    const std::size_t size = at("<<") || at("::") || at("+=") || at("++") ? 2 : 1;
    tokens_.push_back({Token::kOther, code_.substr(at_, size)});
    at_ += size;
  }

  const std::string& code_;
  std::size_t at_ = 0;
  std::vector<Token> tokens_;
};

bool is(const Token& token, std::string_view value) {
  return token.kind != Token::kText && token.value == value;
}

bool joins(const Token& token) {
  return is(token, "+") || is(token, "<<");
}

bool opens(const Token& token) {
  return is(token, "(") || is(token, "[");
}

bool closes(const Token& token) {
  return is(token, ")") || is(token, "]");
}

bool ends_expression(const Token& token) {
  constexpr std::array<std::string_view, 6> kEnds = {";", ",", "{", "}", "?", ":"};
  return std::any_of(kEnds.begin(), kEnds.end(),
                     [&](std::string_view end) { return is(token, end); });
}

/// The position after the bracket that closes the one at `from`.
std::size_t past_bracket(const std::vector<Token>& tokens, std::size_t from) {
  int depth = 0;
  for (std::size_t i = from; i < tokens.size(); ++i) {
    if (opens(tokens[i])) ++depth;
    if (closes(tokens[i]) && --depth == 0) return i + 1;
  }
  return tokens.size();
}

// Calls whose texts go to the trace: VALID_TRACE and its variants.
bool writes_trace(const Token& token) {
  return token.kind == Token::kName && token.value.rfind("VALID_TRACE", 0) == 0;
}

std::vector<Token> without_trace(const std::vector<Token>& tokens) {
  std::vector<Token> rest;
  for (std::size_t i = 0; i < tokens.size();) {
    if (writes_trace(tokens[i]) && i + 1 < tokens.size() && is(tokens[i + 1], "(")) {
      i = past_bracket(tokens, i + 1);
    } else {
      rest.push_back(tokens[i++]);
    }
  }
  return rest;
}

void add_hole(std::string& text) {
  if (text.empty() || text.back() != kHole) text += kHole;
}

/// A constant, the conversions of a printf format as holes.
std::string with_holes(const std::string& constant) {
  std::string text;
  for (std::size_t i = 0; i < constant.size(); ++i) {
    if (constant[i] == '%' && i + 1 < constant.size()) {
      ++i;
      add_hole(text);
    } else {
      text += constant[i];
    }
  }
  return text;
}

/// Is the text token at `at` joined to something before it? What a chain of << begins with is the
/// stream, and no part of the text.
bool follows_variable(const std::vector<Token>& tokens, std::size_t at) {
  if (at == 0 || !joins(tokens[at - 1])) return false;
  if (is(tokens[at - 1], "+")) return true;
  for (std::size_t i = at - 1; i-- > 0 && !ends_expression(tokens[i]);) {
    if (is(tokens[i], "<<")) return true;
  }
  return false;
}

/// The result of the chain of + or << that the text token at `at` begins; `at` moves past it.
std::string read_chain(const std::vector<Token>& tokens, std::size_t& at) {
  std::string text;
  if (follows_variable(tokens, at)) add_hole(text);
  text += with_holes(tokens[at++].value);
  while (at < tokens.size() && !ends_expression(tokens[at]) && !closes(tokens[at])) {
    const Token& token = tokens[at];
    if (opens(token)) {
      at = past_bracket(tokens, at);
    } else {
      if (token.kind == Token::kText) {
        text += with_holes(token.value);
      } else if (!joins(token)) {
        add_hole(text);
      }
      ++at;
    }
  }
  return text;
}

// Paths and expressions have braces, or begin with a slash; names have no blanks.
bool is_plain_language(const std::string& text) {
  const bool is_visible = std::any_of(text.begin(), text.end(), [](char letter) {
    return std::isgraph(static_cast<unsigned char>(letter)) != 0;
  });
  const std::size_t first = text.find_first_not_of(kHole);
  return is_visible && text.find(' ') != std::string::npos && text.find('{') == std::string::npos &&
         text[first] != '/';
}

CodeText parts_of(const std::string& line) {
  CodeText text;
  text.parts.emplace_back();
  for (const char letter : line) {
    if (letter == kHole) {
      text.parts.emplace_back();
    } else {
      text.parts.back() += letter;
    }
  }
  return text;
}

void add_lines(const std::string& text, std::vector<CodeText>& lines) {
  for (std::size_t from = 0; from < text.size();) {
    const std::size_t end = std::min(text.find('\n', from), text.size());
    const std::string line = text.substr(from, end - from);
    if (is_plain_language(line)) lines.push_back(parts_of(line));
    from = end + 1;
  }
}

}  // namespace

void collect_texts(const std::string& code, CodeTexts& texts) {
  const std::vector<Token> tokens = without_trace(Tokens(code).take());
  for (const Token& token : tokens) {
    if (token.kind == Token::kText && !token.value.empty()) texts.words.insert(token.value);
  }
  for (std::size_t i = 0; i < tokens.size();) {
    if (tokens[i].kind == Token::kText) {
      const std::string text = read_chain(tokens, i);
      if (is_plain_language(text)) add_lines(text, texts.sentences);
    } else {
      ++i;
    }
  }
}

}  // namespace docs
