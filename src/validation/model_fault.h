#pragma once

#include "gpon_vald_trace_itf.h"

namespace valid {

/// Called if the data model is not the one that the plug-in was built for: raises a fault with the
/// text, in the name of the source, and ends the process with status 1. Otherwise wrong values
/// would be read.
[[noreturn]] void end_on_model_fault(const TraceSource& source, const char* text);

/// The text for a request that the model declares at another node than the one that its validator
/// checks.
inline constexpr const char* kInvalidTag = "XMLTAG is invalid";

}  // namespace valid
