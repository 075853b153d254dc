#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace tarnd {

/// Every call that the platform offers a plug-in, named as the function.
enum class PlatformCall : std::uint8_t {
#define TARND_PLATFORM_CALL(name) name,
#include "standalone/platform_calls.def"
#undef TARND_PLATFORM_CALL
  kCount
};

/// The function's own name, such as "maapi_exists".
std::string_view to_string(PlatformCall call);

/// Is asked before each platform call. If it returns false, the call fails as if the platform did
/// not answer; a call that cannot fail ignores the result.
using CallHook = std::function<bool(PlatformCall)>;

/// Installs a hook in place of the one before; an empty hook removes it.
void set_call_hook(CallHook hook);

/// Counts the call and asks the hook. Every platform function begins with it.
bool enter_platform_call(PlatformCall call);

/// Is called with each path that a platform call gets, after its arguments are inserted into its
/// format.
using PathHook = std::function<void(const std::string& path)>;

/// Installs a hook in place of the one before; an empty hook removes it.
void set_path_hook(PathHook hook);

/// Calls the hook with the path. Every platform function that takes a path calls this, some twice.
void enter_platform_path(const std::string& path);

using CallCounts = std::array<std::uint64_t, static_cast<std::size_t>(PlatformCall::kCount)>;

/// How often each call was made since the process began.
const CallCounts& platform_call_counts();

}  // namespace tarnd
