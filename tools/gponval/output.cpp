#include "tools/gponval/output.h"

#include <cmath>
#include <iomanip>
#include <iostream>
#include <nlohmann/json.hpp>

#include "standalone/platform_calls.h"
#include "standalone/report/verdict_text.h"
#include "tools/gponval/inputs.h"
#include "tools/gponval/terminal.h"
#include "tools/gponval/usage_error.h"

namespace gponval {
namespace {

using tarnd::Answer;
using tarnd::CommitReport;
using tarnd::report::Source;
using Sources = std::vector<std::optional<Source>>;

constexpr int kJsonIndent = 2;
constexpr std::string_view kEndOfObject = "\n}";
constexpr double kUsecsPerMsec = 1000;
constexpr int kCallNameWidth = 58;

template <typename Take>
void for_each_call_made(Take take) {
  const tarnd::CallCounts& counts = tarnd::platform_call_counts();
  for (std::size_t call = 0; call < counts.size(); ++call) {
    if (counts[call] != 0)
      take(tarnd::to_string(static_cast<tarnd::PlatformCall>(call)), counts[call]);
  }
}

Sources named_in_messages(Sources sources) {
  for (auto& source : sources) {
    if (source.has_value()) source->file = name_in_message(source->file);
  }
  return sources;
}

void print_text(std::ostream& out, const CommitReport& report, const ReportKind& kind,
                const RunOptions& options) {
  tarnd::report::print_verdict(
      out, report, named_in_messages(kind.sources),
      {kind.title, kind.with_ok_answers, kind.nothing_changed, has_colours(out)});
  if (!options.stats) return;
  out << "\nPlatform calls\n";
  for_each_call_made([&out](std::string_view name, std::uint64_t count) {
    out << std::left << std::setw(kCallNameWidth) << name << ' ' << count << '\n';
  });
}

nlohmann::ordered_json json_of(const Answer& answer, const std::optional<Source>& source) {
  nlohmann::ordered_json object = {
      {"request", answer.request},
      {"path", answer.path},
      {"result", tarnd::to_string(answer.result)},
      {"text", answer.text},
      {"msecs", std::round(answer.msecs * kUsecsPerMsec) / kUsecsPerMsec}};
  if (source.has_value()) object["source"] = {{"file", source->file}, {"line", source->line}};
  return object;
}

// The members of the outermost object that come as text, in front of its end.
void print_object(std::ostream& out, std::string text, std::string_view changes) {
  if (!changes.empty()) {
    text.erase(text.size() - kEndOfObject.size());
    out << text << ",\n  \"changes\": " << changes << kEndOfObject << '\n';
  } else {
    out << text << '\n';
  }
}

void print_json(std::ostream& out, const CommitReport& report, const ReportKind& kind,
                const RunOptions& options) {
  nlohmann::ordered_json object;
  object["result"] = tarnd::to_string(report.result);
  object["answers"] = nlohmann::ordered_json::array();
  for (std::size_t i = 0; i < report.answers.size(); ++i) {
    object["answers"].push_back(json_of(report.answers[i], kind.sources[i]));
  }
  object["messages"] = report.messages;
  if (options.stats) {
    nlohmann::ordered_json& calls = object["platform-calls"] = nlohmann::ordered_json::object();
    for_each_call_made(
        [&calls](std::string_view name, std::uint64_t count) { calls[std::string(name)] = count; });
  }
  // A text that was cut within a letter, or a name from the command line, need not be valid UTF-8.
  print_object(out, object.dump(kJsonIndent, ' ', false, nlohmann::json::error_handler_t::replace),
               kind.changes_json);
}

}  // namespace

void print_report(std::ostream& out, const CommitReport& report, const ReportKind& kind,
                  const RunOptions& options) {
  if (options.format == "json") {
    print_json(out, report, kind, options);
  } else {
    print_text(out, report, kind, options);
  }
  finish_output();
}

void finish_output() {
  std::cout.flush();
  if (!std::cout) throw UsageError("cannot write standard output");
}

}  // namespace gponval
