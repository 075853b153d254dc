#include "netconf/ssh_address.h"

#include <gtest/gtest.h>

namespace tarnd::netconf {
namespace {

std::string read(const char* text) {
  const auto address = ssh_address(text);
  if (!address.has_value()) return "none";
  return address->host + " " + std::to_string(address->port) + " " + host_to_connect_to(*address);
}

TEST(SshAddress, IsAPortWithAnAddressBeforeIt) {
  EXPECT_EQ(read("8300"), "127.0.0.1 8300 127.0.0.1");
  EXPECT_EQ(read("65535"), "127.0.0.1 65535 127.0.0.1");
  EXPECT_EQ(read("192.0.2.1:830"), "192.0.2.1 830 192.0.2.1");
  EXPECT_EQ(read("0.0.0.0:830"), "0.0.0.0 830 localhost");
  EXPECT_EQ(read("[2001:db8::1]:830"), "2001:db8::1 830 2001:db8::1");
  EXPECT_EQ(read("[::]:830"), ":: 830 localhost");
}

TEST(SshAddress, IsNothingElse) {
  for (const char* text :
       {"", "0", "65536", "+1", " 1", "1 ", "0x1", ":1", "localhost:1", "1.2.3:1", "1.2.3.4",
        "1.2.3.4:", "::1:1", "[1.2.3.4]:1", "[::1:1", "::1]:1"}) {
    EXPECT_EQ(read(text), "none") << text;
  }
}

}  // namespace
}  // namespace tarnd::netconf
