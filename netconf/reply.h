#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace tarnd::netconf {

/// What an rpc-reply contains.
struct Reply {
  std::string content;
  std::uint64_t errors = 0;  ///< rpc-errors in it
  std::string failure;       ///< for the log: why the server could not finish the operation
};

using MakeReply = std::function<Reply()>;

}  // namespace tarnd::netconf
