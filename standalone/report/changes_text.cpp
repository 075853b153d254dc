#include <algorithm>
#include <nlohmann/json.hpp>

#include "standalone/report/changes.h"
#include "standalone/report/colours.h"

namespace tarnd::report {
namespace {

using store::Change;

constexpr std::string_view kContentIndent = "    ";

// A text that would be hard to read between others is in quotes, as JSON writes it.
std::string shown_value(const lyd_node* leaf) {
  std::string value(store::value_text(leaf));
  const bool is_plain = !value.empty() && std::all_of(value.begin(), value.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte > ' ' && c != '"' && c != '\\' && byte != 0x7f;
  });
  if (is_plain) return value;
  return nlohmann::json(std::move(value))
      .dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

class TextPrinter : public ChangeTaker, private ContentTaker {
 public:
  TextPrinter(std::ostream& out, bool colours) : out_(out), colours_(colours) {}

  void created(const std::string& path, const lyd_node* node) override {
    whole('+', kGreen, path, node);
  }

  void deleted(const std::string& path, const lyd_node* node) override {
    whole('-', kRed, path, node);
  }

  void changed(const std::string& path, const lyd_node* before, const lyd_node* after) override {
    begin('~', kYellow);
    out_ << path << ": " << shown_value(before) << " -> " << shown_value(after);
    end();
  }

 private:
  void whole(char sign, std::string_view colour, const std::string& path, const lyd_node* node) {
    sign_ = sign;
    colour_ = colour;
    line("", path, node);
    take_content(node, *this);
  }

  void given(std::string_view path, const lyd_node* node) override {
    line(kContentIndent, path, node);
  }

  void line(std::string_view indent, std::string_view path, const lyd_node* node) {
    begin(sign_, colour_);
    out_ << indent << path;
    if (has_value(node)) out_ << ": " << shown_value(node);
    end();
  }

  void begin(char sign, std::string_view colour) {
    if (colours_) out_ << colour;
    out_ << sign << ' ';
  }

  void end() {
    if (colours_) out_ << kPlain;
    out_ << '\n';
  }

  std::ostream& out_;
  const bool colours_;
  char sign_ = '+';
  std::string_view colour_;
};

}  // namespace

void print_changes_text(std::ostream& out, const Change* changes, bool colours) {
  TextPrinter printer(out, colours);
  take_changes(changes, printer);
}

}  // namespace tarnd::report
