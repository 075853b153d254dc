// Every node of the model, compared with a table written out here.

#include <gtest/gtest.h>
#include <libyang/libyang.h>

#include <algorithm>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "standalone/store/schema.h"

namespace tarnd {
namespace {

// A line for each node, in the order of the model, children indented: the name, with "?" if it may
// be left out, "!" for a container with presence, "*" for a list, followed by its keys, or a
// leaf-list; the type with its range, length or enumeration; patterns of names; the default. A
// choice is in brackets, a case has a colon before them.
constexpr const char* kNodes = R"(
config
  gpon* [slot]
    slot string
    onu-auth-method? enumeration serial-number=0 serial-number-and-password=1 password=2
    rg-one-shot-prov? empty
  interface
    gpon* [chassis-id slot-id port-id]
      chassis-id uint32
      slot-id uint32
      port-id uint32
      downstream-fec? boolean = true
      upstream-fec? boolean = true
      onu* [id]
        id uint32
        description? string
        auth-method
          serial-number? string
          password? string
        profile-references
          line-profile? string
          service-profile? string
        rg-profile? string
        rg-override
          ssid? string
          ssid-key? string
          admin-password? string
        tr069-acs-profile? string
        snmp
          real-time? empty
        pots* [port]
          port uint32
          sip-agent-profile? string
          media-profile? string
        ip-host!
          address ipv4-address-and-prefix-length
          default-gateway ipv4-address
    xgspon* [chassis-id slot-id port-id]
      chassis-id uint32
      slot-id uint32
      port-id uint32
      downstream-fec? boolean = true
      upstream-fec? boolean = true
      operation-mode? enumeration gpon=0 xgspon=1 combo=2 = xgspon
      onu* [id]
        id uint32
        description? string
        auth-method
          serial-number? string
          password? string
        profile-references
          line-profile? string
          service-profile? string
        rg-profile? string
        rg-override
          ssid? string
          ssid-key? string
          admin-password? string
        tr069-acs-profile? string
        snmp
          real-time? empty
        pots* [port]
          port uint32
          sip-agent-profile? string
          media-profile? string
        ip-host!
          address ipv4-address-and-prefix-length
          default-gateway ipv4-address
  profile
    gpon
      bandwidth-profile* [name]
        name string 1..64 [^\s{}/"]+
        traffic
          (type)?
            :(type-1)
              type-1
                fixed uint32
            :(type-2)
              type-2
                assured uint32
            :(type-3)
              type-3
                assured uint32
                maximum uint32
            :(type-4)
              type-4
                maximum uint32
            :(type-5)
              type-5
                fixed uint32
                assured uint32
                maximum uint32
      line-profile* [name]
        name string 1..64 [^\s{}/"]+
        tcont* [id]
          id uint32
          bandwidth-profile string
        gem* [gem-id]
          gem-id uint32
          tcont? uint32
      service-profile* [name]
        name string 1..64 [^\s{}/"]+
        vlan-mapping* [name]
          name string 1..64 [^\s{}/"]+
          match
            outer
              vlan-id? union (uint16 1..4094 | enumeration any=0) = any
              cos? union (uint8 0..7 | enumeration any=0) = any
          uni
            ethernet* uint8
          veip
            veip? empty
          action
            vlan-id? uint16 0..4095
            cos? uint8 0..7
      rg-profile* [name]
        name string 1..64 [^\s{}/"]+ [ -~]*
        wan-pppoe-connection* [name]
          name string 1..48 [^\s{}/"]+ [ -~]*
          itf-grouping!
            ports* [port]
              port enumeration eth1=0 eth2=1 eth3=2 eth4=3 wl0=4 wl0-vap1=5
              vlan? uint32 0..4094
            ipv4-address? ipv4-address-and-prefix-length
            dhcp-server? boolean = false
            dhcp-server-address-pool
              start-address? ipv4-address
              end-address? ipv4-address
        wan-ip-connection* [name]
          name string 1..48 [^\s{}/"]+ [ -~]*
          itf-grouping!
            ports* [port]
              port enumeration eth1=0 eth2=1 eth3=2 eth4=3 wl0=4 wl0-vap1=5
              vlan? uint32 0..4094
            ipv4-address? ipv4-address-and-prefix-length
            dhcp-server? boolean = false
            dhcp-server-address-pool
              start-address? ipv4-address
              end-address? ipv4-address
        wan-bridge-connection* [name]
          name string 1..48 [^\s{}/"]+ [ -~]*
          itf-grouping!
            ports* [port]
              port enumeration eth1=0 eth2=1 eth3=2 eth4=3 wl0=4 wl0-vap1=5
              vlan? uint32 0..4094
            ipv4-address? ipv4-address-and-prefix-length
            dhcp-server? boolean = false
            dhcp-server-address-pool
              start-address? ipv4-address
              end-address? ipv4-address
        wlan* [id]
          id uint32
          ssid
            (ssid)?
              :(custom)
                custom? string 1..32
              :(auto)
                auto
                  onu-serial-number? empty
                  prefix? string 0..32
                  suffix? string 0..32
      tr069-acs-profile* [name]
        name string 1..64 [^\s{}/"]+
        url? string
        username? string
        password? encrypted-string
      sip-agent-profile* [name]
        name string 1..64 [^\s{}/"]+
        proxy-server? string
      media-profile* [name]
        name string 1..64 [^\s{}/"]+
        codec? string
  service-port* [id]
    id uint32
    (link-type)?
      :(xgspon)
        xgspon
          id? string
          onu
            id? uint32
            gem
              gem-id? uint32
      :(gpon)
        gpon
          id? string
          onu
            id? uint32
            gem
              gem-id? uint32
    match
      ethertype? uint16
      vlan
        vlan-id? int32 1..4094
        cos? uint8 0..7
    action
      type? enumeration add=0 translate=1 remove=2
      vlan
        vlan-id? int32 1..4094
        cos? uint8 0..7
    admin-enabled? boolean
    upstream-rate? uint32
    downstream-rate? uint32
)";

const store::Schema& schema() {
  static const store::Schema schema(TARND_MODEL_DIR);
  return schema;
}

std::string bounds(const lysc_range* range, bool is_signed) {
  std::string text;
  const LY_ARRAY_COUNT_TYPE count = range == nullptr ? 0 : LY_ARRAY_COUNT(range->parts);
  for (LY_ARRAY_COUNT_TYPE i = 0; i < count; ++i) {
    const lysc_range::lysc_range_part& part = range->parts[i];
    text += i == 0 ? " " : "|";
    text += is_signed ? std::to_string(part.min_64) + ".." + std::to_string(part.max_64)
                      : std::to_string(part.min_u64) + ".." + std::to_string(part.max_u64);
  }
  return text;
}

std::string string_type(const lysc_type* type) {
  const auto* text = reinterpret_cast<const lysc_type_str*>(type);
  std::string words = "string" + bounds(text->length, false);
  for (LY_ARRAY_COUNT_TYPE i = 0; i < LY_ARRAY_COUNT(text->patterns); ++i) {
    words += std::string(" ") + text->patterns[i]->expr;
  }
  return words;
}

std::string enumeration_type(const lysc_type* type) {
  const auto* enumeration = reinterpret_cast<const lysc_type_enum*>(type);
  std::string words = "enumeration";
  for (LY_ARRAY_COUNT_TYPE i = 0; i < LY_ARRAY_COUNT(enumeration->enums); ++i) {
    const lysc_type_bitenum_item& item = enumeration->enums[i];
    words += std::string(" ") + item.name + "=" + std::to_string(item.value);
  }
  return words;
}

std::string number_type(const std::string& name, const lysc_type* type, bool is_signed) {
  return name + bounds(reinterpret_cast<const lysc_type_num*>(type)->range, is_signed);
}

std::string type_text(const lysc_type* type);

std::string union_type(const lysc_type* type) {
  const auto* members = reinterpret_cast<const lysc_type_union*>(type);
  std::string words = "union (";
  for (LY_ARRAY_COUNT_TYPE i = 0; i < LY_ARRAY_COUNT(members->types); ++i) {
    words += (i == 0 ? "" : " | ") + type_text(members->types[i]);
  }
  return words + ")";
}

std::string type_text(const lysc_type* type) {
  switch (type->basetype) {
    case LY_TYPE_STRING:
      return string_type(type);
    case LY_TYPE_ENUM:
      return enumeration_type(type);
    case LY_TYPE_UNION:
      return union_type(type);
    case LY_TYPE_BOOL:
      return "boolean";
    case LY_TYPE_EMPTY:
      return "empty";
    case LY_TYPE_UINT8:
      return number_type("uint8", type, false);
    case LY_TYPE_UINT16:
      return number_type("uint16", type, false);
    case LY_TYPE_UINT32:
      return number_type("uint32", type, false);
    case LY_TYPE_INT32:
      return number_type("int32", type, true);
    default:
      return "type " + std::to_string(type->basetype);
  }
}

/// The type of a leaf. Addresses and encrypted texts are strings with long patterns, which other
/// tests check with values.
std::string type_of(const lysc_node* leaf, const lysc_type* type) {
  switch (static_cast<const store::SchemaNode*>(leaf->priv)->value) {
    case store::ValueKind::kIpv4:
      return "ipv4-address";
    case store::ValueKind::kIpv4AndPlen:
      return "ipv4-address-and-prefix-length";
    case store::ValueKind::kEncrypted:
      return "encrypted-string";
    default:
      return type_text(type);
  }
}

bool is_mandatory(const lysc_node* node) {
  return (node->flags & LYS_MAND_TRUE) != 0 || lysc_is_key(node);
}

std::string leaf_text(const lysc_node* node) {
  const auto* leaf = reinterpret_cast<const lysc_node_leaf*>(node);
  std::string text = is_mandatory(node) ? " " : "? ";
  text += type_of(node, leaf->type);
  if (leaf->dflt != nullptr) {
    text += std::string(" = ") + lyd_value_get_canonical(schema().context(), leaf->dflt);
  }
  return text;
}

std::string list_text(const lysc_node* list) {
  std::string keys;
  for (const lysc_node* child = lysc_node_child(list); child != nullptr; child = child->next) {
    if (lysc_is_key(child)) keys += (keys.empty() ? "" : " ") + std::string(child->name);
  }
  return "* [" + keys + "]";
}

std::string line_of(const lysc_node* node) {
  const std::string name = node->name;
  switch (node->nodetype) {
    case LYS_CONTAINER:
      return name + ((node->flags & LYS_PRESENCE) != 0 ? "!" : "");
    case LYS_LIST:
      return name + list_text(node);
    case LYS_LEAF:
      return name + leaf_text(node);
    case LYS_LEAFLIST:
      return name + "* " + type_of(node, reinterpret_cast<const lysc_node_leaflist*>(node)->type);
    case LYS_CHOICE:
      return "(" + name + ")" + (is_mandatory(node) ? "" : "?");
    case LYS_CASE:
      return ":(" + name + ")";
    default:
      return name + " of another kind";
  }
}

void add_lines(const lysc_node* node, const std::string& indentation,
               std::vector<std::string>& lines) {
  lines.push_back(indentation + line_of(node));
  for (const lysc_node* child = lysc_node_child(node); child != nullptr; child = child->next) {
    add_lines(child, indentation + "  ", lines);
  }
}

std::vector<std::string> written_out() {
  std::vector<std::string> lines;
  std::istringstream text(kNodes);
  for (std::string line; std::getline(text, line);) {
    if (!line.empty()) lines.push_back(line);
  }
  return lines;
}

TEST(ModelNodes, AreThoseOfTheTable) {
  std::vector<std::string> lines;
  add_lines(schema().root().lysc, "", lines);
  const std::vector<std::string> expected = written_out();
  for (std::size_t i = 0; i < std::min(lines.size(), expected.size()); ++i) {
    ASSERT_EQ(lines[i], expected[i]) << "line " << i + 1 << " of the table";
  }
  EXPECT_EQ(lines.size(), expected.size());
}

}  // namespace
}  // namespace tarnd
