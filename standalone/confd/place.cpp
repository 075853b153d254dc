#include "standalone/confd/place.h"

#include <algorithm>

#include "standalone/confd/errors.h"
#include "standalone/confd/format.h"

namespace tarnd::confd {
namespace {

using store::NodeKind;
using store::PathStep;

lyd_node* keyed_leaf(const store::Datastore& datastore, const lyd_node* parent,
                     const PathStep& step) {
  for (lyd_node* value : datastore.leaf_list(parent, *step.node)) {
    if (step.keys.size() == 1 && store::value_text(value) == step.keys.front()) return value;
  }
  return nullptr;
}

lyd_node* step_down(const store::Datastore& datastore, const lyd_node* parent,
                    const PathStep& step) {
  switch (step.node->kind) {
    case NodeKind::kList:
      return step.keyed ? datastore.entry(parent, *step.node, step.keys) : nullptr;
    case NodeKind::kLeafList:
      return step.keyed ? keyed_leaf(datastore, parent, step) : nullptr;
    default:
      return datastore.child(parent, *step.node);
  }
}

bool names_many(const PathStep& step) {
  return !step.keyed &&
         (step.node->kind == NodeKind::kList || step.node->kind == NodeKind::kLeafList);
}

}  // namespace

Place find_place(const store::Datastore& datastore, const store::Path& path) {
  const std::vector<PathStep>& steps = path.steps();
  Place place{&datastore.schema().root(), datastore.root(), nullptr, false, true};
  for (std::size_t i = 1; i < steps.size(); ++i) {
    const PathStep& step = steps[i];
    place.schema = step.node;
    place.keyed = step.keyed;
    place.parent = place.node;
    place.node = place.node != nullptr ? step_down(datastore, place.node, step) : nullptr;
    // The tree leaves out the containers of a choice's branch that is not taken.
    const bool implied = step.node->kind == NodeKind::kContainer && place.exists;
    place.exists = place.node != nullptr || implied;
  }
  return place;
}

std::optional<store::Path> read_path(const Model& model, const char* format,
                                     std::va_list arguments) {
  const std::optional<std::string> text = format_path(format, arguments);
  if (!text.has_value()) {
    fail(CONFD_ERR_BADPATH, "the path's format does not go with its arguments");
    return std::nullopt;
  }
  std::string why;
  std::optional<store::Path> path = store::Path::parse(model.schema(), *text, &why);
  if (!path.has_value()) {
    fail(CONFD_ERR_BADPATH, why);
    return std::nullopt;
  }
  if (std::any_of(path->steps().begin(), path->steps().end() - 1, names_many)) {
    fail(CONFD_ERR_BADPATH, "a list without keys stands inside the path " + *text);
    return std::nullopt;
  }
  return path;
}

SessionState* enter_session(PlatformCall call, int sock, int thandle) {
  if (!enter(call)) return nullptr;
  SessionState* session = find_session(sock, thandle);
  if (session == nullptr) fail(CONFD_ERR_NOSESSION, "no transaction has this socket and handle");
  return session;
}

std::optional<PlaceInSession> enter_place(PlatformCall call, int sock, int thandle,
                                          const char* format, std::va_list arguments) {
  SessionState* session = enter_session(call, sock, thandle);
  if (session == nullptr) return std::nullopt;
  const std::optional<store::Path> path = read_path(session->model, format, arguments);
  if (!path.has_value()) return std::nullopt;
  return PlaceInSession{session, find_place(session->transaction.datastore(), *path)};
}

int fail_kind(int code, const store::SchemaNode& node, const char* what) {
  return fail(code, "'" + node.path() + "' is no " + what);
}

}  // namespace tarnd::confd
