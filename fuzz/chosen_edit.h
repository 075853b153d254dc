#pragma once

#include <string>

#include "fuzz/choices.h"
#include "standalone/store/schema.h"

namespace tarnd::fuzz {

/// An edit-config document with edits of a few places anywhere in the model. The values are mostly
/// of the node's type, and often names on the small card.
std::string chosen_edit(Choices& choices, const store::Schema& schema);

}  // namespace tarnd::fuzz
