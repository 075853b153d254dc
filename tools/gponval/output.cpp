#include "tools/gponval/output.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <nlohmann/json.hpp>

#include "standalone/platform_calls.h"
#include "tools/gponval/terminal.h"
#include "tools/gponval/usage_error.h"

namespace gponval {
namespace {

using tarnd::Answer;
using tarnd::CommitReport;
using tarnd::CommitResult;
using tarnd::Verdict;

constexpr std::string_view kNoText = "validation failed";
constexpr std::string_view kNothingChanged = "Nothing to commit.";

constexpr int kJsonIndent = 2;
constexpr std::string_view kEndOfObject = "\n}";
constexpr double kUsecsPerMsec = 1000;
constexpr int kCallNameWidth = 58;

void print_coloured(std::ostream& out, std::string_view text, std::string_view colour,
                    bool colours) {
  if (colours) out << colour;
  out << text;
  if (colours) out << kPlain;
}

std::string_view colour_of(Verdict verdict) {
  switch (verdict) {
    case Verdict::kOk:
      return kGreen;
    case Verdict::kError:
      return kRed;
    case Verdict::kWarning:
      return kYellow;
  }
  return kPlain;
}

std::string_view colour_of(CommitResult result) {
  switch (result) {
    case CommitResult::kAccepted:
      return kGreen;
    case CommitResult::kRejected:
      return kRed;
    case CommitResult::kUnconfirmed:
      return kYellow;
  }
  return kPlain;
}

std::string_view sentence_of(CommitResult result) {
  switch (result) {
    case CommitResult::kAccepted:
      return " accepted.";
    case CommitResult::kRejected:
      return " rejected.";
    case CommitResult::kUnconfirmed:
      return " not confirmed.";
  }
  return "";
}

// A validator's text is printed on lines of its own, since it may have several lines and end with a
// line end.
void print_lines(std::ostream& out, std::string_view text) {
  out << text;
  if (text.empty() || text.back() != '\n') out << '\n';
}

template <typename Take>
void for_each_call_made(Take take) {
  const tarnd::CallCounts& counts = tarnd::platform_call_counts();
  for (std::size_t call = 0; call < counts.size(); ++call) {
    if (counts[call] != 0)
      take(tarnd::to_string(static_cast<tarnd::PlatformCall>(call)), counts[call]);
  }
}

void print_text(std::ostream& out, const CommitReport& report, const ReportKind& kind,
                const RunOptions& options) {
  const bool colours = has_colours(out);
  const std::string verdict = std::string(kind.title) + std::string(sentence_of(report.result));
  print_coloured(out, kind.nothing_changed ? kNothingChanged : verdict, colour_of(report.result),
                 colours);
  out << '\n';
  for (std::size_t i = 0; i < report.answers.size(); ++i) {
    const Answer& answer = report.answers[i];
    if (answer.result == Verdict::kOk && !kind.with_ok_answers) continue;
    out << '\n';
    print_answer(out, answer, colours);
    if (const auto& source = kind.sources[i]; source.has_value()) {
      out << "at " << name_in_message(source->file) << ':' << source->line << '\n';
    }
  }
  for (const std::string& message : report.messages) {
    out << "\nMessage to the user\n";
    print_lines(out, message);
  }
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

void print_answer(std::ostream& out, const Answer& answer, bool colours) {
  print_coloured(out, tarnd::to_string(answer.result), colour_of(answer.result), colours);
  out << ' ' << answer.path << " (" << answer.request << ")\n";
  if (!answer.text.empty()) {
    print_lines(out, answer.text);
  } else if (answer.result != Verdict::kOk) {
    print_lines(out, kNoText);
  }
}

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
