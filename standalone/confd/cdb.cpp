// The CDB calls: reads on the committed configuration.

#include "confd_cdb.h"

#include "standalone/confd/changes.h"
#include "standalone/confd/errors.h"
#include "standalone/confd/place.h"
#include "standalone/confd/values.h"

namespace tarnd::confd {
namespace {

using store::NodeKind;
using store::Path;
using store::PathStep;
using store::Transaction;

struct PathInSession {
  const SessionState* session = nullptr;
  Path path;
};

// How every call begins; nothing where it has failed.
std::optional<PathInSession> enter_cdb(PlatformCall call, int sock, const char* fmt,
                                       std::va_list args) {
  if (!enter(call)) return std::nullopt;
  const SessionState* session = find_session_by_cdb_socket(sock);
  if (session == nullptr) {
    fail(CONFD_ERR_NOSESSION, "no read session has this socket");
    return std::nullopt;
  }
  auto path = read_path(session->model, fmt, args);
  if (!path.has_value()) return std::nullopt;
  return PathInSession{session, std::move(*path)};
}

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

bool is_committed(const SessionState& session, const Path& path) {
  const Transaction& transaction = session.transaction;
  const PathStep& last = path.last();
  if (last.node->kind == NodeKind::kList && !last.keyed) {
    return transaction.committed_entries(path) > 0;
  }
  if (last.node->kind == NodeKind::kLeafList && !last.keyed) {
    return has_committed_values(session, path);
  }
  if (transaction.committed(path) != nullptr) return true;
  // A container without presence is there wherever its parent is.
  return last.node->kind == NodeKind::kContainer && path.steps().size() > 1 &&
         is_committed(session, parent_of(session.model.schema(), path));
}

int exists(int sock, const char* fmt, std::va_list args) {
  const auto found = enter_cdb(PlatformCall::cdb_exists, sock, fmt, args);
  if (!found.has_value()) return CONFD_ERR;
  return is_committed(*found->session, found->path) ? 1 : 0;
}

// The value of a committed leaf; its text belongs to the configuration.
int get_leaf(PlatformCall call, int sock, confd_vtype type, confd_value_t& value, const char* fmt,
             std::va_list args) {
  const auto found = enter_cdb(call, sock, fmt, args);
  if (!found.has_value()) return CONFD_ERR;
  const store::SchemaNode& schema = *found->path.last().node;
  if (schema.value == store::ValueKind::kNone) return fail_kind(CONFD_ERR_BADPATH, schema, "leaf");
  const lyd_node* leaf = found->session->transaction.committed(found->path);
  if (leaf == nullptr) {
    return fail(CONFD_ERR_NOEXISTS, "'" + schema.path() + "' is not committed");
  }
  const confd_value_t any = leaf_value(found->session->model, leaf);
  if (any.type != type) {
    return fail(CONFD_ERR_BADTYPE,
                "the value is not of the type of " + std::string(to_string(call)));
  }
  value = any;
  return CONFD_OK;
}

int get_str(int sock, char* buf, int size, const char* fmt, std::va_list args) {
  confd_value_t value;
  if (get_leaf(PlatformCall::cdb_get_str, sock, C_BUF, value, fmt, args) != CONFD_OK) {
    return CONFD_ERR;
  }
  return copy_text(value.val.buf, buf, size);
}

int num_instances(int sock, const char* fmt, std::va_list args) {
  const auto found = enter_cdb(PlatformCall::cdb_num_instances, sock, fmt, args);
  if (!found.has_value()) return CONFD_ERR;
  const PathStep& last = found->path.last();
  if (last.node->kind != NodeKind::kList || last.keyed) {
    return fail_kind(CONFD_ERR_BADPATH, *last.node, "list");
  }
  return static_cast<int>(found->session->transaction.committed_entries(found->path));
}

}  // namespace
}  // namespace tarnd::confd

int cdb_exists(int sock, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result = tarnd::confd::exists(sock, fmt, args);
  va_end(args);
  return result;
}

int cdb_get_bool(int sock, int* rval, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  confd_value_t value;
  const int result =
      tarnd::confd::get_leaf(tarnd::PlatformCall::cdb_get_bool, sock, C_BOOL, value, fmt, args);
  va_end(args);
  if (result == CONFD_OK) *rval = CONFD_GET_BOOL(&value);
  return result;
}

int cdb_get_str(int sock, char* rval, int n, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result = tarnd::confd::get_str(sock, rval, n, fmt, args);
  va_end(args);
  return result;
}

int cdb_num_instances(int sock, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result = tarnd::confd::num_instances(sock, fmt, args);
  va_end(args);
  return result;
}
