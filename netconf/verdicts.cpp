#include "netconf/verdicts.h"

#include "netconf/instance_path.h"

namespace tarnd::netconf {
namespace {

constexpr const char* kNoText = "validation failed";
constexpr const char* kNeedsConfirmation = "needs to be confirmed: ";

RpcError rpc_error(const store::Schema& schema, const Answer& answer) {
  RpcError error;
  error.severity = answer.result == Verdict::kWarning ? "warning" : "error";
  error.app_tag = answer.request;
  error.path = instance_path(schema, answer.path);
  error.message = answer.text.empty() ? kNoText : answer.text;
  return error;
}

}  // namespace

RpcError rpc_error(const store::Schema& schema, const InputError& error) {
  const InputSubject& subject = error.subject();
  RpcError result = error_of("application", error.fault(), subject, error.what());
  if (!subject.path.empty()) result.path = instance_path(schema, subject.path);
  return result;
}

std::vector<RpcError> rpc_errors(const store::Schema& schema, const CommitReport& report) {
  std::vector<RpcError> errors;
  for (const Verdict verdict : {Verdict::kError, Verdict::kWarning}) {
    for (const Answer& answer : report.answers) {
      if (answer.result == verdict) errors.push_back(rpc_error(schema, answer));
    }
  }
  return errors;
}

std::vector<RpcError> unconfirmed(const store::Schema& schema, WarningPolicy policy,
                                  const CommitReport& report) {
  std::vector<RpcError> errors = rpc_errors(schema, report);
  if (policy == WarningPolicy::kReport) return errors;
  for (RpcError& error : errors) {
    error.severity = "error";
    error.message.insert(0, kNeedsConfirmation);
  }
  return errors;
}

}  // namespace tarnd::netconf
