#include "netconf/utc_time.h"

namespace tarnd::netconf {

std::string utc_time(std::time_t time) {
  std::tm parts{};
  gmtime_r(&time, &parts);
  std::string text(sizeof "2026-01-01T00:00:00Z", '\0');
  text.resize(std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts));
  return text;
}

}  // namespace tarnd::netconf
