#pragma once

#include <string>
#include <string_view>

namespace tarnd::store {

/// Writes an expression without the operators "and" and "or", with the same meaning: "a and b"
/// becomes "(boolean(a)*boolean(b)>0)". libyang 2.1 turns an empty node set into a truth value if a
/// predicate with one of these operators applies to it. Malformed text stays malformed.
std::string without_and_or(std::string_view expression);

}  // namespace tarnd::store
