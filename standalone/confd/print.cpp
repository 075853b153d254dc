#include "standalone/confd/print.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "standalone/confd/integers.h"
#include "standalone/confd/model.h"
#include "standalone/store/path.h"

namespace tarnd::confd {
namespace {

std::string name_text(const xml_tag& tag) {
  const Model* model = loaded_model();
  const std::string* name = model != nullptr ? model->name_of(tag.tag) : nullptr;
  return name != nullptr ? *name : "#" + std::to_string(tag.tag);
}

template <typename Address>
std::string address_text(int family, const Address& address) {
  std::array<char, INET6_ADDRSTRLEN> text = {};
  inet_ntop(family, &address, text.data(), text.size());
  return text.data();
}

std::string double_text(double number) {
  std::array<char, 32> text = {};
  std::snprintf(text.data(), text.size(), "%g", number);
  return text.data();
}

std::string decimal_text(const confd_decimal64& decimal) {
  std::string digits = std::to_string(decimal.value);
  const std::size_t sign = decimal.value < 0 ? 1 : 0;
  const std::size_t fraction = decimal.fraction_digits;
  if (digits.size() - sign <= fraction) {
    digits.insert(sign, fraction + 1 - (digits.size() - sign), '0');
  }
  return digits.insert(digits.size() - fraction, 1, '.');
}

std::string list_text(const confd_list& list) {
  std::string text;
  for (unsigned int i = 0; i < list.size; ++i) {
    text += (i > 0 ? " " : "") + value_text(list.ptr[i]);
  }
  return text;
}

std::optional<std::string> enum_name(const lysc_type* type, std::int32_t value) {
  const auto* enumeration = reinterpret_cast<const lysc_type_enum*>(type);
  LY_ARRAY_COUNT_TYPE i = 0;
  LY_ARRAY_FOR(enumeration->enums, i) {
    if (enumeration->enums[i].value == value) return enumeration->enums[i].name;
  }
  return std::nullopt;
}

// The type of value that a leaf of this built-in type has.
confd_vtype value_type(LY_DATA_TYPE type) {
  confd_vtype integer = C_NOEXISTS;
  if (visit_integer(type, [&](confd_vtype of_value, auto, auto) { integer = of_value; })) {
    return integer;
  }
  switch (type) {
    case LY_TYPE_EMPTY:
      return C_XMLTAG;
    case LY_TYPE_BOOL:
      return C_BOOL;
    case LY_TYPE_ENUM:
      return C_ENUM_VALUE;
    default:
      return C_BUF;
  }
}

std::optional<std::string> text_by_type(const lysc_type* type, const confd_value_t& value) {
  if (type->basetype == LY_TYPE_UNION) {
    const auto* members = reinterpret_cast<const lysc_type_union*>(type);
    LY_ARRAY_COUNT_TYPE i = 0;
    LY_ARRAY_FOR(members->types, i) {
      auto text = text_by_type(members->types[i], value);
      if (text.has_value()) return text;
    }
    return std::nullopt;
  }
  if (value.type != value_type(type->basetype)) return std::nullopt;
  if (value.type == C_ENUM_VALUE) return enum_name(type, value.val.enumvalue);
  return value_text(value);
}

}  // namespace

std::string value_text(const confd_value_t& value) {
  std::string integer;
  if (visit_integer(value.type,
                    [&](auto member) { integer = std::to_string(value.val.*member); })) {
    return integer;
  }
  switch (value.type) {
    case C_XMLTAG:
    case C_XMLBEGIN:
    case C_XMLEND:
      return name_text(value.val.xmltag);
    case C_SYMBOL:
    case C_STR:
      return value.val.s;
    case C_BUF:
    case C_BINARY:
      return {reinterpret_cast<const char*>(value.val.buf.ptr), value.val.buf.size};
    case C_DOUBLE:
      return double_text(value.val.d);
    case C_IPV4:
      return address_text(AF_INET, value.val.ip);
    case C_IPV6:
      return address_text(AF_INET6, value.val.ip6);
    case C_BOOL:
      return value.val.boolean != 0 ? "true" : "false";
    case C_ENUM_VALUE:
      return "enum<" + std::to_string(value.val.enumvalue) + ">";
    case C_LIST:
      return list_text(value.val.list);
    case C_IPV4PREFIX:
    case C_IPV4_AND_PLEN:
      return address_text(AF_INET, value.val.ipv4prefix.ip) + "/" +
             std::to_string(value.val.ipv4prefix.len);
    case C_DEFAULT:
      return "default";
    case C_DECIMAL64:
      return decimal_text(value.val.d64);
    default:
      return {};
  }
}

std::optional<std::string> value_text(const store::SchemaNode& leaf, const confd_value_t& value) {
  if (value.type == C_LIST && leaf.kind == store::NodeKind::kLeafList) {
    std::string text;
    for (unsigned int i = 0; i < value.val.list.size; ++i) {
      const auto item = value_text(leaf, value.val.list.ptr[i]);
      if (!item.has_value()) return std::nullopt;
      text += (i > 0 ? " " : "") + *item;
    }
    return text;
  }
  switch (leaf.value) {
    case store::ValueKind::kNone:
      return std::nullopt;
    case store::ValueKind::kIpv4:
      return value.type == C_IPV4 ? std::optional(value_text(value)) : std::nullopt;
    case store::ValueKind::kIpv4AndPlen:
      return value.type == C_IPV4_AND_PLEN ? std::optional(value_text(value)) : std::nullopt;
    default:
      return text_by_type(type_of(leaf), value);
  }
}

std::string key_text(const confd_value_t& key) {
  return store::quote_key(value_text(key));
}

std::string keypath_text(const confd_hkeypath_t& keypath, int innermost) {
  std::string text;
  for (int i = std::min(keypath.len, MAXDEPTH) - 1; i >= innermost; --i) {
    const confd_value_t* element = keypath.v[i];
    if (element->type == C_XMLTAG) {
      text += "/" + value_text(*element);
      continue;
    }
    text += "{";
    for (int key = 0; key < MAXKEYLEN && element[key].type != C_NOEXISTS; ++key) {
      text += (key > 0 ? " " : "") + key_text(element[key]);
    }
    text += "}";
  }
  return text;
}

}  // namespace tarnd::confd
