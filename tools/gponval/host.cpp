#include "tools/gponval/host.h"

#include "standalone/card/card_file.h"
#include "tools/gponval/plugin_location.h"

namespace gponval {

Host::Host(const RunOptions& options, const std::optional<std::string>& card_file)
    : schema_(find_model()), datastore_(schema_) {
  tarnd::start_trace(trace_level(options));
  tarnd::insert_card(card_file.has_value() ? tarnd::read_card_file(*card_file)
                                           : tarnd::CardDescription::standard());
  plugin_.emplace(find_plugin(options.plugin));
  daemon_.emplace(datastore_, plugin_->entry_points());
}

}  // namespace gponval
