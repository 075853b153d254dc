#include "netconf/instance_path.h"

#include <gtest/gtest.h>

#include "tests/support/model.h"

namespace tarnd::netconf {
namespace {

TEST(InstancePathTest, NamesEachNodeAndKeyWithThePrefix) {
  struct Row {
    const char* path;
    const char* instance;
  };
  for (const Row& row : {
           Row{"/config", "/base:config"},
           Row{"/config/service-port", "/base:config/base:service-port"},
           Row{"/config/interface/gpon{1 1 3}/onu{7}",
               "/base:config/base:interface/base:gpon[base:chassis-id='1'][base:slot-id='1']"
               "[base:port-id='3']/base:onu[base:id='7']"},
           Row{"/config/profile/gpon/line-profile{it's}",
               "/base:config/base:profile/base:gpon/base:line-profile[base:name=\"it's\"]"},
           Row{"/config/profile/gpon/line-profile{\"'\\\"\"}", ""},
           Row{"/config/nothing", ""},
           Row{"/config/service-port{1 2}", ""},
       }) {
    EXPECT_EQ(instance_path(test::model(), row.path), row.instance) << row.path;
  }
}

}  // namespace
}  // namespace tarnd::netconf
