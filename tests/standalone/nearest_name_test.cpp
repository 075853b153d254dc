#include "standalone/nearest_name.h"

#include <gtest/gtest.h>

#include <string_view>
#include <vector>

namespace tarnd {
namespace {

using Names = std::vector<std::string_view>;

TEST(NearestName, IsWhatWasProbablyMeant) {
  const struct {
    std::string_view wanted;
    Names known;
    std::string_view meant;  // empty: none
  } cases[] = {
      {"comit", {"commit", "points"}, "commit"},
      {"commmit", {"commit", "points"}, "commit"},
      {"connit", {"commit", "points"}, "commit"},
      {"ocmmit", {"commit", "points"}, "commit"},
      {"COMMIT", {"commit", "points"}, "commit"},
      {"JSON", {"text", "json"}, "json"},
      {"serviceport", {"service-profile", "service-port"}, "service-port"},
      {"service_port", {"service-profile", "service-port"}, "service-port"},
      {"wlan", {"lan", "vlan", "wan"}, "lan"},  // the first of two that are equally near
      {"wlan", {"vlans", "vlan"}, "vlan"},      // the nearest, not the first
      {"gen", {"commit", "generate"}, "generate"},
      {"gem", {"generate", "gems"}, "gems"},
      {"g", {"x", "gpon"}, "gpon"},
      {"x", {"y", "z"}, ""},
      {"csv", {"text", "json"}, ""},
      {"delete", {"commit", "request", "points", "generate"}, ""},
      {"", {"commit"}, ""},
      {"commit", {}, ""},
  };
  for (const auto& [wanted, known, meant] : cases) {
    EXPECT_EQ(nearest(wanted, known).value_or(""), meant) << wanted;
  }
}

TEST(NearestName, EndsAMessage) {
  const Names known = {"commit", "points"};
  EXPECT_EQ(did_you_mean("comit", known), ", did you mean 'commit'?");
  EXPECT_EQ(did_you_mean("colour", known), "");
}

}  // namespace
}  // namespace tarnd
