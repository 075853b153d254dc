#pragma once

#include "standalone/card/card_file.h"
#include "standalone/daemon/daemon.h"
#include "tools/gponval/options.h"

namespace gponval {

/// The daemon for one run of the command: the model, an empty datastore, the plug-in.
class Host {
 public:
  /// Starts the trace, sets the card, loads the plug-in and initialises it. Throws UsageError or
  /// PluginError.
  Host(const RunOptions& options, const tarnd::CardDescription& card);

  [[nodiscard]] tarnd::store::Datastore& datastore() { return datastore_; }
  [[nodiscard]] const tarnd::store::Datastore& datastore() const { return datastore_; }
  [[nodiscard]] tarnd::Daemon& daemon() { return *daemon_; }
  [[nodiscard]] const tarnd::Plugin& plugin() const { return *plugin_; }

 private:
  tarnd::store::Schema schema_;
  tarnd::store::Datastore datastore_;
  std::optional<tarnd::Plugin> plugin_;
  std::optional<tarnd::Daemon> daemon_;
};

}  // namespace gponval
