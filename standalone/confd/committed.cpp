#include "standalone/confd/committed.h"

#include <span>
#include <string>

#include "standalone/confd/changes.h"

namespace tarnd::confd {
namespace {

using store::NodeKind;
using store::Path;
using store::PathStep;

Path parent_of(const store::Schema& schema, const Path& path) {
  std::string text;
  for (std::size_t i = 0; i + 1 < path.steps().size(); ++i) {
    const PathStep& step = path.steps()[i];
    text += "/" + step.node->name;
    if (!step.keyed) continue;
    text += "{";
    for (const std::string& key : step.keys) text += store::quote_key(key) + " ";
    text += "}";
  }
  return *Path::parse(schema, text, nullptr);
}

bool has_committed_values(const SessionState& session, const Path& leaf_list) {
  const lyd_node* parent =
      session.transaction.committed(parent_of(session.model.schema(), leaf_list));
  if (parent == nullptr) return false;
  const store::Change* changes = session.transaction.changes();
  const store::Change* change =
      changes != nullptr ? find_change(*changes, std::span(leaf_list.steps()).subspan(1)) : nullptr;
  if (change != nullptr) return !change->values_before.empty();
  for (const lyd_node* value = lyd_child(parent); value != nullptr; value = value->next) {
    if (value->schema == leaf_list.last().node->lysc) return true;
  }
  return false;
}

}  // namespace

bool is_committed(const SessionState& session, const Path& path) {
  const store::Transaction& transaction = session.transaction;
  const PathStep& last = path.last();
  if (last.node->kind == NodeKind::kList && !last.keyed) {
    return transaction.committed_entries(path) > 0;
  }
  if (last.node->kind == NodeKind::kLeafList && !last.keyed) {
    return has_committed_values(session, path);
  }
  if (transaction.committed(path) != nullptr) return true;
  // A container without presence exists if its parent does.
  return last.node->kind == NodeKind::kContainer && path.steps().size() > 1 &&
         is_committed(session, parent_of(session.model.schema(), path));
}

}  // namespace tarnd::confd
