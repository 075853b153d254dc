#pragma once

#include "gpon_vald_trace_itf.h"

namespace valid {

/// The data model is not the one that the plug-in was built for: raises a fault with the text, in
/// the name of the source, and ends the process with status 1. Going on would read wrong values.
[[noreturn]] void end_on_model_fault(const TraceSource& source, const char* text);

/// The model sends a request to another node than the one that its validator judges.
inline constexpr const char* kInvalidTag = "XMLTAG is invalid";

}  // namespace valid
