#pragma once

#include <libyang/libyang.h>
#include <libyang/version.h>

#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// Debian 12 has libyang 2.1, Debian 13 has libyang 3. Their differences are handled here and
// nowhere else.
namespace tarnd::store {

/// libyang 3 keeps entries sorted by their keys, with a tree of its own beside the list, so nothing
/// else may insert one.
constexpr bool kKeepsListsSorted = LY_VERSION_MAJOR >= 3;

/// libyang's last error as one line, with the place that it names. Clears the error.
std::string take_libyang_error(ly_ctx* context);

/// The nodes of the tree that the XPath expression names, evaluated at the context node, or at the
/// document root if that is null. The caller frees the set.
LY_ERR find_xpath(const lyd_node* context, const lyd_node* tree, const char* expression,
                  ly_set** set);

/// Makes a leaf, or a value of a leaf-list, below the parent; null if the value is invalid. If the
/// text is canonical already, libyang need not compute its canonical form.
lyd_node* new_term(lyd_node* parent, const lysc_node* schema, const char* value, bool canonical);

/// Makes an entry with these keys, as many as the list has, below the parent; null if one is
/// invalid.
lyd_node* new_entry(lyd_node* parent, const lysc_node* list, std::span<const std::string> keys,
                    bool canonical);

/// Takes the node, with all below it, out of its tree.
void unlink_node(lyd_node* node);

/// The same, and frees it.
void free_node(lyd_node* node);

/// The statements inside the braces of an extension: keyword with its prefix, and argument.
std::vector<std::pair<std::string_view, std::string>> substatements(
    const lysp_ext_instance& extension);

/// Whether the metadata is libyang's own, by which it keeps a list in order, and not from a file.
bool is_internal(const lyd_meta* meta);

}  // namespace tarnd::store
