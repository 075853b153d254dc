#include "tools/gponval/host.h"

#include "tools/gponval/plugin_location.h"

namespace gponval {

Host::Host(const RunOptions& options, const tarnd::CardDescription& card)
    : schema_(find_model()), datastore_(schema_) {
  tarnd::start_trace(trace_level(options));
  tarnd::insert_card(card);
  plugin_.emplace(find_plugin(options.plugin));
  daemon_.emplace(datastore_, plugin_->entry_points());
}

}  // namespace gponval
