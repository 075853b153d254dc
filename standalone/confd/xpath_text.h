#pragma once

#include <string>
#include <string_view>

namespace tarnd::confd {

/// The same expression without the operators "and" and "or": libyang 2.1 turns an empty node set
/// into a truth value when a predicate with one of them applies to it. Malformed text stays
/// malformed.
std::string without_and_or(std::string_view expression);

}  // namespace tarnd::confd
