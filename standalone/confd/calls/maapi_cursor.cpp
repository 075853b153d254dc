// Cursors over a list of the transaction: the keys of the next entry, or whole entries as value
// arrays.

#include "standalone/confd/cursor.h"

#include <algorithm>
#include <cstdarg>
#include <cstdint>

#include "confd_maapi.h"
#include "standalone/confd/call.h"
#include "standalone/confd/errors.h"
#include "standalone/confd/value_array.h"
#include "standalone/confd/values.h"

namespace tarnd::confd {
namespace {

// `impl` holds the number of the cursor, so that a cursor of an ended transaction is noticed.
void* number_to_impl(std::uintptr_t number) {
  return reinterpret_cast<void*>(number);  // NOLINT(performance-no-int-to-ptr)
}

std::uintptr_t number_of(const maapi_cursor& mc) {
  return reinterpret_cast<std::uintptr_t>(mc.impl);
}

struct CursorInSession {
  const SessionState* session = nullptr;
  Cursor* cursor = nullptr;
};

CursorInSession find_cursor(const maapi_cursor& mc) {
  SessionState* session = find_session_with_cursor(number_of(mc));
  if (session == nullptr) {
    fail(CONFD_ERR_NOSESSION, "the cursor is not open");
    return {};
  }
  return {session, &session->cursors.at(number_of(mc))};
}

void set_keys(maapi_cursor& mc, const Model& model, const lyd_node* entry) {
  const lyd_node* key = lyd_child(entry);
  for (int i = 0; i < mc.n; ++i, key = key->next) mc.keys[i] = leaf_value(model, key);
  CONFD_SET_NOEXISTS(&mc.keys[mc.n]);
}

// Asks the processor for the entry and its first nodes, which mostly follow it in memory: who walks
// a list reads some of them, each by a pointer in the one before.
void fetch_soon(const lyd_node* entry) {
  constexpr std::size_t kLines = 10;
  constexpr std::size_t kLine = 64;
  const char* const begin = reinterpret_cast<const char*>(entry);
  for (std::size_t i = 0; i < kLines; ++i) __builtin_prefetch(begin + i * kLine);
}

int init_cursor(int sock, int thandle, maapi_cursor& mc, const char* fmt, std::va_list args) {
  // n is not 0 yet, also after a failure here: only the first step finds that there is no entry.
  mc.n = 1;
  mc.impl = nullptr;
  CONFD_SET_NOEXISTS(&mc.keys[0]);
  const auto found = enter_place(PlatformCall::maapi_init_cursor, sock, thandle, fmt, args);
  if (!found.has_value()) return CONFD_ERR;
  const Place& place = found->place;
  if (place.schema->kind != store::NodeKind::kList || place.keyed) {
    return fail_kind(*place.schema, "list");
  }
  Cursor cursor;
  cursor.num_keys = place.schema->num_keys;
  if (place.parent != nullptr) {
    cursor.entries = found->session->transaction.datastore().entries(place.parent, *place.schema);
  }
  const auto number = static_cast<std::uintptr_t>(next_number());
  found->session->cursors.emplace(number, cursor);
  mc.impl = number_to_impl(number);
  mc.n = static_cast<int>(cursor.num_keys);
  return CONFD_OK;
}

int get_next(maapi_cursor& mc) {
  mc.n = 0;
  if (!enter(PlatformCall::maapi_get_next)) return CONFD_ERR;
  const auto [session, cursor] = find_cursor(mc);
  if (cursor == nullptr) return CONFD_ERR;
  if (cursor->next == cursor->entries.size()) return CONFD_OK;
  mc.n = static_cast<int>(cursor->num_keys);
  constexpr std::size_t kAhead = 2;  // soon enough, and not gone again
  if (cursor->next + kAhead < cursor->entries.size()) {
    fetch_soon(cursor->entries[cursor->next + kAhead]);
  }
  set_keys(mc, session->model, cursor->entries[cursor->next++]);
  return CONFD_OK;
}

int get_objects(maapi_cursor& mc, confd_value_t* values, int num_values, int* num_objects) {
  if (!enter(PlatformCall::maapi_get_objects)) return CONFD_ERR;
  if (num_values < 0 || *num_objects < 0) {
    return fail(CONFD_ERR_PROTOUSAGE, "a number of values or entries is negative");
  }
  const auto [session, cursor] = find_cursor(mc);
  if (cursor == nullptr) return CONFD_ERR;
  const auto wanted = static_cast<std::size_t>(*num_objects);
  const auto batch = cursor->entries.subspan(
      cursor->next, std::min(wanted, cursor->entries.size() - cursor->next));
  int highest = 0;
  for (const lyd_node* entry : batch) {
    highest = std::max(highest, write_value_array(session->model, entry, values, num_values));
    values += num_values;
  }
  cursor->next += batch.size();
  *num_objects = static_cast<int>(batch.size());
  mc.n = batch.size() < wanted ? 0 : static_cast<int>(cursor->num_keys);
  if (mc.n != 0 && !batch.empty()) set_keys(mc, session->model, batch.back());
  return highest;
}

void destroy_cursor(maapi_cursor& mc) {
  SessionState* session = find_session_with_cursor(number_of(mc));
  if (session != nullptr) session->cursors.erase(number_of(mc));
  mc.impl = nullptr;
  mc.n = 0;
}

}  // namespace
}  // namespace tarnd::confd

int maapi_init_cursor(int sock, int thandle, struct maapi_cursor* mc, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result = tarnd::confd::init_cursor(sock, thandle, *mc, fmt, args);
  va_end(args);
  return result;
}

int maapi_get_next(struct maapi_cursor* mc) {
  return tarnd::confd::get_next(*mc);
}

int maapi_get_objects(struct maapi_cursor* mc, confd_value_t* values, int n, int* nobj) {
  return tarnd::confd::get_objects(*mc, values, n, nobj);
}

void maapi_destroy_cursor(struct maapi_cursor* mc) {
  tarnd::enter_platform_call(tarnd::PlatformCall::maapi_destroy_cursor);
  tarnd::confd::destroy_cursor(*mc);
}
