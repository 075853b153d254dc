#include "fuzz/chosen_edit.h"

#include <array>
#include <set>
#include <string_view>
#include <vector>

namespace tarnd::fuzz {
namespace {

using store::NodeKind;
using store::SchemaNode;
using store::ValueKind;

constexpr std::size_t kMostPlaces = 6;
constexpr std::size_t kMostChildren = 4;
constexpr std::size_t kManyEntries = 12;
constexpr std::size_t kMostMappings = 11;

constexpr std::array kOperations = {"",        "",       "",       "",       "merge",
                                    "replace", "create", "delete", "remove", "remove"};

// Names on the small card, new names, and texts with a meaning in a path, a format or a query. They
// need no escapes in XML.
constexpr std::array kNames = {
    "fast",       "slow",       "t1",    "t2",    "t3",   "t4",          "t5",  "services",
    "rg",         "acs",        "sip",   "voice", "lan",  "wan",         "new", "internet",
    "spare",      "television", "other", "100%s", "it's", "caf\xc3\xa9", "%n",  "a|b",
    "enum&lt;4>", "007",        "\\",    "*",     "..",   "[1]",         "$0$", "x="};
constexpr std::array kHostileTexts = {"",      " ",    "a b",   "x}",           "{",
                                      "\"",    "'",    "/",     "}{",           "\"'",
                                      "&amp;", "a\nb", "%x %s", "\xe2\x82\xac", "1/1/1/1/1/1/1/1",
                                      "$8$"};
constexpr std::array kLinks = {"1/1/1", "1/1/2", "1/1/3",   "1/2/1", "2/1/1", "01/1/1",
                               "1/1",   "1 1 1", "1/1/1/1", "//",    "",      "a/b/c"};
constexpr std::array kSlots = {"1/1", "1/2", "2/1", "1", "", "a b"};
constexpr std::array kSerialNumbers = {"ZQRT00000001", "ZQRT00000002", "ZQRT00000003",
                                       "ZQRT00000009", "zqrt00000001", ""};
constexpr std::array kPasswords = {"one", "two", "three", "", "O'Neil", "\"quoted\"", "'\""};
constexpr std::array kClearTexts = {"$0$",
                                    "$0$short",
                                    "$0$exactly-25-characters-xyz",
                                    "$0$this one is longer than any server takes it",
                                    "$8$",
                                    "bare"};
constexpr std::array kSsids = {
    "Home", "Away", "AZQRT12345678B", "AB", "%s", "", "thirty-two characters and no more", "B"};
constexpr std::array kSmallNumbers = {"1", "2", "3", "4", "5", "7", "0", "10"};
constexpr std::array kNumbers = {
    "100",   "1000",    "128",     "127",     "129",        "4094",       "4095",       "4096",
    "65535", "1244160", "2488320", "9953280", "2147483647", "2147483648", "4294967295", "256"};
constexpr std::array kNoNumbers = {"4294967296", "-1", "x", "", "1.0"};
constexpr std::array kAddresses = {
    "10.0.0.1",     "10.0.0.5",      "10.0.0.254",  "10.0.0.255",    "10.0.0.0", "192.168.1.1",
    "192.168.1.15", "192.168.1.255", "192.168.3.9", "192.168.1.128", "0.0.0.0",  "255.255.255.255"};
constexpr std::array kNoAddresses = {"256.1.1.1", "1.2.3", "10.0.0.1%eth0", "::1", "01.1.1.1"};
constexpr std::array kPrefixLengths = {"/24", "/16", "/31", "/32", "/30", "/8", "/1", "/0"};
constexpr std::array kNoPrefixLengths = {"/33", "", "/", "/-1", "/024"};

// Of this many edited places one is a step, one a row, the others are anywhere.
constexpr std::size_t kKindsOfPlaces = 8;
constexpr std::size_t kStep = 1;
constexpr std::size_t kRows = 2;

// Steps that random choices would rarely make together, for code that only all of them reach.
constexpr std::array kSteps = {
    "<service-port nc:operation=\"remove\"><id>1</id></service-port>"
    "<service-port nc:operation=\"remove\"><id>2</id></service-port>",
    "<profile><gpon><rg-profile><name>rg</name><wan-ip-connection><name>spare</name><itf-grouping>"
    "<ports><port>eth1</port><vlan>10</vlan></ports></itf-grouping></wan-ip-connection>"
    "</rg-profile></gpon></profile>",
    "<profile><gpon><rg-profile><name>rg</name><wan-ip-connection><name>spare</name><itf-grouping>"
    "<ipv4-address>192.168.1.7/24</ipv4-address></itf-grouping></wan-ip-connection>"
    "</rg-profile></gpon></profile>",
    "<profile><gpon><rg-profile><name>rg</name><wan-pppoe-connection><name>internet</name>"
    "<itf-grouping><dhcp-server-address-pool><end-address>192.168.1.5</end-address>"
    "</dhcp-server-address-pool></itf-grouping></wan-pppoe-connection></rg-profile></gpon>"
    "</profile>",
    "<profile><gpon><rg-profile><name>rg</name><wlan><id>3</id><ssid><custom>Home</custom></ssid>"
    "</wlan></rg-profile></gpon></profile>",
    "<profile><gpon><service-profile><name>services</name><vlan-mapping><name>new</name><uni>"
    "<ethernet>1</ethernet></uni></vlan-mapping></service-profile></gpon></profile>",
    "<gpon><slot>1/1</slot><onu-auth-method>password</onu-auth-method></gpon>",
    "<gpon><slot>1/1</slot><onu-auth-method>serial-number-and-password</onu-auth-method></gpon>",
    "<service-port><id>7</id><gpon><id>1/1/1</id><onu><id>1</id><gem><gem-id>2</gem-id></gem></onu>"
    "</gpon></service-port>",
    "<interface><gpon><chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>1</port-id><onu>"
    "<id>1</id><profile-references><line-profile>slow</line-profile></profile-references></onu>"
    "</gpon></interface>",
};

// Values of no type are rare, because they end the whole edit.
constexpr std::size_t kRarely = 64;

std::string number(Choices& choices, std::size_t one_large_in) {
  if (choices.one_in(kRarely)) return choices.of(kNoNumbers);
  return choices.one_in(one_large_in) ? choices.of(kNumbers) : choices.of(kSmallNumbers);
}

std::string address(Choices& choices) {
  return choices.one_in(kRarely) ? choices.of(kNoAddresses) : choices.of(kAddresses);
}

std::string prefix_length(Choices& choices) {
  return choices.one_in(kRarely) ? choices.of(kNoPrefixLengths) : choices.of(kPrefixLengths);
}

std::string text(Choices& choices, const SchemaNode& leaf) {
  // The names of entries have none of them.
  if (choices.one_in(leaf.is_key() ? kRarely : 8)) return choices.of(kHostileTexts);
  if (leaf.name == "id") return choices.of(kLinks);
  if (leaf.name == "slot") return choices.of(kSlots);
  if (leaf.name == "serial-number") return choices.of(kSerialNumbers);
  if (leaf.name == "password") return choices.of(kPasswords);
  if (leaf.name == "custom" || leaf.name == "prefix" || leaf.name == "suffix") {
    return choices.of(kSsids);
  }
  return choices.of(kNames);
}

std::string enumeration(Choices& choices, const SchemaNode& leaf) {
  const auto* type = reinterpret_cast<const lysc_type_enum*>(
      reinterpret_cast<const lysc_node_leaf*>(leaf.lysc)->type);
  return type->enums[choices.below(LY_ARRAY_COUNT(type->enums))].name;
}

// With escapes for XML.
std::string value(Choices& choices, const SchemaNode& leaf) {
  switch (leaf.value) {
    case ValueKind::kString:
      return text(choices, leaf);
    case ValueKind::kEncrypted:
      return choices.of(kClearTexts);
    case ValueKind::kEmpty:
      return "";
    case ValueKind::kBoolean:
      return choices.one_in(2) ? "false" : "true";
    case ValueKind::kEnumeration:
      return enumeration(choices, leaf);
    case ValueKind::kIpv4:
      return address(choices);
    case ValueKind::kIpv4AndPlen:
      return address(choices) + prefix_length(choices);
    case ValueKind::kUnion:
      return choices.one_in(3) ? "any" : number(choices, kRarely);
    case ValueKind::kUint32:
      return number(choices, 4);
    default:
      return number(choices, kRarely);
  }
}

std::string element(const SchemaNode& node, const std::string& content,
                    std::string_view operation = "") {
  const std::string mark =
      operation.empty() ? "" : " nc:operation=\"" + std::string(operation) + "\"";
  return "<" + node.name + mark + ">" + content + "</" + node.name + ">";
}

bool is_leaf(const SchemaNode& node) {
  return node.kind == NodeKind::kLeaf || node.kind == NodeKind::kLeafList;
}

bool is_mandatory(const SchemaNode& node) {
  return is_leaf(node) && (node.lysc->flags & LYS_MAND_TRUE) != 0;
}

std::string keys_of(Choices& choices, const SchemaNode& list) {
  std::string keys;
  for (std::size_t i = 0; i < list.num_keys; ++i) {
    const SchemaNode& key = *list.children[i];
    // Chassis and slot are nearly always those of the card.
    const bool is_place = key.name == "chassis-id" || key.name == "slot-id";
    keys += element(key, is_place && !choices.one_in(16) ? "1" : value(choices, key));
  }
  return keys;
}

std::string chosen_node(Choices& choices, const SchemaNode& node, std::string_view operation);

bool may_stand_twice(const SchemaNode& node) {
  return node.kind == NodeKind::kList || node.kind == NodeKind::kLeafList;
}

// A new node without its mandatory leaves would be refused.
std::string content_of(Choices& choices, const SchemaNode& node) {
  std::string content;
  std::set<const SchemaNode*> given;
  for (const SchemaNode* child : node.children) {
    if (child->is_key()) given.insert(child);
    if (!is_mandatory(*child)) continue;
    given.insert(child);
    content += element(*child, value(choices, *child));
  }
  for (std::size_t more = choices.below(kMostChildren + 1); more > 0; --more) {
    const SchemaNode* child = choices.of(node.children);
    if (may_stand_twice(*child) || given.insert(child).second) {
      content += chosen_node(choices, *child, "");
    }
  }
  return content;
}

std::string chosen_node(Choices& choices, const SchemaNode& node, std::string_view operation) {
  if (is_leaf(node)) return element(node, value(choices, node), operation);
  const std::string keys = keys_of(choices, node);
  const bool goes = operation == "delete" || operation == "remove";
  return element(node, keys + (goes ? "" : content_of(choices, node)), operation);
}

// Rows of entries reach limits that single edits do not.
std::string many_entries(Choices& choices, const SchemaNode& list) {
  std::string entries;
  const std::size_t count = choices.below(kManyEntries);
  for (std::size_t i = 0; i < count; ++i) entries += chosen_node(choices, list, "");
  return entries;
}

// Too many mappings of one port, if the step is made often.
std::string rows_of_mappings(Choices& choices) {
  std::string mappings;
  const std::size_t first = choices.below(256);
  for (std::size_t i = 0; i < kMostMappings; ++i) {
    const std::string vlan = std::to_string(first + i + 1);
    mappings.append("<vlan-mapping><name>m").append(vlan);
    mappings.append("</name><match><outer><vlan-id>").append(vlan);
    mappings.append("</vlan-id></outer></match><uni><ethernet>1</ethernet></uni></vlan-mapping>");
  }
  return "<profile><gpon><service-profile><name>new</name>" + mappings +
         "</service-profile></gpon></profile>";
}

std::string chosen_place(Choices& choices, const SchemaNode& from) {
  const SchemaNode* child = choices.of(from.children);
  if (child->is_key()) child = from.children.back();
  if (child->kind == NodeKind::kList && choices.one_in(8)) return many_entries(choices, *child);
  if (is_leaf(*child) || choices.one_in(4)) {
    return chosen_node(choices, *child, choices.of(kOperations));
  }
  const std::string keys = keys_of(choices, *child);
  return element(*child, keys + chosen_place(choices, *child));
}

}  // namespace

std::string chosen_edit(Choices& choices, const store::Schema& schema) {
  std::string places;
  for (std::size_t more = 1 + choices.below(kMostPlaces); more > 0; --more) {
    switch (choices.below(kKindsOfPlaces)) {
      case kStep:
        places += choices.of(kSteps);
        break;
      case kRows:
        places += rows_of_mappings(choices);
        break;
      default:
        places += chosen_place(choices, schema.root());
    }
  }
  return places;
}

}  // namespace tarnd::fuzz
