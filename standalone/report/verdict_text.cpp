#include "standalone/report/verdict_text.h"

#include "standalone/report/colours.h"

namespace tarnd::report {
namespace {

constexpr std::string_view kNoText = "validation failed";
constexpr std::string_view kNothingChanged = "Nothing to commit.";

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

}  // namespace

void print_answer(std::ostream& out, const Answer& answer, bool colours) {
  print_coloured(out, to_string(answer.result), colour_of(answer.result), colours);
  out << ' ' << answer.path << " (" << answer.request << ")\n";
  if (!answer.text.empty()) {
    print_lines(out, answer.text);
  } else if (answer.result != Verdict::kOk) {
    print_lines(out, kNoText);
  }
}

void print_verdict(std::ostream& out, const CommitReport& report,
                   const std::vector<std::optional<Source>>& sources, const TextOptions& options) {
  const std::string verdict = std::string(options.title) + std::string(sentence_of(report.result));
  print_coloured(out, options.nothing_changed ? kNothingChanged : verdict, colour_of(report.result),
                 options.colours);
  out << '\n';
  for (std::size_t i = 0; i < report.answers.size(); ++i) {
    const Answer& answer = report.answers[i];
    if (answer.result == Verdict::kOk && !options.with_ok_answers) continue;
    out << '\n';
    print_answer(out, answer, options.colours);
    if (const auto& source = sources[i]; source.has_value()) {
      out << "at " << source->file << ':' << source->line << '\n';
    }
  }
  for (const std::string& message : report.messages) {
    out << "\nMessage to the user\n";
    print_lines(out, message);
  }
}

}  // namespace tarnd::report
