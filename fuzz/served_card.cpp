#include "fuzz/served_card.h"

#include <utility>

#include "gpon_card_valid.h"
#include "standalone/card/card_file.h"
#include "standalone/daemon/daemon.h"
#include "tests/support/model.h"

namespace tarnd::fuzz {
namespace {

using store::Format;

/// What is too slow to be made for each input.
struct Host {
  Host() { insert_card({}); }

  store::Datastore datastore{test::model()};
  Daemon daemon{datastore, {&lib_init, &get_validation_point, &validate, &lib_finish}};
};

Host& host() {
  static Host host;
  return host;
}

store::Datastore& loaded_datastore(const std::string& configuration) {
  host().datastore.load(configuration, Format::kXml);
  return host().datastore;
}

}  // namespace

ServedCard::ServedCard(const std::string& configuration, netconf::WarningPolicy warnings)
    : card_(loaded_datastore(configuration), host().daemon, warnings,
            [this](netconf::LogLevel, const std::string& text) { log_ += text + "\n"; }) {}

std::string ServedCard::running() {
  const store::CommittedSight sight(card_.candidate);
  return candidate();
}

std::string ServedCard::candidate() const {
  return card_.datastore.print(Format::kXml);
}

std::string ServedCard::take_log() {
  return std::exchange(log_, {});
}

}  // namespace tarnd::fuzz
