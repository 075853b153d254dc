#pragma once

#include <libyang/libyang.h>

#include "confd_lib.h"

namespace tarnd::confd {

/// The part of a confd_value_t that holds the value, one member for each type.
using ValueUnion = decltype(confd_value_t::val);

/// Calls the visitor with the member that holds the integers of this type, such as &ValueUnion::u8.
/// Returns false, without a call, if the type is no integer type.
template <typename Visitor>
bool visit_integer(confd_vtype type, Visitor visit) {
  switch (type) {
    case C_INT8:
      visit(&ValueUnion::i8);
      return true;
    case C_INT16:
      visit(&ValueUnion::i16);
      return true;
    case C_INT32:
      visit(&ValueUnion::i32);
      return true;
    case C_INT64:
      visit(&ValueUnion::i64);
      return true;
    case C_UINT8:
      visit(&ValueUnion::u8);
      return true;
    case C_UINT16:
      visit(&ValueUnion::u16);
      return true;
    case C_UINT32:
      visit(&ValueUnion::u32);
      return true;
    case C_UINT64:
      visit(&ValueUnion::u64);
      return true;
    default:
      return false;
  }
}

/// The same for a type of libyang. The visitor gets the type of the value that is made of it, that
/// value's member and libyang's, such as C_UINT8, &ValueUnion::u8 and &lyd_value::uint8.
template <typename Visitor>
bool visit_integer(LY_DATA_TYPE type, Visitor visit) {
  switch (type) {
    case LY_TYPE_INT8:
      visit(C_INT8, &ValueUnion::i8, &lyd_value::int8);
      return true;
    case LY_TYPE_INT16:
      visit(C_INT16, &ValueUnion::i16, &lyd_value::int16);
      return true;
    case LY_TYPE_INT32:
      visit(C_INT32, &ValueUnion::i32, &lyd_value::int32);
      return true;
    case LY_TYPE_INT64:
      visit(C_INT64, &ValueUnion::i64, &lyd_value::int64);
      return true;
    case LY_TYPE_UINT8:
      visit(C_UINT8, &ValueUnion::u8, &lyd_value::uint8);
      return true;
    case LY_TYPE_UINT16:
      visit(C_UINT16, &ValueUnion::u16, &lyd_value::uint16);
      return true;
    case LY_TYPE_UINT32:
      visit(C_UINT32, &ValueUnion::u32, &lyd_value::uint32);
      return true;
    case LY_TYPE_UINT64:
      visit(C_UINT64, &ValueUnion::u64, &lyd_value::uint64);
      return true;
    default:
      return false;
  }
}

}  // namespace tarnd::confd
