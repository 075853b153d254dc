#include <nlohmann/json.hpp>

#include "standalone/report/changes.h"

namespace tarnd::report {
namespace {

using store::Change;

constexpr std::string_view kNone = "null";

std::string quoted(std::string_view text) {
  return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::string value_of(const lyd_node* node) {
  return has_value(node) ? quoted(store::value_text(node)) : std::string(kNone);
}

// Writes each change as it comes, since a commit may have very many.
class JsonPrinter : public ChangeTaker, private ContentTaker {
 public:
  explicit JsonPrinter(std::ostream& out) : out_(out) { out_ << '['; }

  void finish() { out_ << (is_first_ ? "]" : "\n  ]"); }

  void created(const std::string& path, const lyd_node* node) override {
    begin(path, "create");
    out_ << kNone << ", \"new\": ";
    whole(node);
    out_ << '}';
  }

  void deleted(const std::string& path, const lyd_node* node) override {
    begin(path, "delete");
    whole(node);
    out_ << ", \"new\": " << kNone << '}';
  }

  void changed(const std::string& path, const lyd_node* before, const lyd_node* after) override {
    begin(path, "change");
    out_ << value_of(before) << R"(, "new": )" << value_of(after) << '}';
  }

 private:
  void begin(const std::string& path, std::string_view operation) {
    out_ << (is_first_ ? "" : ",") << "\n    {\"path\": " << quoted(path) << R"(, "op": ")"
         << operation << R"(", "old": )";
    is_first_ = false;
  }

  void whole(const lyd_node* node) {
    if ((node->schema->nodetype & (LYS_CONTAINER | LYS_LIST)) == 0) {
      out_ << value_of(node);
      return;
    }
    out_ << '{';
    is_first_inside_ = true;
    take_content(node, *this);
    out_ << '}';
  }

  void given(std::string_view path, const lyd_node* node) override {
    out_ << (is_first_inside_ ? "" : ", ") << quoted(path) << ": " << value_of(node);
    is_first_inside_ = false;
  }

  std::ostream& out_;
  bool is_first_ = true;
  bool is_first_inside_ = true;
};

}  // namespace

void print_changes_json(std::ostream& out, const Change* changes) {
  JsonPrinter printer(out);
  take_changes(changes, printer);
  printer.finish();
}

}  // namespace tarnd::report
