// Reads of one node of the transaction, and of several leaves below one node.

#include "confd_maapi.h"

#include <cstdarg>
#include <cstddef>
#include <optional>
#include <vector>

#include "standalone/confd/call.h"
#include "standalone/confd/errors.h"
#include "standalone/confd/integers.h"
#include "standalone/confd/tagged_values.h"
#include "standalone/confd/values.h"

namespace tarnd::confd {
namespace {

using store::NodeKind;

int exists(int sock, int thandle, const char* fmt, std::va_list args) {
  const auto found = enter_place(PlatformCall::maapi_exists, sock, thandle, fmt, args);
  if (!found.has_value()) return CONFD_ERR;
  const Place& place = found->place;
  const bool of_many =
      place.schema->kind == NodeKind::kList || place.schema->kind == NodeKind::kLeafList;
  if (!of_many || place.keyed) return place.exists ? 1 : 0;
  if (place.parent == nullptr) return 0;
  const store::Datastore& datastore = found->session->transaction.datastore();
  const bool empty = place.schema->kind == NodeKind::kList
                         ? datastore.entries(place.parent, *place.schema).empty()
                         : datastore.leaf_list(place.parent, *place.schema).empty();
  return empty ? 0 : 1;
}

int num_instances(int sock, int thandle, const char* fmt, std::va_list args) {
  const auto found = enter_place(PlatformCall::maapi_num_instances, sock, thandle, fmt, args);
  if (!found.has_value()) return CONFD_ERR;
  const Place& place = found->place;
  if (place.schema->kind != NodeKind::kList || place.keyed) return fail_kind(*place.schema, "list");
  if (place.parent == nullptr) return 0;
  const store::Datastore& datastore = found->session->transaction.datastore();
  return static_cast<int>(datastore.entries(place.parent, *place.schema).size());
}

// What a call reads: a leaf, or all values of a leaf-list.
struct Reading {
  const Model& model;
  const lyd_node* leaf = nullptr;
  std::vector<lyd_node*> values;
};

std::optional<Reading> enter_reading(PlatformCall call, int sock, int thandle, const char* fmt,
                                     std::va_list args) {
  const auto found = enter_place(call, sock, thandle, fmt, args);
  if (!found.has_value()) return std::nullopt;
  const Place& place = found->place;
  if (place.schema->value == store::ValueKind::kNone) {
    fail_kind(*place.schema, "leaf");
    return std::nullopt;
  }
  Reading reading{found->session->model, place.node, {}};
  if (reading.leaf != nullptr) return reading;
  if (place.schema->kind == NodeKind::kLeafList && !place.keyed && place.parent != nullptr) {
    const store::Datastore& datastore = found->session->transaction.datastore();
    reading.values = datastore.leaf_list(place.parent, *place.schema);
    if (!reading.values.empty()) return reading;
  }
  fail_missing(*place.schema);
  return std::nullopt;
}

// The value of a leaf, or of a leaf-list as a whole, with memory of its own.
int get_value(PlatformCall call, int sock, int thandle, OwnedValue& value, const char* fmt,
              std::va_list args) {
  const auto reading = enter_reading(call, sock, thandle, fmt, args);
  if (!reading.has_value()) return CONFD_ERR;
  value = OwnedValue(reading->leaf != nullptr ? own_leaf_value(reading->model, reading->leaf)
                                              : own_list_value(reading->model, reading->values));
  return CONFD_OK;
}

// The value of a leaf of one type, for the calls that copy it. It belongs to the configuration.
int get_typed(PlatformCall call, int sock, int thandle, confd_vtype type, confd_value_t& value,
              const char* fmt, std::va_list args) {
  const auto reading = enter_reading(call, sock, thandle, fmt, args);
  if (!reading.has_value()) return CONFD_ERR;
  if (reading->leaf == nullptr) return fail_type(call);
  value = leaf_value(reading->model, reading->leaf);
  return value.type == type ? CONFD_OK : fail_type(call);
}

// The same for a type whose value is one member of confd_value_t.
template <typename Result>
int get_fixed(PlatformCall call, int sock, int thandle, confd_vtype type,
              Result ValueUnion::*member, Result* result, const char* fmt, std::va_list args) {
  confd_value_t value;
  if (get_typed(call, sock, thandle, type, value, fmt, args) != CONFD_OK) return CONFD_ERR;
  *result = value.val.*member;
  return CONFD_OK;
}

int get_values(int sock, int thandle, confd_tag_value_t* values, int n, const char* fmt,
               std::va_list args) {
  const auto found = enter_place(PlatformCall::maapi_get_values, sock, thandle, fmt, args);
  if (!found.has_value()) return CONFD_ERR;
  const Place& place = found->place;
  if (place.schema->value != store::ValueKind::kNone ||
      (place.schema->kind == NodeKind::kList && !place.keyed)) {
    return fail_kind(*place.schema, "container or entry");
  }
  if (!place.exists) return fail_missing(*place.schema);
  if (n < 0) return fail(CONFD_ERR_PROTOUSAGE, "the number of values is negative");
  return read_tagged_values(*found->session, *place.schema, place.node,
                            {values, static_cast<std::size_t>(n)});
}

}  // namespace
}  // namespace tarnd::confd

using tarnd::PlatformCall;
using tarnd::confd::get_fixed;
using tarnd::confd::get_typed;
using tarnd::confd::OwnedValue;
using tarnd::confd::ValueUnion;

int maapi_exists(int sock, int thandle, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result = tarnd::confd::exists(sock, thandle, fmt, args);
  va_end(args);
  return result;
}

int maapi_num_instances(int sock, int thandle, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result = tarnd::confd::num_instances(sock, thandle, fmt, args);
  va_end(args);
  return result;
}

int maapi_get_elem(int sock, int thandle, confd_value_t* v, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  OwnedValue value;
  const int result =
      tarnd::confd::get_value(PlatformCall::maapi_get_elem, sock, thandle, value, fmt, args);
  va_end(args);
  if (result == CONFD_OK) *v = value.take();
  return result;
}

int maapi_get_bool_elem(int sock, int thandle, int* rval, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result = get_fixed(PlatformCall::maapi_get_bool_elem, sock, thandle, C_BOOL,
                               &ValueUnion::boolean, rval, fmt, args);
  va_end(args);
  return result;
}

int maapi_get_u_int32_elem(int sock, int thandle, uint32_t* rval, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result = get_fixed(PlatformCall::maapi_get_u_int32_elem, sock, thandle, C_UINT32,
                               &ValueUnion::u32, rval, fmt, args);
  va_end(args);
  return result;
}

int maapi_get_enum_value_elem(int sock, int thandle, int32_t* rval, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result = get_fixed(PlatformCall::maapi_get_enum_value_elem, sock, thandle, C_ENUM_VALUE,
                               &ValueUnion::enumvalue, rval, fmt, args);
  va_end(args);
  return result;
}

int maapi_get_ipv4_elem(int sock, int thandle, struct in_addr* rval, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result = get_fixed(PlatformCall::maapi_get_ipv4_elem, sock, thandle, C_IPV4,
                               &ValueUnion::ip, rval, fmt, args);
  va_end(args);
  return result;
}

int maapi_get_ipv4_and_plen_elem(int sock, int thandle, struct confd_ipv4_prefix* rval,
                                 const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result = get_fixed(PlatformCall::maapi_get_ipv4_and_plen_elem, sock, thandle,
                               C_IPV4_AND_PLEN, &ValueUnion::ipv4prefix, rval, fmt, args);
  va_end(args);
  return result;
}

int maapi_get_str_elem(int sock, int thandle, char* buf, int n, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  confd_value_t value;
  const int result =
      get_typed(PlatformCall::maapi_get_str_elem, sock, thandle, C_BUF, value, fmt, args);
  va_end(args);
  return result == CONFD_OK ? tarnd::confd::copy_text(value.val.buf, buf, n) : result;
}

int maapi_get_list_elem(int sock, int thandle, confd_value_t** values, int* n, const char* fmt,
                        ...) {
  va_list args;
  va_start(args, fmt);
  OwnedValue value;
  const int result =
      tarnd::confd::get_value(PlatformCall::maapi_get_list_elem, sock, thandle, value, fmt, args);
  va_end(args);
  if (result != CONFD_OK) return result;
  if (value.get().type != C_LIST) {
    return tarnd::confd::fail_type(PlatformCall::maapi_get_list_elem);
  }
  const confd_value_t list = value.take();
  *values = list.val.list.ptr;
  *n = static_cast<int>(list.val.list.size);
  return CONFD_OK;
}

int maapi_get_values(int sock, int thandle, confd_tag_value_t* values, int n, const char* fmt,
                     ...) {
  va_list args;
  va_start(args, fmt);
  const int result = tarnd::confd::get_values(sock, thandle, values, n, fmt, args);
  va_end(args);
  return result;
}
