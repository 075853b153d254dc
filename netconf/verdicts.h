#pragma once

#include <vector>

#include "netconf/card.h"
#include "netconf/rpc_error.h"
#include "standalone/input_error.h"
#include "standalone/store/schema.h"

namespace tarnd::netconf {

/// What the model refuses, as an error of a reply.
RpcError rpc_error(const store::Schema& schema, const InputError& error);

/// What validators refuse and warn of. The errors before the warnings: clients look at the first
/// one.
std::vector<RpcError> rpc_errors(const store::Schema& schema, const CommitReport& report);

/// The warnings that nobody confirmed.
std::vector<RpcError> unconfirmed(const store::Schema& schema, WarningPolicy policy,
                                  const CommitReport& report);

}  // namespace tarnd::netconf
