#pragma once

#include <zlog.h>

#include <cstring>

/// Levels of the trace, below zlog's DEBUG. The daemon's log configuration names them.
constexpr int kTraceDetail = 10;  ///< what is read and seen; mostly written with VALID_TRACE_IF
constexpr int kTraceEntry = 11;   ///< the check of each service port
constexpr int kTraceFlow = 12;    ///< begin and end, decisions, figures, failures

extern "C" {

/// The log category "gpon-valid", registered with the middleware on first use. Null if the
/// middleware returns none; the next call then asks again. The middleware owns it.
zlog_category_t* get_trace_cat();

/// Forgets the category: the next get_trace_cat() registers it again.
void clear_trace_cat();

/// Writes the begin record of a validation.
void trace_validation_begin(const char* name);

/// Writes the end record of a validation: its result by name, its running time in milliseconds.
void trace_validation_end(const char* name, int result, unsigned int msecs);
}

namespace valid {

/// The place that a trace record names.
struct TraceSource {
  const char* file;
  const char* function;
  int line;
};

/// Turns the first argument of VALID_TRACE_AS into a TraceSource: the name of a function is
/// completed by the file and line of the macro, a TraceSource stays as it is.
constexpr TraceSource trace_source(const char* function, const char* file, int line) {
  return {file, function, line};
}
constexpr TraceSource trace_source(const TraceSource& source, const char* /*file*/, int /*line*/) {
  return source;
}

}  // namespace valid

/// Writes a trace record in the name of the calling function: VALID_TRACE(level, format, ...), the
/// format as for printf. zlog takes no null category, so without a category nothing is written.
#define VALID_TRACE(level, ...) \
  VALID_TRACE_AS(static_cast<const char*>(__func__), level, __VA_ARGS__)

/// The same in the name of another function. Readers of the trace know the validators but not their
/// helpers, so a helper writes in the name of the function that it works for. The source is the
/// name of a function of this file, or a TraceSource for a function of another file.
#define VALID_TRACE_AS(source, level, ...) \
  VALID_TRACE_TO(get_trace_cat(), source, level, __VA_ARGS__)

/// The same two for records with expensive arguments: these are evaluated only if the level is
/// enabled.
#define VALID_TRACE_IF(level, ...) \
  VALID_TRACE_AS_IF(static_cast<const char*>(__func__), level, __VA_ARGS__)
#define VALID_TRACE_AS_IF(source, level, ...) \
  VALID_TRACE_TO(valid::enabled_trace_cat(level), source, level, __VA_ARGS__)

/// The macro below the others. If the category is null, nothing is evaluated or written.
#define VALID_TRACE_TO(category, source, level, ...)                                            \
  do {                                                                                          \
    if (zlog_category_t* const valid_trace_category = (category)) {                             \
      const valid::TraceSource valid_trace_source =                                             \
          valid::trace_source(source, __FILE__, __LINE__);                                      \
      zlog(valid_trace_category, valid_trace_source.file, std::strlen(valid_trace_source.file), \
           valid_trace_source.function, std::strlen(valid_trace_source.function),               \
           valid_trace_source.line, (level), __VA_ARGS__);                                      \
    }                                                                                           \
  } while (false)

namespace valid {

/// Whether a record of this level would be written now.
bool trace_enabled(int level);

/// The category for a record of this level; null if the record would not be written now.
zlog_category_t* enabled_trace_cat(int level);

}  // namespace valid
