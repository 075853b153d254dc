#include "tests/support/change_text.h"

namespace tarnd::test {
namespace {

std::string label(const lyd_node* node) {
  return node == nullptr ? "-"
                         : std::string(lyd_get_value(node) != nullptr ? lyd_get_value(node) : "+");
}

void describe(const store::Change& change, const std::string& indent, std::string& text) {
  text += indent + change.schema->name + " " + label(change.before) + " " + label(change.after);
  for (const lyd_node* value : change.values_before) {
    text += " -" + std::string(store::value_text(value));
  }
  for (const lyd_node* value : change.values_after) {
    text += " +" + std::string(store::value_text(value));
  }
  text += "\n";
  for (const store::Change& child : change.children) describe(child, indent + "  ", text);
}

}  // namespace

std::string change_text(const store::Transaction& transaction) {
  return change_text(transaction.changes());
}

std::string change_text(const store::Change* change) {
  std::string text;
  if (change != nullptr) describe(*change, "", text);
  return text;
}

}  // namespace tarnd::test
