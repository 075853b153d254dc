#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "standalone/daemon/plugin.h"
#include "standalone/store/transaction.h"

namespace tarnd {

enum class Verdict { kOk, kError, kWarning };

/// "OK", "ERROR", "WARNING".
std::string_view to_string(Verdict verdict);

/// The outcome of one call of the plug-in.
struct Answer {
  std::string request;
  std::string path;
  Verdict result = Verdict::kOk;
  std::string text;  ///< empty if the validator set none
  double msecs = 0;
};

enum class CommitResult { kAccepted, kRejected, kUnconfirmed };

/// "accepted", "rejected", "unconfirmed".
std::string_view to_string(CommitResult result);

struct CommitReport {
  CommitResult result = CommitResult::kAccepted;
  std::vector<Answer> answers;        ///< in call order
  std::vector<std::string> messages;  ///< notices sent to the user's session
};

struct CommitOptions {
  bool all = false;               ///< go on after the first error
  std::vector<std::string> only;  ///< restrict to these requests; empty: all of them
  /// Asked once with all warnings, after the last call; empty: not confirmed.
  std::function<bool(const std::vector<Answer>&)> confirm;
};

/// One call that a commit makes: a validation point's request on one instance.
struct ValidationCall {
  const store::SchemaNode* node = nullptr;
  const store::ValidationPoint* point = nullptr;
  /// The instance. For a call-once list and for a leaf-list it is the parent, and the call's path
  /// ends with the list's name.
  const lyd_node* instance = nullptr;
};

/// A validation point and the node of the model that has it.
struct PointInModel {
  const store::SchemaNode* node = nullptr;
  const store::ValidationPoint* point = nullptr;
};

/// The points that name `gpon_validation_check`, in the order in which a commit calls them.
std::vector<PointInModel> validation_points(const store::Schema& schema, std::string_view name);

/// The points' requests, in the same order.
std::vector<std::string_view> request_names(const std::vector<PointInModel>& points);

/// The calls that the prepared transaction needs, in order.
std::vector<ValidationCall> affected_calls(const std::vector<PointInModel>& points,
                                           const store::Transaction& transaction);

/// The management daemon: one datastore, one plug-in. A process has at most one daemon at a time.
class Daemon {
 public:
  /// Calls lib_init and get_validation_point. Throws PluginError.
  Daemon(store::Datastore& datastore, const PluginEntryPoints& plugin);
  Daemon(const Daemon&) = delete;
  Daemon& operator=(const Daemon&) = delete;
  ~Daemon();

  /// Validates the prepared transaction and commits it if it is accepted. Otherwise it stays open,
  /// and its end undoes it.
  CommitReport commit(store::Transaction& transaction, const CommitOptions& options);

  /// The same without the commit: the transaction stays open.
  CommitReport check(store::Transaction& transaction, const CommitOptions& options);

  /// Calls the plug-in once, with exactly this request name, on one keypath of the prepared
  /// transaction; never commits. The value is the node's new value in lexical form, by default the
  /// one in the transaction. Throws InputError for a keypath or value that the model does not know.
  CommitReport request(store::Transaction& transaction, const std::string& name,
                       std::string_view keypath, const std::optional<std::string>& value,
                       const CommitOptions& options);

  [[nodiscard]] const std::vector<PointInModel>& points() const { return points_; }

 private:
  class Session;

  store::Datastore& datastore_;
  PluginEntryPoints plugin_;
  std::vector<PointInModel> points_;
};

}  // namespace tarnd
