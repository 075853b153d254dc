#pragma once

#include <optional>
#include <span>
#include <string_view>

#include "confd_lib.h"
#include "standalone/confd/model.h"

namespace tarnd::confd {

/// The value of a leaf. Its text belongs to the configuration: do not free it; it lives until the
/// leaf changes or is deleted.
confd_value_t leaf_value(const Model& model, const lyd_node* leaf);

/// A copy with memory of its own, for an application that frees it with confd_free_value. The value
/// may be anything but a C_LIST.
confd_value_t own_value(confd_value_t value);
confd_value_t own_leaf_value(const Model& model, const lyd_node* leaf);
/// The same into a value that exists already; `node` is the leaf's.
void set_own_leaf_value(const Model& model, const ModelNode& node, const lyd_node* leaf,
                        confd_value_t& value);

/// The values of a leaf-list as one C_LIST, with memory of its own.
confd_value_t own_list_value(const Model& model, std::span<const lyd_node* const> values);

/// The tag of a node as a value.
confd_value_t tag_value(const Model& model, const store::SchemaNode& node);

/// Copies a text with its NUL into an application's buffer. If it does not fit, the call fails and
/// the buffer stays as it was.
int copy_text(const confd_buf_t& text, char* buf, int size);

/// Frees what the value points to, and sets the pointer to null.
void release(confd_value_t& value);

/// Owns what its value points to.
class OwnedValue {
 public:
  OwnedValue() { CONFD_SET_NOEXISTS(&value_); }
  explicit OwnedValue(const confd_value_t& value) : value_(value) {}
  OwnedValue(const OwnedValue&) = delete;
  OwnedValue& operator=(const OwnedValue&) = delete;
  OwnedValue(OwnedValue&& other) noexcept : value_(other.take()) {}
  OwnedValue& operator=(OwnedValue&& other) noexcept;
  ~OwnedValue() { release(value_); }

  [[nodiscard]] const confd_value_t& get() const { return value_; }
  [[nodiscard]] confd_value_t* data() { return &value_; }
  /// Returns the value, which the caller then owns; C_NOEXISTS remains.
  confd_value_t take();

 private:
  confd_value_t value_{};
};

/// A leaf's value from its text, in the lexical form of a configuration file: clear text of an
/// encrypted leaf is encrypted. Nothing if the text is no value of the leaf's type.
std::optional<OwnedValue> parse_value(const Model& model, const store::SchemaNode& leaf,
                                      std::string_view text);

}  // namespace tarnd::confd
