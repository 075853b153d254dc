#include "standalone/report/changes.h"

#include "standalone/store/path.h"

namespace tarnd::report {
namespace {

using store::Change;
using store::NodeKind;

bool counts_by_its_content(const lyd_node* node) {
  return store::schema_of(node).kind == NodeKind::kContainer;
}

bool is_inner(const lyd_node* node) {
  return (node->schema->nodetype & (LYS_CONTAINER | LYS_LIST)) != 0;
}

// The steps from the node to what is given below it, one after the other.
template <typename Take>
void for_each_given_child(const lyd_node* node, Take take) {
  for (const lyd_node* child = lyd_child_no_keys(node); child != nullptr; child = child->next) {
    if (store::has_given_content(child)) take(child);
  }
}

class Walk {
 public:
  explicit Walk(ChangeTaker& taker) : taker_(taker) {}

  void take(const Change& change) {
    const lyd_node* node = change.after != nullptr ? change.after : change.before;
    if (node == nullptr) return take_values(change);
    const std::size_t around = path_.size();
    path_ += store::step_of(node);
    if (change.before == nullptr) {
      take_whole(node, [this](const lyd_node* one) { taker_.created(path_, one); });
    } else if (change.after == nullptr) {
      take_whole(node, [this](const lyd_node* one) { taker_.deleted(path_, one); });
    } else if (change.schema->kind == NodeKind::kLeaf) {
      taker_.changed(path_, change.before, change.after);
    } else {
      for (const Change& child : change.children) take(child);
    }
    path_.resize(around);
  }

 private:
  // A container without presence, which only cases have come and go, is what is in it.
  template <typename Take>
  void take_whole(const lyd_node* node, Take take) {
    if (!counts_by_its_content(node)) return take(node);
    for_each_given_child(node, [&](const lyd_node* child) {
      const std::size_t around = path_.size();
      path_ += store::step_of(child);
      take_whole(child, take);
      path_.resize(around);
    });
  }

  // Both sides are in ascending order.
  void take_values(const Change& change) {
    auto before = change.values_before.begin();
    auto after = change.values_after.begin();
    while (before != change.values_before.end() || after != change.values_after.end()) {
      const bool no_more_after = after == change.values_after.end();
      const bool no_more_before = before == change.values_before.end();
      if (no_more_after || (!no_more_before && store::value_less(*before, *after))) {
        taker_.deleted(path_ + store::step_of(*before), *before);
        ++before;
      } else if (no_more_before || store::value_less(*after, *before)) {
        taker_.created(path_ + store::step_of(*after), *after);
        ++after;
      } else {
        ++before;
        ++after;
      }
    }
  }

  ChangeTaker& taker_;
  std::string path_;
};

void take_content(const lyd_node* node, std::string& path, ContentTaker& taker) {
  for_each_given_child(node, [&](const lyd_node* child) {
    const std::size_t around = path.size();
    path += store::step_of(child);
    bool is_whole = !is_inner(child);
    if (!is_whole) {
      is_whole = true;
      for_each_given_child(child, [&is_whole](const lyd_node*) { is_whole = false; });
    }
    if (is_whole) {
      taker.given(std::string_view(path).substr(1), child);
    } else {
      take_content(child, path, taker);
    }
    path.resize(around);
  });
}

}  // namespace

void take_changes(const Change* changes, ChangeTaker& taker) {
  if (changes != nullptr) Walk(taker).take(*changes);
}

void take_content(const lyd_node* node, ContentTaker& taker) {
  std::string path;
  take_content(node, path, taker);
}

bool has_value(const lyd_node* node) {
  const store::SchemaNode& schema = store::schema_of(node);
  return schema.kind == NodeKind::kLeaf && schema.value != store::ValueKind::kEmpty;
}

}  // namespace tarnd::report
