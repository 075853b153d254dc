#include "standalone/store/reversal.h"

#include <new>

namespace tarnd::store {
namespace {

TreeOwner copy_of(const lyd_node* node) {
  lyd_node* made = nullptr;
  if (node != nullptr) {
    lyd_dup_single(node, nullptr, LYD_DUP_RECURSIVE | LYD_DUP_NO_META | LYD_DUP_WITH_FLAGS, &made);
    if (made == nullptr) throw std::bad_alloc();
  }
  return {made, &lyd_free_tree};
}

}  // namespace

Reversal::Reversal(const EditLog& edits) {
  if (edits.root_record() != nullptr) collect(*edits.root_record(), nullptr);
}

void Reversal::collect(const EditRecord& record, lyd_node* parent) {
  if (!record.tracked()) {
    steps_.push_back({parent, record.after, copy_of(record.before)});
    return;
  }
  for (const auto& child : record.children) collect(*child, record.after);
}

void Reversal::apply(EditLog& log) {
  // NOLINTNEXTLINE(modernize-loop-convert): clang 14 does not compile libstdc++'s reversed views
  for (auto step = steps_.rbegin(); step != steps_.rend(); ++step) {
    if (step->parent == nullptr) {
      log.swap_root(step->removed.release());
      continue;
    }
    if (step->added != nullptr) log.remove(step->added);
    if (step->removed != nullptr) log.insert(step->parent, step->removed.release());
  }
}

}  // namespace tarnd::store
