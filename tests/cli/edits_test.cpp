#include <gmock/gmock.h>

#include "tests/cli/gponval_run.h"

namespace gponval::test {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

class EditsTest : public CommandTest {
 protected:
  [[nodiscard]] Outcome edit(const std::vector<std::string>& edits) const {
    std::vector<std::string> line = {"commit", "--running", "card.xml", "--save", "-"};
    line.insert(line.end(), edits.begin(), edits.end());
    return gponval(line);
  }
};

const std::string kPort3 = "/config/service-port{3}";

TEST_F(EditsTest, AServicePortIsMadeByHand) {
  config("port.xml", service_port(3, 1, 20));
  const Outcome by_hand =
      edit({"--set", kPort3 + "/gpon/id=1/1/3", "--set", kPort3 + "/gpon/onu/id=1",
            "--set=" + kPort3 + "/gpon/onu/gem/gem-id=1", "--set",
            "/config/service-port[id='3']/match/vlan/vlan-id=20"});
  EXPECT_EQ(by_hand.status, 0) << by_hand.err;
  EXPECT_EQ(by_hand.out, edit({"--change", "port.xml"}).out);
}

TEST_F(EditsTest, EditsApplyInTheOrderGiven) {
  config("port.xml", service_port(3, 1, 20));
  const std::string rate = kPort3 + "/upstream-rate";
  const struct {
    std::vector<std::string> edits;
    std::string left;  // of the rate, as XML
  } cases[] = {
      {{"--set", rate + "=5", "--set", rate + "=6", "--change", "port.xml"}, ">6<"},
      {{"--set", rate + "=5", "--delete", kPort3, "--change", "port.xml"}, ""},
      {{"--change", "port.xml", "--delete", kPort3, "--set", rate + "=7", "--change", "port.xml"},
       ">7<"},
      {{"--change", "port.xml", "--set", rate + "=7", "--remove", rate, "--remove", rate}, ""},
      {{"--remove", kPort3, "--change", "port.xml", "--replace", rate + "=8"}, ">8<"},
  };
  for (const auto& [edits, left] : cases) {
    const Outcome run = edit(edits);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_THAT(run.out, HasSubstr("<id>3</id>"));
    if (left.empty()) {
      EXPECT_THAT(run.out, Not(HasSubstr("<upstream-rate>")));
    } else {
      EXPECT_THAT(run.out, HasSubstr("<upstream-rate" + left));
    }
  }
}

TEST_F(EditsTest, WhatIsWrongNamesTheOption) {
  config("port.xml", service_port(3, 1, 20));
  const std::string vlan = kPort3 + "/match/vlan/vlan-id";
  const struct {
    std::vector<std::string> edits;
    std::string told;
  } cases[] = {
      {{"--set", vlan + "=5000"}, "--set: " + vlan + ": '5000' is not a number from 1 to 4094"},
      {{"--delete", kPort3}, "--delete: cannot delete " + kPort3 + ": it does not exist"},
      {{"--change", "port.xml", "--create", kPort3},
       "--create: cannot create " + kPort3 + ": it exists already"},
      {{"--set", "/config/nothing"}, "--set: /config: there is no 'nothing' here"},
      {{"--set", "/config/interface/gpon{1 1 3}/onu{1}/ip-host"}, "--set: "},
  };
  for (const auto& [edits, told] : cases) {
    const Outcome run = edit(edits);
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.out, IsEmpty());
    EXPECT_EQ(run.err.find("gponval: " + told), 0U) << run.err;
    EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << run.err;
  }
}

TEST_F(EditsTest, ARequestAcceptsEdits) {
  const Outcome run =
      gponval({"request", "sp_gem_check", "/config/service-port", "--running", "card.xml", "--set",
               "/config/service-port{1}/gpon/onu/gem/gem-id=9"});
  EXPECT_EQ(run.status, 1) << run.err;
  EXPECT_THAT(run.out, HasSubstr("gem [9]"));
}

}  // namespace
}  // namespace gponval::test
