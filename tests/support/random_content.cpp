#include "tests/support/random_content.h"

#include <set>
#include <vector>

#include "tests/support/model.h"

namespace tarnd::test {

using store::SchemaNode;
using store::ValueKind;

const std::string kModelOfRules = R"(
  grouping rules {
    leaf given { type uint8; mandatory true; }
    leaf free { type uint8; default 1; }
    container plain { leaf a { type uint8; default 2; } container deep { leaf b { type string; } } }
    choice one-of {
      mandatory true;
      case x { leaf x-given { type uint8; mandatory true; } leaf x-free { type uint8; } }
      case y {
        container y-plain { leaf y-free { type empty; } }
        container y-given { leaf g { type uint8; mandatory true; } }
        choice inner {
          leaf i { type uint8; }
          container j { leaf k { type uint8; mandatory true; } leaf l { type uint8; default 3; } }
        }
      }
      leaf z { type uint8; }
    }
    leaf-list values { type uint8; }
  }
  container config {
    list entry { key name; leaf name { type uint8; } uses rules; }
    container present { presence "Counts by itself."; uses rules; }
    choice root-choice {
      case long { list pair { key "a b"; leaf a { type uint8; } leaf b { type string; } } }
      case nested { container nested { leaf c { type uint8; } container around { uses rules; } } }
      case short { leaf short { type boolean; } }
    }
    container around {
      choice optional {
        default usual;
        case usual {
          leaf usual { type uint8; default 4; }
          container by-itself { leaf e { type uint8; } }
        }
        case other {
          leaf-list others { type string; }
          leaf another { type uint8; default 5; }
        }
      }
      list inside {
        key name;
        leaf name { type string; }
        leaf must { type uint8; mandatory true; }
        choice free {
          case wide {
            leaf o { type uint8; }
            container needs { leaf n { type uint8; mandatory true; } }
          }
          leaf p { type uint8; }
        }
      }
    }
  })";

std::string RandomContent::of(const lysc_node* parent) {
  std::string text;
  for (const lysc_node* node = lysc_node_child(parent); node != nullptr; node = node->next) {
    if (lysc_is_key(node) || !is_wanted(node)) continue;
    text += node->nodetype == LYS_CHOICE ? of_case(node) : instances(node);
  }
  return text;
}

std::string RandomContent::load_into(store::Datastore& datastore) {
  for (;;) {
    const std::string text = config(of(datastore.schema().root().lysc));
    try {
      datastore.load(text, store::Format::kXml);
      return text;
    } catch (const InputError&) {
    }
  }
}

bool RandomContent::is_wanted(const lysc_node* node) {
  if ((node->flags & LYS_MAND_TRUE) == 0) return one_in(2);
  return kind_.operations ? !one_in(4) : !one_in(kind_.mistakes);
}

std::string RandomContent::of_case(const lysc_node* choice) {
  std::vector<const lysc_node*> cases;
  for (const lysc_node* one = lysc_node_child(choice); one != nullptr; one = one->next) {
    cases.push_back(one);
  }
  const std::size_t chosen = below(static_cast<int>(cases.size()));
  std::string text = of(cases[chosen]);
  if (one_in(kind_.mistakes)) text += of(cases[(chosen + 1) % cases.size()]);
  return text;
}

std::string RandomContent::instances(const lysc_node* node) {
  std::string text;
  if ((node->nodetype & (LYS_LIST | LYS_LEAFLIST)) == 0) {
    text = element(node, "");
    // Of two containers without presence libyang drops one that is empty.
    const bool counts_alone = node->nodetype == LYS_LEAF || (node->flags & LYS_PRESENCE) != 0;
    if (counts_alone && one_in(kind_.mistakes)) text += element(node, "");
    return text;
  }
  std::set<std::string> given;
  for (int count = 1 + below(3); count > 0; --count) {
    const std::string key = keys(node);
    if (given.insert(key).second || one_in(kind_.mistakes)) text += element(node, key);
  }
  return text;
}

// The key leaves of an entry, the value of a leaf-list.
std::string RandomContent::keys(const lysc_node* node) {
  if (node->nodetype == LYS_LEAFLIST) return content(node);
  std::string text;
  for (const lysc_node* key = lysc_node_child(node); key != nullptr; key = key->next) {
    const std::string name = key->name;
    if (lysc_is_key(key)) text += "<" + name + ">" + content(key) + "</" + name + ">";
  }
  return text;
}

std::string RandomContent::element(const lysc_node* node, const std::string& keys) {
  const std::string name = node->name;
  const bool has_more = node->nodetype != LYS_LEAFLIST;
  return "<" + name + operation(node) + ">" + keys + (has_more ? content(node) : "") + "</" + name +
         ">";
}

std::string RandomContent::operation(const lysc_node* node) {
  if (!kind_.operations || !one_in(4)) return "";
  static const char* const kOperations[] = {"merge",  "replace", "remove",
                                            "remove", "create",  "delete"};
  // Most creations and deletions fail, because the node exists or does not.
  const int count = one_in(8) ? 6 : 4;
  const bool is_value = node->nodetype == LYS_LEAFLIST;
  return std::string(" nc:operation=\"") + kOperations[is_value ? 2 : below(count)] + "\"";
}

std::string RandomContent::content(const lysc_node* node) {
  switch (static_cast<const SchemaNode*>(node->priv)->value) {
    case ValueKind::kNone:
      return node->nodetype == LYS_CONTAINER && one_in(8) ? "" : of(node);
    case ValueKind::kEmpty:
      return "";
    case ValueKind::kBoolean:
      return one_in(2) ? "true" : "false";
    default:
      return std::to_string(below(kind_.values));
  }
}

}  // namespace tarnd::test
