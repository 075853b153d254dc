#pragma once

#include <string>

#include "confd_lib.h"
#include "standalone/platform_calls.h"
#include "standalone/store/schema.h"

namespace tarnd::confd {

/// Sets confd_errno and the text that confd_lasterr returns. Returns CONFD_ERR.
int fail(int code, const std::string& text);

/// Fails a call because the node of its path is of another kind, such as "'/config' is no list".
int fail_kind(const store::SchemaNode& node, const char* wanted);

/// Fails a call because its path leads to nothing in the transaction.
int fail_missing(const store::SchemaNode& node);

/// Fails a call that reads one type of value because the value is of another type.
int fail_type(PlatformCall call);

/// The text of the last failure, empty before the first one.
std::string& last_error();

}  // namespace tarnd::confd
