#include <string>
#include <vector>

#include "gpon_card_valid.h"
#include "tests/support/card_fixture.h"
#include "tests/support/recorded_calls.h"

namespace tarnd::test {
namespace {

using Names = std::vector<std::string>;

class EntryPoints : public CardFixture {};

TEST_F(EntryPoints, TheSocketIsAskedForBeforeTheRequestIsLookedUp) {
  const RecordedCalls recorded;
  EXPECT_THAT(request("no_such_request", "/config/service-port"), Accepted());
  EXPECT_EQ(recorded.names(), Names{"qzconfd_maapi_socket_get"});
}

TEST_F(EntryPoints, TheNameThatIsLookedUpIsTheOneAfterTheSocketWasFetched) {
  ValidationSession& session = open();
  session.begin_request("no_such_request");
  std::string other = "interface_gpon_validation";
  set_call_hook([&](PlatformCall call) {
    if (call == PlatformCall::qzconfd_maapi_socket_get) tctx()->validate_opaque = other.data();
    return true;
  });
  validate(tctx(), nullptr, nullptr);
  set_call_hook({});
  EXPECT_EQ(calls(PlatformCall::maapi_num_instances), 1U);
}

}  // namespace
}  // namespace tarnd::test
