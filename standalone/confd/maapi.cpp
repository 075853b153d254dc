// The MAAPI calls that read one node.

#include "confd_maapi.h"

#include <algorithm>
#include <cstdlib>

#include "standalone/confd/errors.h"
#include "standalone/confd/place.h"
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
  if (place.schema->kind != NodeKind::kList || place.keyed) {
    return fail_kind(CONFD_ERR_BADPATH, *place.schema, "list");
  }
  if (place.parent == nullptr) return 0;
  const store::Datastore& datastore = found->session->transaction.datastore();
  return static_cast<int>(datastore.entries(place.parent, *place.schema).size());
}

// The value of a leaf, or of a leaf-list as a whole, with memory of its own.
int get_value(PlatformCall call, int sock, int thandle, OwnedValue& value, const char* fmt,
              std::va_list args) {
  const auto found = enter_place(call, sock, thandle, fmt, args);
  if (!found.has_value()) return CONFD_ERR;
  const Place& place = found->place;
  const Model& model = found->session->model;
  if (place.schema->value == store::ValueKind::kNone) {
    return fail_kind(CONFD_ERR_BADPATH, *place.schema, "leaf");
  }
  if (place.node != nullptr) {
    value = OwnedValue(own_leaf_value(model, place.node));
    return CONFD_OK;
  }
  if (place.schema->kind == NodeKind::kLeafList && !place.keyed && place.parent != nullptr) {
    const store::Datastore& datastore = found->session->transaction.datastore();
    const auto values = datastore.leaf_list(place.parent, *place.schema);
    if (!values.empty()) {
      value = OwnedValue(own_list_value(model, values));
      return CONFD_OK;
    }
  }
  return fail(CONFD_ERR_NOEXISTS, "'" + place.schema->path() + "' does not exist");
}

// The same for the calls that want one type of value.
int get_typed(PlatformCall call, int sock, int thandle, confd_vtype type, OwnedValue& value,
              const char* fmt, std::va_list args) {
  OwnedValue any;
  if (get_value(call, sock, thandle, any, fmt, args) != CONFD_OK) return CONFD_ERR;
  if (any.get().type != type) {
    return fail(CONFD_ERR_BADTYPE,
                "the value is not of the type of " + std::string(to_string(call)));
  }
  value = std::move(any);
  return CONFD_OK;
}

}  // namespace
}  // namespace tarnd::confd

using tarnd::PlatformCall;
using tarnd::confd::get_typed;
using tarnd::confd::OwnedValue;

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
  OwnedValue value;
  const int result =
      get_typed(PlatformCall::maapi_get_bool_elem, sock, thandle, C_BOOL, value, fmt, args);
  va_end(args);
  if (result == CONFD_OK) *rval = CONFD_GET_BOOL(value.data());
  return result;
}

int maapi_get_u_int32_elem(int sock, int thandle, uint32_t* rval, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  OwnedValue value;
  const int result =
      get_typed(PlatformCall::maapi_get_u_int32_elem, sock, thandle, C_UINT32, value, fmt, args);
  va_end(args);
  if (result == CONFD_OK) *rval = CONFD_GET_UINT32(value.data());
  return result;
}

int maapi_get_enum_value_elem(int sock, int thandle, int32_t* rval, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  OwnedValue value;
  const int result = get_typed(PlatformCall::maapi_get_enum_value_elem, sock, thandle, C_ENUM_VALUE,
                               value, fmt, args);
  va_end(args);
  if (result == CONFD_OK) *rval = CONFD_GET_ENUM_VALUE(value.data());
  return result;
}

int maapi_get_ipv4_elem(int sock, int thandle, struct in_addr* rval, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  OwnedValue value;
  const int result =
      get_typed(PlatformCall::maapi_get_ipv4_elem, sock, thandle, C_IPV4, value, fmt, args);
  va_end(args);
  if (result == CONFD_OK) *rval = CONFD_GET_IPV4(value.data());
  return result;
}

int maapi_get_ipv4_and_plen_elem(int sock, int thandle, struct confd_ipv4_prefix* rval,
                                 const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  OwnedValue value;
  const int result = get_typed(PlatformCall::maapi_get_ipv4_and_plen_elem, sock, thandle,
                               C_IPV4_AND_PLEN, value, fmt, args);
  va_end(args);
  if (result == CONFD_OK) *rval = CONFD_GET_IPV4_AND_PLEN(value.data());
  return result;
}

int maapi_get_str_elem(int sock, int thandle, char* buf, int n, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  OwnedValue value;
  const int result =
      get_typed(PlatformCall::maapi_get_str_elem, sock, thandle, C_BUF, value, fmt, args);
  va_end(args);
  return result == CONFD_OK ? tarnd::confd::copy_text(value.get().val.buf, buf, n) : result;
}

int maapi_get_list_elem(int sock, int thandle, confd_value_t** values, int* n, const char* fmt,
                        ...) {
  va_list args;
  va_start(args, fmt);
  OwnedValue value;
  const int result =
      get_typed(PlatformCall::maapi_get_list_elem, sock, thandle, C_LIST, value, fmt, args);
  va_end(args);
  if (result != CONFD_OK) return result;
  const confd_value_t list = value.take();
  *values = list.val.list.ptr;
  *n = static_cast<int>(list.val.list.size);
  return CONFD_OK;
}
