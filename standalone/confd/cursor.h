#pragma once

#include <cstddef>
#include <span>

#include "standalone/store/datastore.h"

namespace tarnd::confd {

/// A walk over the entries of a list. The list does not change meanwhile, since nothing edits a
/// transaction that is being validated.
struct Cursor {
  std::size_t num_keys = 0;
  std::span<lyd_node* const> entries;
  std::size_t next = 0;  ///< index of the entry that the next step reads
};

}  // namespace tarnd::confd
