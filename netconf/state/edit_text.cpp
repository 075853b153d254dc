#include "netconf/state/edit_text.h"

#include <cstddef>
#include <utility>
#include <vector>

#include "netconf/message.h"
#include "netconf/xml_text.h"
#include "standalone/input_error.h"
#include "standalone/store/path.h"

namespace tarnd::netconf::state {
namespace {

using store::ItemChange;
using store::NodeKind;
using store::PathStep;

constexpr const char* kRemove = " nc:operation=\"remove\"";

bool is_same(const PathStep& left, const PathStep& right) {
  return left.node == right.node && left.keys == right.keys;
}

// Writes elements inside one another, and opens and closes what is between one item and the next.
class Writer {
 public:
  explicit Writer(const store::Schema& schema)
      : schema_(schema),
        text_("<" + schema.root().name + " xmlns=\"" + std::string(schema.namespace_uri()) +
              "\" xmlns:nc=\"" + std::string(kBaseNamespace) + "\">"),
        open_{{&schema.root(), {}, false}} {}

  void take(const ItemChange& change) {
    is_empty_ = false;
    if (is_removed_already(change.path)) return;
    std::string why;
    const auto path = store::Path::parse(schema_, change.path, &why);
    if (!path.has_value() || path->names_impossible_entry()) throw InputError(why);
    go_to(path->steps());
    const PathStep& last = path->last();
    if (!change.after.has_value()) {
      remove(last);
      removed_ = change.path + "/";
    } else if (last.node->kind == NodeKind::kList || last.node->kind == NodeKind::kPresence) {
      open(last);
    } else {
      const bool in_path = last.node->kind == NodeKind::kLeafList;
      leaf(*last.node, in_path ? last.keys.front() : *change.after, "");
    }
  }

  [[nodiscard]] bool is_empty() const { return is_empty_; }

  std::string finish() {
    while (!open_.empty()) close();
    return std::move(text_);
  }

 private:
  // What is inside something that goes needs no removal of its own.
  [[nodiscard]] bool is_removed_already(const std::string& path) const {
    return !removed_.empty() && path.starts_with(removed_);
  }

  // Opens all that is around the last step.
  void go_to(const std::vector<PathStep>& steps) {
    const std::size_t around = steps.size() - 1;
    std::size_t common = 0;
    while (common < around && common < open_.size() && is_same(open_[common], steps[common])) {
      ++common;
    }
    while (open_.size() > common) close();
    for (; common < around; ++common) open(steps[common]);
  }

  void open(const PathStep& step) {
    text_ += "<" + step.node->name + ">";
    keys(step);
    open_.push_back(step);
  }

  void close() {
    text_ += "</" + open_.back().node->name + ">";
    open_.pop_back();
  }

  void keys(const PathStep& step) {
    for (std::size_t i = 0; i < step.keys.size(); ++i) {
      leaf(*step.node->children[i], step.keys[i], "");
    }
  }

  void remove(const PathStep& step) {
    switch (step.node->kind) {
      case NodeKind::kLeafList:
        return leaf(*step.node, step.keys.front(), kRemove);
      case NodeKind::kLeaf:
        text_ += "<" + step.node->name + kRemove + "/>";
        return;
      default:
        text_ += "<" + step.node->name + kRemove + ">";
        keys(step);
        text_ += "</" + step.node->name + ">";
    }
  }

  void leaf(const store::SchemaNode& node, const std::string& value, const char* operation) {
    text_ += "<" + node.name + operation + ">" + escaped(value) + "</" + node.name + ">";
  }

  const store::Schema& schema_;
  std::string text_;
  std::vector<PathStep> open_;
  std::string removed_;
  bool is_empty_ = true;
};

}  // namespace

std::vector<std::string> edit_texts(const store::Schema& schema,
                                    std::span<const ItemChange> changes) {
  std::vector<std::string> texts;
  for (const bool goes : {true, false}) {
    Writer writer(schema);
    for (const ItemChange& change : changes) {
      if (change.after.has_value() != goes) writer.take(change);
    }
    if (!writer.is_empty()) texts.push_back(writer.finish());
  }
  return texts;
}

}  // namespace tarnd::netconf::state
