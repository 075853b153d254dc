#include <algorithm>
#include <map>
#include <set>

#include "standalone/daemon/daemon.h"

namespace tarnd {
namespace {

using store::Change;
using store::NodeKind;
using store::SchemaNode;

// Walks the changes once. Where the model has validation points, it notes every instance that
// changed and still exists, and for a list the parent whose entries changed.
class ChangedInstances {
 public:
  ChangedInstances(const std::vector<PointInModel>& points, const store::Datastore& datastore)
      : datastore_(datastore) {
    for (const PointInModel& point : points) {
      for (const SchemaNode* node = point.node; node != nullptr; node = node->parent) {
        towards_points_.insert(node);
      }
    }
  }

  void add(const Change& change, const lyd_node* parent) {
    if (!leads_to_point(*change.schema)) return;
    note_list(*change.schema, parent);
    if (change.schema->kind == NodeKind::kLeafList && !change.values_after.empty()) {
      instances_[change.schema].push_back(parent);
    }
    if (change.after == nullptr) return;
    instances_[change.schema].push_back(change.after);
    if (change.before == nullptr) return add_created_below(change.after);
    for (const Change& child : change.children) add(child, change.after);
  }

  [[nodiscard]] std::vector<const lyd_node*> of(const PointInModel& point) const {
    const bool once = point.point->call_once && point.node->kind == NodeKind::kList;
    const auto& map = once ? parents_ : instances_;
    const auto found = map.find(point.node);
    return found != map.end() ? found->second : std::vector<const lyd_node*>();
  }

 private:
  [[nodiscard]] bool leads_to_point(const SchemaNode& schema) const {
    return towards_points_.find(&schema) != towards_points_.end();
  }

  void note_list(const SchemaNode& schema, const lyd_node* parent) {
    if (schema.kind != NodeKind::kList) return;
    std::vector<const lyd_node*>& parents = parents_[&schema];
    if (parents.empty() || parents.back() != parent) parents.push_back(parent);
  }

  void add_created_below(const lyd_node* parent) {
    for (const SchemaNode* schema : store::schema_of(parent).children) {
      if (!leads_to_point(*schema)) continue;
      if (schema->kind == NodeKind::kList) {
        for (const lyd_node* entry : datastore_.entries(parent, *schema)) {
          add_created(entry, parent);
        }
      } else if (schema->kind == NodeKind::kLeafList) {
        if (!datastore_.leaf_list(parent, *schema).empty()) instances_[schema].push_back(parent);
      } else if (const lyd_node* child = datastore_.child(parent, *schema); child != nullptr) {
        add_created(child, parent);
      }
    }
  }

  void add_created(const lyd_node* node, const lyd_node* parent) {
    if (!store::has_given_content(node)) return;
    const SchemaNode& schema = store::schema_of(node);
    note_list(schema, parent);
    instances_[&schema].push_back(node);
    add_created_below(node);
  }

  const store::Datastore& datastore_;
  std::set<const SchemaNode*> towards_points_;
  std::map<const SchemaNode*, std::vector<const lyd_node*>> instances_;
  std::map<const SchemaNode*, std::vector<const lyd_node*>> parents_;
};

}  // namespace

std::vector<PointInModel> validation_points(const store::Schema& schema, std::string_view name) {
  std::vector<PointInModel> points;
  for (const SchemaNode& node : schema.nodes()) {
    for (const store::ValidationPoint& point : node.points) {
      if (point.name == name) points.push_back({&node, &point});
    }
  }
  std::stable_sort(points.begin(), points.end(),
                   [](const PointInModel& left, const PointInModel& right) {
                     return left.point->priority < right.point->priority;
                   });
  return points;
}

std::vector<std::string_view> request_names(const std::vector<PointInModel>& points) {
  std::vector<std::string_view> names;
  names.reserve(points.size());
  for (const PointInModel& in_model : points) names.emplace_back(in_model.point->request);
  return names;
}

std::vector<ValidationCall> affected_calls(const std::vector<PointInModel>& points,
                                           const store::Transaction& transaction) {
  if (transaction.changes() == nullptr) return {};
  ChangedInstances changed(points, transaction.datastore());
  changed.add(*transaction.changes(), nullptr);
  std::vector<ValidationCall> calls;
  for (const PointInModel& point : points) {
    for (const lyd_node* instance : changed.of(point)) {
      calls.push_back({point.node, point.point, instance});
    }
  }
  return calls;
}

}  // namespace tarnd
