#pragma once

#include <libyang/libyang.h>
#include <libyang/version.h>

#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// Debian 12 has libyang 2.1, Debian 13 has libyang 3. Where they differ, they differ here.
namespace tarnd::store {

/// libyang's last error as one line, with the place it names; forgets it afterwards.
std::string take_libyang_error(ly_ctx* context);

/// The nodes of the tree that the XPath expression names, from the context node on, or from the
/// document root where it is null. The caller frees the set.
LY_ERR find_xpath(const lyd_node* context, const lyd_node* tree, const char* expression,
                  ly_set** set);

/// Makes a leaf, or a value of a leaf-list, below the parent; null when the model refuses the
/// value. libyang need not bring a canonical text into its canonical form.
lyd_node* new_term(lyd_node* parent, const lysc_node* schema, const char* value, bool canonical);

/// Makes an entry with these keys, as many as the list has, below the parent; null when the model
/// refuses one.
lyd_node* new_entry(lyd_node* parent, const lysc_node* list, std::span<const std::string> keys,
                    bool canonical);

/// What stands inside the braces of an extension's statement: keyword with its prefix, and
/// argument.
std::vector<std::pair<std::string_view, std::string>> substatements(
    const lysp_ext_instance& extension);

/// libyang's own note at a node, not one that a file gave: how it keeps a list in order.
bool is_internal(const lyd_meta* meta);

}  // namespace tarnd::store
