#include "tools/gponval/served_rollback.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include "netconf/client.h"
#include "netconf/instance_path.h"
#include "netconf/state/database.h"
#include "netconf/xml_text.h"
#include "tools/gponval/usage_error.h"

namespace gponval {
namespace {

namespace netconf = tarnd::netconf;
namespace state = tarnd::netconf::state;
using netconf::Element;
using tarnd::Answer;
using tarnd::CommitReport;
using tarnd::CommitResult;
using tarnd::Verdict;

std::string text_in(const Element& error, std::string_view name) {
  const auto found = std::find_if(error.children.begin(), error.children.end(),
                                  [name](const Element& child) { return child.name == name; });
  return found != error.children.end() ? found->text : std::string();
}

// A validator's verdict has its request as the tag of the application.
bool is_verdict(const Element& error) {
  return text_in(error, "error-tag") == "operation-failed" &&
         !text_in(error, "error-app-tag").empty();
}

Answer answer_in(const Element& error) {
  Answer answer;
  answer.request = text_in(error, "error-app-tag");
  answer.path = netconf::keypath_of(text_in(error, "error-path"));
  answer.result =
      text_in(error, "error-severity") == "warning" ? Verdict::kWarning : Verdict::kError;
  answer.text = text_in(error, "error-message");
  return answer;
}

CommitReport report_in(const Element& reply) {
  CommitReport report;
  for (const Element& child : reply.children) {
    if (child.name != "rpc-error") continue;
    if (!is_verdict(child)) throw UsageError("the server says: " + text_in(child, "error-message"));
    report.answers.push_back(answer_in(child));
    const bool is_error = report.answers.back().result == Verdict::kError;
    if (is_error) report.result = CommitResult::kRejected;
    if (!is_error && report.result == CommitResult::kAccepted) {
      report.result = CommitResult::kUnconfirmed;
    }
  }
  return report;
}

std::string element(const std::string& name, const std::optional<std::string>& text) {
  if (!text.has_value()) return "";
  return "<" + name + ">" + netconf::escaped(*text) + "</" + name + ">";
}

std::string operation(const RollbackRequest& request, const std::string& warnings) {
  return "<rollback xmlns=\"urn:gponval:netconf\">" +
         element("to", std::to_string(request.number)) + element("warnings", warnings) +
         element("label", request.remarks.label) + element("comment", request.remarks.comment) +
         "</rollback>";
}

state::Number newest_in(const std::string& file) {
  state::Connection connection = state::open_to_read(file);
  return state::newest(connection);
}

// The reply to what was done has neither its warnings nor its notices; the history has.
RollbackReport stored_report(const std::string& file, state::Number before,
                             netconf::SessionId session) {
  state::Connection connection = state::open_to_read(file);
  const state::Reading reading(connection);
  for (const state::CommitLine& line :
       state::list(connection, state::newest(connection) - before)) {
    if (line.kind != state::Kind::kRollback || line.author.session != session) continue;
    state::Commit commit = state::read(connection, line.number);
    return {{CommitResult::kAccepted, std::move(commit.answers), std::move(commit.notices)}, false};
  }
  return {{}, true};
}

RollbackReport roll_back(netconf::Client& client, const RollbackRequest& request,
                         const std::function<bool(const std::vector<Answer>&)>& confirm) {
  report_in(client.ask("<lock><target><running/></target></lock>"));
  const state::Number before = newest_in(request.state);
  CommitReport report = report_in(client.ask(operation(request, "report")));
  if (report.result == CommitResult::kUnconfirmed && confirm(report.answers)) {
    report = report_in(client.ask(operation(request, "accept")));
  }
  if (report.result != CommitResult::kAccepted) return {std::move(report), false};
  return stored_report(request.state, before, client.session());
}

}  // namespace

RollbackReport roll_back_through(const std::filesystem::path& socket,
                                 const RollbackRequest& request,
                                 const std::function<bool(const std::vector<Answer>&)>& confirm) {
  const std::string who = "state '" + request.state + "': its server at '" + socket.string() + "' ";
  std::optional<netconf::Client> client;
  try {
    client.emplace(socket);
  } catch (const std::system_error& error) {
    throw UsageError(who + "cannot be reached: " + error.code().message());
  } catch (const netconf::SessionLost&) {
    // It does not say why.
    throw UsageError(who + "refuses this user (see gponval serve --allow), or more sessions");
  }
  try {
    return roll_back(*client, request, confirm);
  } catch (const netconf::SessionLost& error) {
    throw UsageError(who + "gave no answer: " + error.what());
  }
}

}  // namespace gponval
