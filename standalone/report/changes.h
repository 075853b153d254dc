#pragma once

#include <ostream>
#include <string>
#include <string_view>

#include "standalone/store/transaction.h"

namespace tarnd::report {

/// Takes what a transaction changes, node by node in the order of the model. A node is a leaf, an
/// entry, a presence container or a value of a leaf-list; the path is that of the node.
class ChangeTaker {
 public:
  ChangeTaker() = default;
  ChangeTaker(const ChangeTaker&) = delete;
  ChangeTaker& operator=(const ChangeTaker&) = delete;
  virtual ~ChangeTaker() = default;

  virtual void created(const std::string& path, const lyd_node* node) = 0;
  virtual void deleted(const std::string& path, const lyd_node* node) = 0;
  /// A leaf has another value.
  virtual void changed(const std::string& path, const lyd_node* before, const lyd_node* after) = 0;
};

/// Hands on all that a prepared transaction changes; null changes nothing.
void take_changes(const store::Change* changes, ChangeTaker& taker);

/// Takes what is inside a node: a leaf or a value of a leaf-list that was given, an entry or a
/// presence container that holds nothing given. The path is relative to the node.
class ContentTaker {
 public:
  ContentTaker() = default;
  ContentTaker(const ContentTaker&) = delete;
  ContentTaker& operator=(const ContentTaker&) = delete;
  virtual ~ContentTaker() = default;

  virtual void given(std::string_view path, const lyd_node* node) = 0;
};

void take_content(const lyd_node* node, ContentTaker& taker);

/// Whether the node is a leaf with a value of its own; that of a leaf-list is in its path.
bool has_value(const lyd_node* node);

/// "+ /config/service-port{16}" and the content in lines below, "- ..." and "~ PATH: OLD -> NEW".
/// Colours are those of a terminal.
void print_changes_text(std::ostream& out, const store::Change* changes, bool colours);

/// A list of objects with the members path, op ("create", "delete", "change"), old and new. Of a
/// leaf the latter are its values as texts, of an entry or a presence container an object with its
/// content; null stands for none. The indentation is that of a member of the outermost object.
void print_changes_json(std::ostream& out, const store::Change* changes);

}  // namespace tarnd::report
