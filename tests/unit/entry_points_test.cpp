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

}  // namespace
}  // namespace tarnd::test
