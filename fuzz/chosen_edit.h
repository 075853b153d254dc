#pragma once

#include <string>

#include "fuzz/choices.h"
#include "standalone/store/schema.h"

namespace tarnd::fuzz {

/// An edit-config document that touches a few places anywhere in the model, with values that mostly
/// suit the node's type and often name what stands on the small card.
std::string chosen_edit(Choices& choices, const store::Schema& schema);

}  // namespace tarnd::fuzz
