#pragma once

#include <cstdint>

#include "confd_lib.h"

namespace valid {

/// What the user reads when the committed configuration, or the transaction, cannot be read.
inline constexpr const char* kConfdUnreadable = "Failed accessing confd data.";
inline constexpr const char* kTransactionUnreadable = "Failed accessing transaction data.";

/// Sets the text that the user reads and returns the result that goes with it: CONFD_ERR, which
/// rejects the commit, or CONFD_VALIDATION_WARN, which asks the user to confirm it.
std::int32_t reject(confd_trans_ctx* tctx, const char* text);
std::int32_t ask_to_confirm(confd_trans_ctx* tctx, const char* text);

}  // namespace valid
