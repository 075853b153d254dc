// Reads on the committed configuration.

#include "confd_cdb.h"

#include <cstdarg>

#include "standalone/confd/call.h"
#include "standalone/confd/committed.h"
#include "standalone/confd/errors.h"
#include "standalone/confd/values.h"

namespace tarnd::confd {
namespace {

int exists(int sock, const char* fmt, std::va_list args) {
  const auto found = enter_committed(PlatformCall::cdb_exists, sock, fmt, args);
  if (!found.has_value()) return CONFD_ERR;
  return is_committed(*found->session, found->path) ? 1 : 0;
}

// The value of a committed leaf; its text belongs to the configuration.
int get_leaf(PlatformCall call, int sock, confd_vtype type, confd_value_t& value, const char* fmt,
             std::va_list args) {
  const auto found = enter_committed(call, sock, fmt, args);
  if (!found.has_value()) return CONFD_ERR;
  const store::SchemaNode& schema = *found->path.last().node;
  if (schema.value == store::ValueKind::kNone) return fail_kind(schema, "leaf");
  const lyd_node* leaf = found->session->transaction.committed(found->path);
  if (leaf == nullptr) {
    return fail(CONFD_ERR_NOEXISTS, "'" + schema.path() + "' is not committed");
  }
  const confd_value_t any = leaf_value(found->session->model, leaf);
  if (any.type != type) return fail_type(call);
  value = any;
  return CONFD_OK;
}

int num_instances(int sock, const char* fmt, std::va_list args) {
  const auto found = enter_committed(PlatformCall::cdb_num_instances, sock, fmt, args);
  if (!found.has_value()) return CONFD_ERR;
  const store::PathStep& last = found->path.last();
  if (last.node->kind != store::NodeKind::kList || last.keyed) return fail_kind(*last.node, "list");
  return static_cast<int>(found->session->transaction.committed_entries(found->path));
}

}  // namespace
}  // namespace tarnd::confd

using tarnd::PlatformCall;

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
      tarnd::confd::get_leaf(PlatformCall::cdb_get_bool, sock, C_BOOL, value, fmt, args);
  va_end(args);
  if (result == CONFD_OK) *rval = CONFD_GET_BOOL(&value);
  return result;
}

int cdb_get_str(int sock, char* rval, int n, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  confd_value_t value;
  const int result =
      tarnd::confd::get_leaf(PlatformCall::cdb_get_str, sock, C_BUF, value, fmt, args);
  va_end(args);
  return result == CONFD_OK ? tarnd::confd::copy_text(value.val.buf, rval, n) : result;
}

int cdb_num_instances(int sock, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result = tarnd::confd::num_instances(sock, fmt, args);
  va_end(args);
  return result;
}
