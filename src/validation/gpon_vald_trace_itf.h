#pragma once

#include <zlog.h>

#include <cstring>

/// Levels of the trace, below zlog's DEBUG. The daemon's log configuration names them.
constexpr int kTraceDetail = 10;  ///< what is read and seen; mostly written with VALID_TRACE_IF
constexpr int kTraceEntry = 11;   ///< the check of each service port
constexpr int kTraceFlow = 12;    ///< begin and end, decisions, figures, failures

extern "C" {

/// The log category "gpon-valid", registered with the middleware on first use. Null where the
/// middleware has none to give; the next call then asks again. It stays with the middleware.
zlog_category_t* get_trace_cat();

/// Forgets the category: the next get_trace_cat() registers it again.
void clear_trace_cat();

/// Writes the begin record of a validation.
void trace_validation_begin(const char* name);

/// Writes the end record of a validation: its result by name, its running time in milliseconds.
void trace_validation_end(const char* name, int result, unsigned int msecs);
}

/// Writes a trace record in the name of the calling function: VALID_TRACE(level, format, ...), the
/// format as for printf. zlog takes no null category, so without a category nothing is written.
#define VALID_TRACE(level, ...) \
  VALID_TRACE_AS(static_cast<const char*>(__func__), level, __VA_ARGS__)

/// The same in the name of the function whose work it is, for a piece of it that has a function of
/// its own: whoever reads the trace knows the validators, not their pieces.
#define VALID_TRACE_AS(function, level, ...) \
  VALID_TRACE_TO(get_trace_cat(), function, level, __VA_ARGS__)

/// Both for records whose arguments cost work: they are evaluated only while the level is enabled.
#define VALID_TRACE_IF(level, ...) \
  VALID_TRACE_AS_IF(static_cast<const char*>(__func__), level, __VA_ARGS__)
#define VALID_TRACE_AS_IF(function, level, ...) \
  VALID_TRACE_TO(valid::enabled_trace_cat(level), function, level, __VA_ARGS__)

/// What the others are made of. Nothing is evaluated or written where the category is null.
#define VALID_TRACE_TO(category, function, level, ...)                       \
  do {                                                                       \
    if (zlog_category_t* const valid_trace_category = (category)) {          \
      zlog(valid_trace_category, __FILE__, sizeof(__FILE__) - 1, (function), \
           std::strlen(function), __LINE__, (level), __VA_ARGS__);           \
    }                                                                        \
  } while (false)

namespace valid {

/// Would a record of this level be written now?
bool trace_enabled(int level);

/// The category for a record of this level; null where it would not be written now.
zlog_category_t* enabled_trace_cat(int level);

}  // namespace valid
