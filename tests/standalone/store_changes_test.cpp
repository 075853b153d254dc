#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "standalone/store/transaction.h"
#include "tests/support/model.h"

namespace tarnd::store {
namespace {

using test::config;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// One line for each change: "+" created, "-" deleted, "~" changed, then the path.
void describe(const Change& change, std::vector<std::string>& lines) {
  const lyd_node* node = change.after != nullptr ? change.after : change.before;
  if (change.schema->kind == NodeKind::kLeafList) {
    std::string values;
    for (const lyd_node* value : change.values_before) {
      values += " " + std::string(value_text(value));
    }
    values += " ->";
    for (const lyd_node* value : change.values_after) {
      values += " " + std::string(value_text(value));
    }
    lines.push_back("~ " + change.schema->name + values);
    return;
  }
  const char* sign = change.before == nullptr ? "+ " : change.after == nullptr ? "- " : "~ ";
  if (change.children.empty()) {
    // A deleted entry is no longer in a tree.
    lines.push_back(sign + (change.after != nullptr ? path_of(node) : change.schema->name));
  }
  for (const Change& child : change.children) describe(child, lines);
}

class StoreChangesTest : public ::testing::Test {
 protected:
  StoreChangesTest() : datastore_(test::model()) {}

  void running(const std::string& content) { datastore_.load(config(content), Format::kXml); }

  std::vector<std::string> changes(const std::string& change) {
    Transaction transaction(datastore_);
    transaction.edit(config(change), Format::kXml);
    transaction.prepare();
    return described(transaction);
  }

  std::vector<std::string> changes_by_replacing(const std::string& configuration) {
    Transaction transaction(datastore_);
    transaction.replace(config(configuration), Format::kXml);
    transaction.prepare();
    return described(transaction);
  }

  static std::vector<std::string> described(const Transaction& transaction) {
    std::vector<std::string> lines;
    if (transaction.changes() != nullptr) describe(*transaction.changes(), lines);
    return lines;
  }

  Path path(const std::string& text) const {
    return *Path::parse(datastore_.schema(), text, nullptr);
  }

  Datastore datastore_;
};

std::string port(int id, const std::string& content = "") {
  return "<service-port><id>" + std::to_string(id) + "</id>" + content + "</service-port>";
}

std::string deleted_port(int id) {
  return "<service-port nc:operation=\"delete\"><id>" + std::to_string(id) + "</id></service-port>";
}

std::string link(const std::string& content) {
  return "<interface><gpon><chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>1</port-id>" +
         content + "</gpon></interface>";
}

TEST_F(StoreChangesTest, ANewEntryIsOneCreation) {
  EXPECT_THAT(changes(port(3, "<upstream-rate>5</upstream-rate>")),
              ElementsAre("+ /config/service-port{3}"));
}

TEST_F(StoreChangesTest, ADeletedEntryIsOneDeletion) {
  running(port(3, "<upstream-rate>5</upstream-rate>"));
  EXPECT_THAT(changes(deleted_port(3)), ElementsAre("- service-port"));
}

TEST_F(StoreChangesTest, AChangedLeafIsReportedBelowItsEntry) {
  running(port(3, "<upstream-rate>5</upstream-rate>"));
  EXPECT_THAT(changes(port(3, "<upstream-rate>6</upstream-rate>")),
              ElementsAre("~ /config/service-port{3}/upstream-rate"));
}

TEST_F(StoreChangesTest, ALeafSetToItsValueIsNoChange) {
  running(port(3, "<upstream-rate>5</upstream-rate>"));
  EXPECT_THAT(changes(port(3, "<upstream-rate>5</upstream-rate>")), IsEmpty());
}

TEST_F(StoreChangesTest, ALeafSetToTheDefaultInEffectIsNoChange) {
  running(link(""));
  EXPECT_THAT(changes(link("<upstream-fec>true</upstream-fec>")), IsEmpty());
}

TEST_F(StoreChangesTest, ALeafThatFallsBackToAnotherDefaultIsAChange) {
  running(link("<upstream-fec>false</upstream-fec>"));
  EXPECT_THAT(changes(link("<upstream-fec nc:operation=\"delete\"/>")),
              ElementsAre("~ /config/interface/gpon{1 1 1}/upstream-fec"));
}

TEST_F(StoreChangesTest, ALeafThatFallsBackToTheSameDefaultIsNoChange) {
  running(link("<upstream-fec>true</upstream-fec>"));
  EXPECT_THAT(changes(link("<upstream-fec nc:operation=\"delete\"/>")), IsEmpty());
}

TEST_F(StoreChangesTest, AnEntryDeletedAndCreatedAgainIsAtMostChanged) {
  running(port(3, "<upstream-rate>5</upstream-rate><downstream-rate>1</downstream-rate>"));
  Transaction transaction(datastore_);
  transaction.edit(config(deleted_port(3)), Format::kXml);
  transaction.edit(config(port(3,
                               "<upstream-rate>6</upstream-rate>"
                               "<downstream-rate>1</downstream-rate>")),
                   Format::kXml);
  transaction.prepare();
  EXPECT_THAT(described(transaction), ElementsAre("~ /config/service-port{3}/upstream-rate"));
}

TEST_F(StoreChangesTest, AnEntryCreatedAndDeletedAgainIsNoChange) {
  Transaction transaction(datastore_);
  transaction.edit(config(port(3)), Format::kXml);
  transaction.edit(config(deleted_port(3)), Format::kXml);
  transaction.prepare();
  EXPECT_THAT(described(transaction), IsEmpty());
}

TEST_F(StoreChangesTest, AnEditedEntryThatIsDeletedIsOneDeletion) {
  running(port(3, "<upstream-rate>5</upstream-rate>"));
  Transaction transaction(datastore_);
  transaction.edit(config(port(3, "<upstream-rate>6</upstream-rate>")), Format::kXml);
  transaction.edit(config(deleted_port(3)), Format::kXml);
  transaction.prepare();
  EXPECT_THAT(described(transaction), ElementsAre("- service-port"));
}

TEST_F(StoreChangesTest, ChangesComeInModelAndKeyOrder) {
  running(port(30) + port(4));
  EXPECT_THAT(
      changes(port(100) + deleted_port(30) + port(5) + link("") + deleted_port(4)),
      ElementsAre("+ /config/interface/gpon{1 1 1}", "- service-port", "+ /config/service-port{5}",
                  "- service-port", "+ /config/service-port{100}"));
}

TEST_F(StoreChangesTest, AnEmptyContainerIsNoChange) {
  running(link("<onu><id>1</id></onu>"));
  EXPECT_THAT(changes(link("<onu><id>1</id><rg-override/></onu>")), IsEmpty());
}

TEST_F(StoreChangesTest, ALeafListIsOneChange) {
  const std::string head =
      "<profile><gpon><service-profile><name>s</name><vlan-mapping><name>m</name><uni>";
  const std::string tail = "</uni></vlan-mapping></service-profile></gpon></profile>";
  running(head + "<ethernet>1</ethernet><ethernet>2</ethernet>" + tail);
  EXPECT_THAT(
      changes(head + "<ethernet nc:operation=\"delete\">1</ethernet><ethernet>3</ethernet>" + tail),
      ElementsAre("~ ethernet 1 2 -> 2 3"));
}

TEST_F(StoreChangesTest, AReplacedEntryReportsOnlyWhatDiffers) {
  running(port(3, "<upstream-rate>5</upstream-rate><downstream-rate>1</downstream-rate>"));
  EXPECT_THAT(changes("<service-port nc:operation=\"replace\"><id>3</id>"
                      "<upstream-rate>5</upstream-rate></service-port>"),
              ElementsAre("- downstream-rate"));
}

TEST_F(StoreChangesTest, AWholeNewConfigurationReportsOnlyWhatDiffers) {
  const std::string fec = "<upstream-fec>false</upstream-fec>";
  running(port(1) + port(2, "<upstream-rate>5</upstream-rate>") + port(3) + link(fec));
  EXPECT_THAT(changes_by_replacing(port(2, "<upstream-rate>6</upstream-rate>") + port(3) + port(4) +
                                   link("")),
              ElementsAre("~ /config/interface/gpon{1 1 1}/upstream-fec", "- service-port",
                          "~ /config/service-port{2}/upstream-rate", "+ /config/service-port{4}"));
}

TEST_F(StoreChangesTest, AnEditedWholeNewConfigurationReportsBoth) {
  running(port(1) + port(2, "<upstream-rate>5</upstream-rate>") + port(3));
  Transaction transaction(datastore_);
  transaction.replace(config(port(2, "<upstream-rate>6</upstream-rate>") + port(3)), Format::kXml);
  transaction.edit(config(deleted_port(3) + port(4)), Format::kXml);
  transaction.prepare();
  EXPECT_THAT(described(transaction),
              ElementsAre("- service-port", "~ /config/service-port{2}/upstream-rate",
                          "- service-port", "+ /config/service-port{4}"));
}

TEST_F(StoreChangesTest, EditsBeforeAWholeNewConfigurationAreNotReported) {
  running(port(1));
  Transaction transaction(datastore_);
  transaction.edit(config(port(2) + deleted_port(1)), Format::kXml);
  transaction.replace(config(port(1) + port(3)), Format::kXml);
  transaction.prepare();
  EXPECT_THAT(described(transaction), ElementsAre("+ /config/service-port{3}"));
}

TEST_F(StoreChangesTest, OfTwoWholeNewConfigurationsTheLastIsReported) {
  running(port(1));
  Transaction transaction(datastore_);
  transaction.replace(config(port(2)), Format::kXml);
  transaction.replace(config(port(1) + port(3)), Format::kXml);
  transaction.prepare();
  EXPECT_THAT(described(transaction), ElementsAre("+ /config/service-port{3}"));
}

TEST_F(StoreChangesTest, TheCommittedConfigurationIsReadAsItWas) {
  running(port(1) + port(2, "<upstream-rate>5</upstream-rate>") + port(3));
  Transaction transaction(datastore_);
  transaction.edit(config(port(2, "<upstream-rate>6</upstream-rate>") + deleted_port(3) + port(4)),
                   Format::kXml);
  transaction.prepare();
  const lyd_node* rate = transaction.committed(path("/config/service-port{2}/upstream-rate"));
  ASSERT_NE(rate, nullptr);
  EXPECT_EQ(value_text(rate), "5");
  EXPECT_NE(transaction.committed(path("/config/service-port{1}")), nullptr);
  EXPECT_NE(transaction.committed(path("/config/service-port{3}")), nullptr);
  EXPECT_EQ(transaction.committed(path("/config/service-port{4}")), nullptr);
  EXPECT_EQ(transaction.committed_entries(path("/config/service-port")), 3U);
}

TEST_F(StoreChangesTest, TheCommittedConfigurationIsReadBelowDeletedAndReplacedNodes) {
  running(link("<onu><id>1</id><description>old</description></onu><onu><id>2</id></onu>"));
  Transaction transaction(datastore_);
  transaction.edit(config("<interface><gpon nc:operation=\"delete\"><chassis-id>1</chassis-id>"
                          "<slot-id>1</slot-id><port-id>1</port-id></gpon></interface>"),
                   Format::kXml);
  transaction.prepare();
  EXPECT_NE(transaction.committed(path("/config/interface/gpon{1 1 1}/onu{1}/description")),
            nullptr);
  EXPECT_EQ(transaction.committed_entries(path("/config/interface/gpon{1 1 1}/onu")), 2U);
  EXPECT_EQ(transaction.committed_entries(path("/config/interface/gpon")), 1U);

  transaction.edit(config(link("<onu><id>1</id><description>new</description></onu>")),
                   Format::kXml);
  const lyd_node* text =
      transaction.committed(path("/config/interface/gpon{1 1 1}/onu{1}/description"));
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(value_text(text), "old");
  EXPECT_EQ(transaction.committed_entries(path("/config/interface/gpon{1 1 1}/onu")), 2U);
}

TEST_F(StoreChangesTest, TheCommittedConfigurationIsReadUnderAWholeNewOne) {
  running(port(1) + port(2));
  Transaction transaction(datastore_);
  transaction.replace(config(port(3)), Format::kXml);
  transaction.prepare();
  EXPECT_EQ(transaction.committed_entries(path("/config/service-port")), 2U);
  EXPECT_NE(transaction.committed(path("/config/service-port{1}")), nullptr);
  EXPECT_EQ(transaction.committed(path("/config/service-port{3}")), nullptr);
}

TEST_F(StoreChangesTest, AnImpossibleEntryWasNeverCommitted) {
  running(port(1));
  Transaction transaction(datastore_);
  EXPECT_EQ(transaction.committed(path("/config/service-port{}")), nullptr);
}

}  // namespace
}  // namespace tarnd::store
