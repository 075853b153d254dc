#include "netconf/operations.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <vector>

#include "netconf/instance_path.h"
#include "netconf/rpc_error.h"
#include "netconf/subtree_filter.h"
#include "netconf/xml_text.h"
#include "standalone/store/path.h"
#include "standalone/store/validity.h"

namespace tarnd::netconf {
namespace {

using store::Format;

constexpr const char* kOk = "<ok/>";
constexpr const char* kNoText = "validation failed";
constexpr const char* kNeedsConfirmation = "needs to be confirmed: ";

constexpr std::array kCapabilities{
    "urn:ietf:params:netconf:base:1.0",
    "urn:ietf:params:netconf:base:1.1",
    "urn:ietf:params:netconf:capability:candidate:1.0",
    "urn:ietf:params:netconf:capability:validate:1.0",
    "urn:ietf:params:netconf:capability:rollback-on-error:1.0",
};

// An operation that is running.
struct Run {
  Card& card;
  Caller& caller;
  const Element& operation;
  const std::string& message;
};

struct Operation {
  std::string_view name;
  std::vector<std::string_view> parameters;
  std::string (*run)(const Run&);
};

[[noreturn]] void refuse(RpcError error) {
  throw RpcFailure(std::move(error));
}

// Parameters

const Element* find_parameter(const Run& run, std::string_view name) {
  for (const Element& child : run.operation.children) {
    if (child.name == name) return &child;
  }
  return nullptr;
}

const Element& parameter(const Run& run, std::string_view name) {
  const Element* found = find_parameter(run, name);
  if (found == nullptr) refuse(missing_element(std::string(name)));
  return *found;
}

void check_parameters(const Element& operation, const std::vector<std::string_view>& known) {
  std::vector<std::string_view> seen;
  for (const Element& child : operation.children) {
    const bool is_known = child.name_space == kBaseNamespace &&
                          std::find(known.begin(), known.end(), child.name) != known.end();
    const bool again = std::find(seen.begin(), seen.end(), child.name) != seen.end();
    if (!is_known || again) refuse(unknown_element(child.name));
    seen.push_back(child.name);
  }
}

enum class Target { kRunning, kCandidate };

std::string_view to_string(Target target) {
  return target == Target::kRunning ? "running" : "candidate";
}

Target datastore_in(const Run& run, std::string_view name) {
  const Element& element = parameter(run, name);
  if (element.children.size() != 1) refuse(missing_element("running or candidate"));
  const Element& named = element.children.front();
  if (named.is(kBaseNamespace, "running")) return Target::kRunning;
  if (named.is(kBaseNamespace, "candidate")) return Target::kCandidate;
  refuse(invalid_value("the datastore '" + named.name +
                       "' does not exist; there are running and candidate"));
}

// Locks

std::optional<SessionId>& lock_of(Card& card, Target target) {
  return target == Target::kRunning ? card.running_lock : card.candidate_lock;
}

void check_not_locked_by_another(const Run& run, Target target) {
  const auto& lock = lock_of(run.card, target);
  if (!lock.has_value() || *lock == run.caller.id) return;
  refuse(error_of("protocol", "in-use",
                  "session " + std::to_string(*lock) + " has locked the " +
                      std::string(to_string(target)) + " configuration"));
}

[[noreturn]] void deny_lock(SessionId holder, const std::string& why) {
  RpcError error = error_of("protocol", "lock-denied", why);
  error.info = "<session-id>" + std::to_string(holder) + "</session-id>";
  refuse(error);
}

std::string lock(const Run& run) {
  const Target target = datastore_in(run, "target");
  auto& holder = lock_of(run.card, target);
  if (holder.has_value()) {
    deny_lock(*holder, "session " + std::to_string(*holder) + " has the lock already");
  }
  if (target == Target::kCandidate && run.card.candidate.is_edited()) {
    deny_lock(0, "the candidate configuration has changes that are not committed");
  }
  holder = run.caller.id;
  return kOk;
}

std::string unlock(const Run& run) {
  const Target target = datastore_in(run, "target");
  auto& holder = lock_of(run.card, target);
  if (holder != run.caller.id) {
    refuse(error_of("protocol", "operation-failed", "this session does not have the lock"));
  }
  holder.reset();
  return kOk;
}

// Errors of the store and of validators

constexpr std::string_view tag_of(InputFault fault) {
  switch (fault) {
    case InputFault::kUnknownNode:
      return "unknown-element";
    case InputFault::kExists:
      return "data-exists";
    case InputFault::kMissing:
      return "data-missing";
    case InputFault::kOther:
      break;
  }
  return "invalid-value";
}

RpcError rpc_error(const InputError& error) {
  return error_of("application", std::string(tag_of(error.fault())), error.what());
}

RpcError rpc_error(const store::Schema& schema, const store::InvalidNode& error) {
  RpcError result = rpc_error(static_cast<const InputError&>(error));
  result.path = instance_path(schema, store::path_of(error.node()));
  return result;
}

RpcError rpc_error(const store::Schema& schema, const Answer& answer) {
  RpcError error;
  error.severity = answer.result == Verdict::kWarning ? "warning" : "error";
  error.app_tag = answer.request;
  error.path = instance_path(schema, answer.path);
  error.message = answer.text.empty() ? kNoText : answer.text;
  return error;
}

// The errors before the warnings: clients look at the first one.
std::vector<RpcError> rpc_errors(const store::Schema& schema, const CommitReport& report) {
  std::vector<RpcError> errors;
  for (const Verdict verdict : {Verdict::kError, Verdict::kWarning}) {
    for (const Answer& answer : report.answers) {
      if (answer.result == verdict) errors.push_back(rpc_error(schema, answer));
    }
  }
  return errors;
}

std::vector<RpcError> unconfirmed(const Card& card, const CommitReport& report) {
  std::vector<RpcError> errors = rpc_errors(card.datastore.schema(), report);
  if (card.warnings == WarningPolicy::kReport) return errors;
  for (RpcError& error : errors) {
    error.severity = "error";
    error.message.insert(0, kNeedsConfirmation);
  }
  return errors;
}

// Validation

void prepare_candidate(Card& card) {
  try {
    card.candidate.prepare();
  } catch (const store::InvalidNode& error) {
    refuse(rpc_error(card.datastore.schema(), error));
  } catch (const InputError& error) {
    refuse(rpc_error(error));
  }
}

void log_report(const Run& run, const CommitReport& report) {
  Card& card = run.card;
  const std::string who = "session " + std::to_string(run.caller.id);
  std::size_t errors = 0;
  std::size_t warnings = 0;
  for (const Answer& answer : report.answers) {
    if (answer.result == Verdict::kError) ++errors;
    if (answer.result != Verdict::kWarning) continue;
    ++warnings;
    card.log(LogLevel::kWarning, who + ": " + answer.request + " warns: " + answer.text);
  }
  for (const std::string& notice : report.messages) {
    card.log(LogLevel::kInfo, who + ": notice: " + notice);
  }
  card.log(LogLevel::kInfo,
           who + ": " + run.operation.name + " " + std::string(to_string(report.result)) + ", " +
               std::to_string(errors) + " errors, " + std::to_string(warnings) + " warnings");
}

std::string conclude(const Run& run, const CommitReport& report) {
  log_report(run, report);
  switch (report.result) {
    case CommitResult::kAccepted:
      return kOk;
    case CommitResult::kRejected:
      throw RpcFailure(rpc_errors(run.card.datastore.schema(), report));
    case CommitResult::kUnconfirmed:
      break;
  }
  throw RpcFailure(unconfirmed(run.card, report));
}

CommitOptions commit_options(const Card& card) {
  CommitOptions options;
  options.all = true;
  options.confirm = [accept = card.warnings == WarningPolicy::kAccept](const auto& /*warnings*/) {
    return accept;
  };
  return options;
}

std::string validate(const Run& run) {
  // What runs was validated when it was committed.
  if (datastore_in(run, "source") == Target::kRunning) return kOk;
  prepare_candidate(run.card);
  return conclude(run, run.card.daemon.check(run.card.candidate, commit_options(run.card)));
}

std::string commit(const Run& run) {
  check_not_locked_by_another(run, Target::kRunning);
  check_not_locked_by_another(run, Target::kCandidate);
  prepare_candidate(run.card);
  return conclude(run, run.card.daemon.commit(run.card.candidate, commit_options(run.card)));
}

std::string discard_changes(const Run& run) {
  check_not_locked_by_another(run, Target::kCandidate);
  run.card.candidate.discard();
  return kOk;
}

std::string edit_config(const Run& run) {
  if (datastore_in(run, "target") == Target::kRunning) {
    refuse(error_of("protocol", "operation-not-supported",
                    "the running configuration changes by a commit of the candidate only"));
  }
  const Element& config = parameter(run, "config");
  check_not_locked_by_another(run, Target::kCandidate);
  try {
    if (config.has_unread_content) run.card.candidate.edit(run.message, Format::kXml);
  } catch (const InputError& error) {
    refuse(rpc_error(error));
  }
  return kOk;
}

// Reads

std::string print(const store::Schema& schema, const lyd_node* tree) {
  char* text = nullptr;
  const LY_ERR result = lyd_print_mem(&text, tree, LYD_XML, LYD_PRINT_WD_EXPLICIT);
  const std::unique_ptr<char, decltype(&std::free)> owner(text, &std::free);
  if (result != LY_SUCCESS) {
    ly_err_clean(schema.context(), nullptr);
    throw RpcFailure(RpcError{});
  }
  return text != nullptr ? text : "";
}

std::string print_selected(const store::Datastore& datastore, const Element& filter) {
  const std::string* type = filter.attribute("type");
  if (type != nullptr && *type != "subtree") {
    RpcError error =
        error_of("protocol", "bad-attribute", "this server has filters of the type 'subtree' only");
    error.info = "<bad-attribute>type</bad-attribute><bad-element>filter</bad-element>";
    refuse(error);
  }
  datastore.settle_order();
  const store::TreeOwner selected = select_subtrees(filter, datastore.root());
  return selected != nullptr ? print(datastore.schema(), selected.get()) : "";
}

std::string data_of(const Run& run) {
  const Element* filter = find_parameter(run, "filter");
  const store::Datastore& datastore = run.card.datastore;
  const std::string data =
      filter != nullptr ? print_selected(datastore, *filter) : datastore.print(Format::kXml);
  return "<data>" + data + "</data>";
}

std::string get_running(const Run& run) {
  const store::CommittedSight sight(run.card.candidate);
  return data_of(run);
}

std::string get_config(const Run& run) {
  return datastore_in(run, "source") == Target::kCandidate ? data_of(run) : get_running(run);
}

// Sessions

std::string close_session(const Run& run) {
  run.caller.closes = true;
  return kOk;
}

std::string kill_session(const Run& run) {
  const std::string id(trimmed(parameter(run, "session-id").text));
  const auto is_it = [&id](const auto& session) { return std::to_string(session.first) == id; };
  auto& sessions = run.card.sessions;
  const auto found = std::find_if(sessions.begin(), sessions.end(), is_it);
  if (found == sessions.end()) refuse(invalid_value("there is no session '" + id + "'"));
  if (found->first == run.caller.id) {
    refuse(invalid_value("a session ends itself with close-session"));
  }
  found->second.is_killed = true;
  return kOk;
}

const std::vector<Operation>& operations() {
  static const std::vector<Operation> table = {
      {"get", {"filter"}, &get_running},
      {"get-config", {"source", "filter"}, &get_config},
      {"edit-config",
       {"target", "default-operation", "test-option", "error-option", "config"},
       &edit_config},
      {"lock", {"target"}, &lock},
      {"unlock", {"target"}, &unlock},
      {"validate", {"source"}, &validate},
      {"commit", {}, &commit},
      {"discard-changes", {}, &discard_changes},
      {"close-session", {}, &close_session},
      {"kill-session", {"session-id"}, &kill_session},
  };
  return table;
}

const Operation& operation_named(const Element& element) {
  for (const Operation& operation : operations()) {
    if (element.is(kBaseNamespace, operation.name)) return operation;
  }
  RpcError error = error_of("protocol", "operation-not-supported",
                            "this server has no operation '" + element.name + "'");
  error.info = "<bad-element>" + escaped(element.name) + "</bad-element>";
  refuse(error);
}

}  // namespace

std::string run_operation(Card& card, Caller& caller, const Element& rpc,
                          const std::string& message) {
  if (rpc.children.empty()) refuse(missing_element("an operation"));
  if (rpc.children.size() > 1) refuse(unknown_element(rpc.children[1].name));
  const Element& element = rpc.children.front();
  const Operation& operation = operation_named(element);
  check_parameters(element, operation.parameters);
  return operation.run({card, caller, element, message});
}

std::string capabilities(const store::Schema& schema) {
  std::string text = "<capabilities>";
  for (const char* capability : kCapabilities) {
    text += "<capability>" + std::string(capability) + "</capability>";
  }
  const lys_module* module = schema.root().lysc->module;
  std::string of_model = std::string(module->ns) + "?module=" + module->name;
  if (module->revision != nullptr) of_model += std::string("&revision=") + module->revision;
  return text + "<capability>" + escaped(of_model) + "</capability></capabilities>";
}

}  // namespace tarnd::netconf
