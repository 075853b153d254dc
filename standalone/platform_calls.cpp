#include "standalone/platform_calls.h"

#include <utility>

namespace tarnd {
namespace {

constexpr std::size_t kNumCalls = static_cast<std::size_t>(PlatformCall::kCount);

constexpr std::array<std::string_view, kNumCalls> kNames = {
#define TARND_PLATFORM_CALL(name) #name,
#include "standalone/platform_calls.def"
#undef TARND_PLATFORM_CALL
};

CallCounts counts = {};
CallHook hook;
PathHook path_hook;

}  // namespace

std::string_view to_string(PlatformCall call) {
  return kNames.at(static_cast<std::size_t>(call));
}

void set_call_hook(CallHook new_hook) {
  hook = std::move(new_hook);
}

bool enter_platform_call(PlatformCall call) {
  ++counts.at(static_cast<std::size_t>(call));
  return !hook || hook(call);
}

void set_path_hook(PathHook new_hook) {
  path_hook = std::move(new_hook);
}

void enter_platform_path(const std::string& path) {
  if (path_hook) path_hook(path);
}

const CallCounts& platform_call_counts() {
  return counts;
}

}  // namespace tarnd
