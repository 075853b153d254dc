#include "standalone/store/base_type.h"

namespace tarnd::store {

ValueKind kind_of_base_type(LY_DATA_TYPE type) {
  switch (type) {
    case LY_TYPE_EMPTY:
      return ValueKind::kEmpty;
    case LY_TYPE_BOOL:
      return ValueKind::kBoolean;
    case LY_TYPE_ENUM:
      return ValueKind::kEnumeration;
    case LY_TYPE_INT8:
      return ValueKind::kInt8;
    case LY_TYPE_INT16:
      return ValueKind::kInt16;
    case LY_TYPE_INT32:
      return ValueKind::kInt32;
    case LY_TYPE_INT64:
      return ValueKind::kInt64;
    case LY_TYPE_UINT8:
      return ValueKind::kUint8;
    case LY_TYPE_UINT16:
      return ValueKind::kUint16;
    case LY_TYPE_UINT32:
      return ValueKind::kUint32;
    case LY_TYPE_UINT64:
      return ValueKind::kUint64;
    case LY_TYPE_UNION:
      return ValueKind::kUnion;
    default:
      return ValueKind::kString;
  }
}

}  // namespace tarnd::store
