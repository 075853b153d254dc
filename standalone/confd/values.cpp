#include "standalone/confd/values.h"

#include <libyang/plugins_types.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

#include "standalone/confd/errors.h"
#include "standalone/confd/integers.h"
#include "standalone/crypto.h"
#include "standalone/store/libyang_compat.h"

namespace tarnd::confd {
namespace {

using store::SchemaNode;
using store::ValueKind;

constexpr std::string_view kClearText = "$0$";

void* allocate(std::size_t size) {
  void* memory = std::malloc(std::max<std::size_t>(size, 1));
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

const char* text_of(const SchemaNode& leaf, const lyd_value& value) {
  return value._canonical != nullptr ? value._canonical
                                     : lyd_value_get_canonical(leaf.lysc->module->ctx, &value);
}

void set_text(const char* text, confd_value_t& value) {
  // The pointer is not const in the interface, but no caller writes through it.
  auto* bytes = reinterpret_cast<unsigned char*>(const_cast<char*>(text));
  CONFD_SET_BUF(&value, bytes, static_cast<unsigned int>(std::strlen(text)));
}

confd_value_t buf_value(const char* text) {
  confd_value_t value;
  set_text(text, value);
  return value;
}

// Puts a copy, with its NUL, in place of the text.
void own_text(confd_buf_t& text) {
  void* const copy = allocate(std::size_t{text.size} + 1);
  text.ptr = static_cast<unsigned char*>(std::memcpy(copy, text.ptr, std::size_t{text.size} + 1));
}

in_addr address(std::string_view text) {
  in_addr result = {};
  inet_pton(AF_INET, std::string(text).c_str(), &result);
  return result;
}

confd_value_t ipv4_value(std::string_view text) {
  confd_value_t value;
  // A zone may follow the address.
  CONFD_SET_IPV4(&value, address(text.substr(0, text.find('%'))));
  return value;
}

confd_value_t ipv4_and_plen_value(std::string_view text) {
  confd_value_t value;
  const std::size_t slash = text.find('/');
  confd_ipv4_prefix prefix = {address(text.substr(0, slash)), 0};
  if (slash != std::string_view::npos) {
    std::from_chars(text.data() + slash + 1, text.data() + text.size(), prefix.len);
  }
  CONFD_SET_IPV4_AND_PLEN(&value, prefix);
  return value;
}

confd_value_t built_in_value(const ModelNode& node, const Model& model, const lyd_value& value) {
  confd_value_t result;
  const auto set_integer = [&](confd_vtype type, auto to, auto from) {
    result.type = type;
    result.val.*to = value.*from;
  };
  if (visit_integer(value.realtype->basetype, set_integer)) return result;
  switch (value.realtype->basetype) {
    case LY_TYPE_EMPTY:
      return tag_value(model, *node.schema);
    case LY_TYPE_BOOL:
      CONFD_SET_BOOL(&result, value.boolean != 0 ? 1 : 0);
      break;
    case LY_TYPE_ENUM:
      CONFD_SET_ENUM_VALUE(&result, value.enum_item->value);
      break;
    default:
      return buf_value(text_of(*node.schema, value));
  }
  return result;
}

confd_value_t to_value(const Model& model, const SchemaNode& leaf, const lyd_value& stored) {
  const lyd_value* value = &stored;
  while (value->realtype->basetype == LY_TYPE_UNION) value = &value->subvalue->value;
  switch (leaf.value) {
    case ValueKind::kIpv4:
      return ipv4_value(text_of(leaf, *value));
    case ValueKind::kIpv4AndPlen:
      return ipv4_and_plen_value(text_of(leaf, *value));
    default:
      return built_in_value(model.node(leaf), model, *value);
  }
}

const lyd_value& stored_value(const lyd_node* leaf) {
  return reinterpret_cast<const lyd_node_term*>(leaf)->value;
}

// Most reads are of leaves whose type decides how they are read.
inline void set_leaf_value(const Model& model, const ModelNode& node, const lyd_node* leaf,
                           confd_value_t& value) {
  const lyd_value& stored = stored_value(leaf);
  switch (node.form) {
    case ValueForm::kText:
      set_text(text_of(*node.schema, stored), value);
      return;
    case ValueForm::kEnumeration:
      CONFD_SET_ENUM_VALUE(&value, stored.enum_item->value);
      return;
    case ValueForm::kBoolean:
      CONFD_SET_BOOL(&value, stored.boolean != 0 ? 1 : 0);
      return;
    case ValueForm::kUint8:
      CONFD_SET_UINT8(&value, stored.uint8);
      return;
    case ValueForm::kUint16:
      CONFD_SET_UINT16(&value, stored.uint16);
      return;
    case ValueForm::kUint32:
      CONFD_SET_UINT32(&value, stored.uint32);
      return;
    case ValueForm::kInt32:
      CONFD_SET_INT32(&value, stored.int32);
      return;
    case ValueForm::kByValue:
      value = to_value(model, *node.schema, stored);
  }
}

}  // namespace

void set_own_leaf_value(const Model& model, const ModelNode& node, const lyd_node* leaf,
                        confd_value_t& value) {
  set_leaf_value(model, node, leaf, value);
  if (value.type == C_BUF) own_text(value.val.buf);
}

confd_value_t leaf_value(const Model& model, const lyd_node* leaf) {
  confd_value_t value;
  set_leaf_value(model, model.node(store::schema_of(leaf)), leaf, value);
  return value;
}

confd_value_t own_value(confd_value_t value) {
  if (value.type == C_BUF) own_text(value.val.buf);
  return value;
}

confd_value_t own_leaf_value(const Model& model, const lyd_node* leaf) {
  confd_value_t value;
  set_own_leaf_value(model, model.node(store::schema_of(leaf)), leaf, value);
  return value;
}

confd_value_t own_list_value(const Model& model, std::span<const lyd_node* const> values) {
  confd_value_t list;
  auto* items = values.empty()
                    ? nullptr
                    : static_cast<confd_value_t*>(allocate(values.size() * sizeof(confd_value_t)));
  std::transform(values.begin(), values.end(), items,
                 [&](const lyd_node* leaf) { return own_leaf_value(model, leaf); });
  CONFD_SET_LIST(&list, items, static_cast<unsigned int>(values.size()));
  return list;
}

confd_value_t tag_value(const Model& model, const SchemaNode& node) {
  confd_value_t value;
  CONFD_SET_XMLTAG(&value, model.node(node).number, model.namespace_number());
  return value;
}

int copy_text(const confd_buf_t& text, char* buf, int size) {
  if (size <= 0 || text.size >= static_cast<unsigned int>(size)) {
    return fail(CONFD_ERR_PROTOUSAGE, "the value is longer than the buffer");
  }
  std::memcpy(buf, text.ptr, text.size + 1);
  return CONFD_OK;
}

void release(confd_value_t& value) {
  if (value.type == C_BUF || value.type == C_BINARY) {
    std::free(value.val.buf.ptr);
    value.val.buf = {0, nullptr};
  } else if (value.type == C_LIST) {
    for (unsigned int i = 0; i < value.val.list.size; ++i) release(value.val.list.ptr[i]);
    std::free(value.val.list.ptr);
    value.val.list = {0, nullptr};
  }
}

OwnedValue& OwnedValue::operator=(OwnedValue&& other) noexcept {
  if (this != &other) {
    release(value_);
    value_ = other.take();
  }
  return *this;
}

confd_value_t OwnedValue::take() {
  const confd_value_t taken = value_;
  CONFD_SET_NOEXISTS(&value_);
  return taken;
}

std::optional<OwnedValue> parse_value(const Model& model, const SchemaNode& leaf,
                                      std::string_view text) {
  if (leaf.value == ValueKind::kNone) return std::nullopt;
  // libyang counts the users of a text by the part before a NUL: freeing this text would free that
  // of another value.
  if (text.find('\0') != std::string_view::npos) return std::nullopt;
  std::string encrypted;
  if (leaf.value == ValueKind::kEncrypted && text.starts_with(kClearText)) {
    encrypted = encrypt_string(text.substr(kClearText.size()));
    text = encrypted;
  }
  const lysc_type* type = type_of(leaf);
  lyd_value stored = {};
  ly_err_item* error = nullptr;
  const LY_ERR result =
      type->plugin->store(leaf.lysc->module->ctx, type, text.data(), text.size(), 0, LY_VALUE_JSON,
                          nullptr, LYD_HINT_DATA, leaf.lysc, &stored, nullptr, &error);
  ly_err_free(error);
  if (result != LY_SUCCESS) return std::nullopt;
  OwnedValue value(own_value(to_value(model, leaf, stored)));
  type->plugin->free(leaf.lysc->module->ctx, &stored);
  return value;
}

}  // namespace tarnd::confd
