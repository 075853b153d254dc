#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "standalone/store/path.h"
#include "standalone/store/reader.h"
#include "standalone/store/schema.h"

namespace tarnd::store {

class TreeKeeper;

/// The configuration as one tree. While a Transaction is open, the tree is the configuration that
/// its commit would make, and the Transaction keeps what was changed.
class Datastore {
 public:
  explicit Datastore(const Schema& schema);
  Datastore(const Datastore&) = delete;
  Datastore& operator=(const Datastore&) = delete;
  ~Datastore();

  /// Replaces everything by the configuration in the text. Throws InputError; the old configuration
  /// then stays.
  void load(TextSource& text, Format format);
  void load(const std::string& text, Format format);

  [[nodiscard]] const Schema& schema() const { return schema_; }
  /// The instance of `config`, which always exists.
  [[nodiscard]] lyd_node* root() const { return root_; }

  /// A container or leaf below the parent, or null. A leaf whose default is in effect exists.
  [[nodiscard]] lyd_node* child(const lyd_node* parent, const SchemaNode& node) const;
  /// The entry with these canonical key texts, or null.
  [[nodiscard]] lyd_node* entry(const lyd_node* parent, const SchemaNode& list,
                                std::span<const std::string> keys) const;
  [[nodiscard]] lyd_node* entry(const lyd_node* parent, const SchemaNode& list,
                                std::span<const std::string_view> keys) const;
  /// The entries in key order. Valid until the list changes.
  [[nodiscard]] std::span<lyd_node* const> entries(const lyd_node* parent,
                                                   const SchemaNode& list) const;
  /// The values of a leaf-list in ascending order.
  [[nodiscard]] std::vector<lyd_node*> leaf_list(const lyd_node* parent,
                                                 const SchemaNode& node) const;
  /// The node at the path; null if it does not exist, and for a list or leaf-list without keys.
  [[nodiscard]] lyd_node* find(const Path& path) const;

  /// Another number after nodes were linked, unlinked or freed. Whoever keeps nodes of the tree
  /// asks whether it and root() are still the same.
  [[nodiscard]] std::uint64_t version() const;

  /// Restores the key order of lists, and the ascending order of leaf-lists, after new instances
  /// were inserted, for readers that follow the tree itself (XPath, printing).
  void settle_order() const;

  /// The whole configuration as text, encrypted leaves encrypted, defaults left out.
  [[nodiscard]] std::string print(Format format) const;

 private:
  friend class Transaction;

  void take(ReadConfiguration read);

  const Schema& schema_;
  lyd_node* root_ = nullptr;
  std::unique_ptr<TreeKeeper> keeper_;
};

/// The first instance of the model's node below the parent, or null.
lyd_node* child_instance(const lyd_node* parent, const SchemaNode& node);

/// Type and canonical text of a leaf's value; a union's value has its member's type.
ValueKind value_kind(const lyd_node* leaf);
std::string_view value_text(const lyd_node* leaf);

/// Orders two values of one leaf-list: numbers numerically, enumerations by value, texts by bytes.
bool value_less(const lyd_node* left, const lyd_node* right);

/// Orders two entries of one list by their keys, numbers numerically, enumerations by value.
bool key_less(const lyd_node* left, const lyd_node* right);

}  // namespace tarnd::store
