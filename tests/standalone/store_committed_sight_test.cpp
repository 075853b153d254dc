#include <gtest/gtest.h>

#include "standalone/store/path.h"
#include "standalone/store/transaction.h"
#include "tests/support/model.h"

namespace tarnd::store {
namespace {

using test::config;

constexpr const char* kPort =
    "<service-port><id>1</id><upstream-rate>1</upstream-rate></service-port>";

std::string operation_on_port(const std::string& operation) {
  return config("<service-port nc:operation=\"" + operation +
                "\"><id>1</id><upstream-rate>2</upstream-rate></service-port>");
}

class CommittedSightTest : public ::testing::Test {
 protected:
  CommittedSightTest() { datastore_.load(config(kPort), Format::kXml); }

  // The rate of service port 1; "none" if the port does not exist.
  [[nodiscard]] std::string rate() const {
    const lyd_node* leaf = datastore_.find(
        *Path::parse(datastore_.schema(), "/config/service-port{1}/upstream-rate", nullptr));
    return leaf != nullptr ? std::string(value_text(leaf)) : "none";
  }

  Datastore datastore_{test::model()};
};

TEST_F(CommittedSightTest, ShowsWhatIsCommittedAndThenTheEditsAgain) {
  struct Row {
    const char* operation;
    const char* edited;
  };
  for (const Row& row : {Row{"merge", "2"}, Row{"replace", "2"}, Row{"delete", "none"}}) {
    SCOPED_TRACE(row.operation);
    Transaction transaction(datastore_);
    transaction.edit(operation_on_port(row.operation), Format::kXml);
    EXPECT_EQ(rate(), row.edited);
    {
      const CommittedSight sight(transaction);
      EXPECT_EQ(rate(), "1");
    }
    EXPECT_EQ(rate(), row.edited);
  }
}

TEST_F(CommittedSightTest, ShowsTheOldTreeOfAReplacedConfiguration) {
  Transaction transaction(datastore_);
  transaction.replace(config(""), Format::kXml);
  transaction.edit(config("<service-port><id>2</id></service-port>"), Format::kXml);
  {
    const CommittedSight sight(transaction);
    EXPECT_EQ(rate(), "1");
  }
  EXPECT_EQ(rate(), "none");
}

TEST_F(CommittedSightTest, ATransactionGoesOnAfterItsCommit) {
  Transaction transaction(datastore_);
  EXPECT_FALSE(transaction.is_edited());
  transaction.edit(operation_on_port("merge"), Format::kXml);
  EXPECT_TRUE(transaction.is_edited());
  transaction.prepare();
  transaction.commit();
  EXPECT_FALSE(transaction.is_edited());
  transaction.edit(operation_on_port("delete"), Format::kXml);
  transaction.discard();
  EXPECT_EQ(rate(), "2");
}

TEST_F(CommittedSightTest, AReplacementThatCannotBeReadLeavesTheEdits) {
  Transaction transaction(datastore_);
  transaction.edit(operation_on_port("merge"), Format::kXml);
  EXPECT_THROW(transaction.replace(config("<wrong/>"), Format::kXml), InputError);
  EXPECT_EQ(rate(), "2");
}

}  // namespace
}  // namespace tarnd::store
