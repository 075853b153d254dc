#pragma once

#include <cstdint>
#include <string>

namespace tarnd {

/// How much of a validation's trace is written; each level includes the ones before it.
enum class TraceLevel : std::uint8_t {
  kOff,
  kFlow,    ///< level 12: begin and end of every validation, decisions, failures
  kEntry,   ///< level 11: the check of each service port
  kDetail,  ///< level 10: objects read, keypaths, the debug log
};

/// From now on the trace goes to standard error, one line for each record: level, function, source
/// and line, text. This holds for categories registered earlier, too. Without a call nothing is
/// written. Throws std::runtime_error if the log library refuses.
void start_trace(TraceLevel level);

/// From now on the records of all categories go where this configuration of zlog says, which has
/// the levels of the trace. Throws std::runtime_error if the log library refuses.
void route_records(const std::string& configuration);

/// The levels of zlog for a program's own records.
enum class RecordLevel : std::uint8_t { kInfo = 40, kWarning = 80, kError = 100 };

/// Writes a record of the category "gponval".
void write_record(RecordLevel level, const std::string& text);

}  // namespace tarnd
