#include "standalone/daemon/daemon.h"

#include <algorithm>
#include <array>
#include <chrono>

#include "standalone/confd/keypath.h"
#include "standalone/confd/model.h"
#include "standalone/confd/validation_session.h"
#include "standalone/confd/values.h"

namespace tarnd {
namespace {

using Clock = std::chrono::steady_clock;

Verdict verdict_of(int result) {
  switch (result) {
    case CONFD_OK:
      return Verdict::kOk;
    case CONFD_VALIDATION_WARN:
      return Verdict::kWarning;
    default:
      return Verdict::kError;
  }
}

bool is_wanted(const CommitOptions& options, const std::string& request) {
  return options.only.empty() ||
         std::find(options.only.begin(), options.only.end(), request) != options.only.end();
}

CommitResult conclude(const std::vector<Answer>& answers, const CommitOptions& options) {
  std::vector<Answer> warnings;
  for (const Answer& answer : answers) {
    if (answer.result == Verdict::kError) return CommitResult::kRejected;
    if (answer.result == Verdict::kWarning) warnings.push_back(answer);
  }
  if (warnings.empty()) return CommitResult::kAccepted;
  const bool confirmed = options.confirm && options.confirm(warnings);
  return confirmed ? CommitResult::kAccepted : CommitResult::kUnconfirmed;
}

Answer ask(const PluginEntryPoints& plugin, ValidationSession& session, const std::string& request,
           const std::string& path, confd::OwnedKeypath& keypath, confd::OwnedValue& value) {
  session.begin_request(request);
  const auto start = Clock::now();
  const int result = plugin.validate(session.context(), keypath.get(), value.data());
  const std::chrono::duration<double, std::milli> elapsed = Clock::now() - start;
  return {request, path, verdict_of(result), session.error_text().value_or(""), elapsed.count()};
}

confd_value_t new_value(const confd::Model& model, const store::Datastore& datastore,
                        const ValidationCall& call) {
  switch (call.node->kind) {
    case store::NodeKind::kLeaf:
      return confd::own_leaf_value(model, call.instance);
    case store::NodeKind::kLeafList:
      return confd::own_list_value(model, datastore.leaf_list(call.instance, *call.node));
    default:
      return confd::tag_value(model, *call.node);
  }
}

Answer ask(const PluginEntryPoints& plugin, ValidationSession& session, const confd::Model& model,
           const ValidationCall& call) {
  confd::OwnedKeypath keypath(model, call.instance);
  std::string path = store::path_of(call.instance);
  const bool once = call.point->call_once && call.node->kind == store::NodeKind::kList;
  if (once || call.node->kind == store::NodeKind::kLeafList) {
    keypath.append(model, *call.node);
    path += "/" + call.node->name;
  }
  confd::OwnedValue value(new_value(model, session.transaction().datastore(), call));
  return ask(plugin, session, call.point->request, path, keypath, value);
}

// The value that was given in lexical form, or else the node's value in the transaction, which is
// C_NOEXISTS if the node is a leaf that does not exist.
confd::OwnedValue value_of(const confd::Model& model, const store::Datastore& datastore,
                           const store::Path& path, const std::optional<std::string>& given) {
  const store::SchemaNode& node = *path.last().node;
  if (given.has_value()) {
    auto parsed = confd::parse_value(model, node, *given);
    if (!parsed.has_value()) {
      throw InputError("'" + *given + "' is no value of " + node.path());
    }
    return std::move(*parsed);
  }
  if (node.kind != store::NodeKind::kLeaf) {
    return confd::OwnedValue(confd::tag_value(model, node));
  }
  const lyd_node* leaf = datastore.find(path);
  return leaf != nullptr ? confd::OwnedValue(confd::own_leaf_value(model, leaf))
                         : confd::OwnedValue();
}

}  // namespace

std::string_view to_string(Verdict verdict) {
  switch (verdict) {
    case Verdict::kOk:
      return "OK";
    case Verdict::kWarning:
      return "WARNING";
    default:
      return "ERROR";
  }
}

std::string_view to_string(CommitResult result) {
  switch (result) {
    case CommitResult::kAccepted:
      return "accepted";
    case CommitResult::kRejected:
      return "rejected";
    default:
      return "unconfirmed";
  }
}

Daemon::Daemon(store::Datastore& datastore, const PluginEntryPoints& plugin)
    : datastore_(datastore), plugin_(plugin) {
  confd::load_model(datastore.schema());
  if (plugin_.lib_init() != 0) throw PluginError("the plug-in could not be initialised");
  std::array<char, 256> name{};
  if (plugin_.get_validation_point(name.data(), static_cast<int>(name.size())) != 0) {
    throw PluginError("the plug-in names no validation point");
  }
  points_ = validation_points(datastore.schema(), name.data());
}

Daemon::~Daemon() {
  plugin_.lib_finish();
}

CommitReport Daemon::commit(store::Transaction& transaction, const CommitOptions& options) {
  CommitReport report = check(transaction, options);
  if (report.result == CommitResult::kAccepted) transaction.commit();
  return report;
}

CommitReport Daemon::check(store::Transaction& transaction, const CommitOptions& options) {
  CommitReport report;
  const confd::Model& model = confd::load_model(datastore_.schema());
  {
    ValidationSession session(transaction);
    for (const ValidationCall& call : affected_calls(points_, transaction)) {
      if (!is_wanted(options, call.point->request)) continue;
      report.answers.push_back(ask(plugin_, session, model, call));
      if (report.answers.back().result == Verdict::kError && !options.all) break;
    }
    report.messages = session.messages();
  }
  report.result = conclude(report.answers, options);
  return report;
}

CommitReport Daemon::request(store::Transaction& transaction, const std::string& name,
                             std::string_view keypath, const std::optional<std::string>& value,
                             const CommitOptions& options) {
  const confd::Model& model = confd::load_model(datastore_.schema());
  std::string why;
  const auto path = store::Path::parse(datastore_.schema(), keypath, &why);
  if (!path.has_value()) throw InputError(why);
  if (path->names_impossible_entry()) {
    throw InputError("wrong number of keys in the path " + std::string(keypath));
  }
  confd::OwnedKeypath target(model, *path);
  confd::OwnedValue new_value = value_of(model, datastore_, *path, value);
  CommitReport report;
  {
    ValidationSession session(transaction);
    report.answers.push_back(ask(plugin_, session, name, std::string(keypath), target, new_value));
    report.messages = session.messages();
  }
  report.result = conclude(report.answers, options);
  return report;
}

}  // namespace tarnd
