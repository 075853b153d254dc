#pragma once

#include "standalone/daemon/daemon.h"
#include "tools/gponval/options.h"

namespace gponval {

/// The daemon for one run of the command: the model, an empty datastore, the plug-in.
class Host {
 public:
  /// Starts the trace, inserts the card, loads the plug-in and enters it. Throws UsageError,
  /// tarnd::InputError or PluginError.
  Host(const RunOptions& options, const std::optional<std::string>& card_file);

  [[nodiscard]] tarnd::store::Datastore& datastore() { return datastore_; }
  [[nodiscard]] tarnd::Daemon& daemon() { return *daemon_; }

 private:
  tarnd::store::Schema schema_;
  tarnd::store::Datastore datastore_;
  std::optional<tarnd::Plugin> plugin_;
  std::optional<tarnd::Daemon> daemon_;
};

}  // namespace gponval
