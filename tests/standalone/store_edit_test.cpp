#include <gtest/gtest.h>

#include "standalone/store/transaction.h"
#include "tests/support/model.h"

namespace tarnd::store {
namespace {

using test::config;

class StoreEditTest : public ::testing::Test {
 protected:
  StoreEditTest() : datastore_(test::model()) {}

  void running(const std::string& content) { datastore_.load(config(content), Format::kXml); }

  void apply(const std::string& change) {
    Transaction transaction(datastore_);
    transaction.edit(config(change), Format::kXml);
    transaction.prepare();
    transaction.commit();
  }

  // The error's text, empty if the change was applied. In both cases the datastore must be as
  // before afterwards.
  std::string refusal(const std::string& change) {
    const std::string before = text();
    std::string what;
    try {
      Transaction transaction(datastore_);
      transaction.edit(config(change), Format::kXml);
      transaction.prepare();
    } catch (const InputError& error) {
      what = error.what();
    }
    EXPECT_EQ(text(), before);
    return what;
  }

  [[nodiscard]] std::string text() const { return datastore_.print(Format::kXml); }
  [[nodiscard]] bool has(const std::string& path) const {
    return datastore_.find(*Path::parse(datastore_.schema(), path, nullptr)) != nullptr;
  }
  [[nodiscard]] std::string value(const std::string& path) const {
    const lyd_node* leaf = datastore_.find(*Path::parse(datastore_.schema(), path, nullptr));
    return leaf != nullptr ? std::string(value_text(leaf)) : "(none)";
  }

  Datastore datastore_;
};

const std::string kPort7 =
    "<service-port><id>7</id><gpon><id>1/1/1</id><onu><id>1</id><gem><gem-id>1</gem-id></gem>"
    "</onu></gpon></service-port>";
const std::string kPort9 = "<service-port><id>9</id></service-port>";

TEST_F(StoreEditTest, AnEmptyDatastoreHasTheTopLevelContainer) {
  EXPECT_TRUE(has("/config"));
  EXPECT_TRUE(has("/config/profile/gpon"));
}

TEST_F(StoreEditTest, MergeIsTheDefaultAndAddsAnEntry) {
  running(kPort9);
  apply(kPort7);
  EXPECT_EQ(value("/config/service-port{7}/gpon/onu/gem/gem-id"), "1");
  EXPECT_TRUE(has("/config/service-port{9}"));
}

TEST_F(StoreEditTest, MergeChangesALeafAndKeepsTheOthers) {
  running(kPort7);
  apply("<service-port><id>7</id><upstream-rate>100</upstream-rate></service-port>");
  EXPECT_EQ(value("/config/service-port{7}/upstream-rate"), "100");
  EXPECT_EQ(value("/config/service-port{7}/gpon/id"), "1/1/1");
}

TEST_F(StoreEditTest, CreateRefusesWhatExists) {
  running(kPort7);
  EXPECT_EQ(refusal("<service-port nc:operation=\"create\"><id>7</id></service-port>"),
            "cannot create /config/service-port{7}: it exists already");
}

TEST_F(StoreEditTest, DeleteRefusesWhatDoesNotExist) {
  running(kPort7);
  EXPECT_EQ(refusal("<service-port nc:operation=\"delete\"><id>8</id></service-port>"),
            "cannot delete /config/service-port{8}: it does not exist");
  EXPECT_EQ(refusal("<service-port><id>7</id><upstream-rate nc:operation=\"delete\"/>"
                    "</service-port>"),
            "cannot delete /config/service-port{7}/upstream-rate: it does not exist");
}

TEST_F(StoreEditTest, RemoveTakesBothAsTheyAre) {
  running(kPort7);
  apply(
      "<service-port nc:operation=\"remove\"><id>8</id></service-port>"
      "<service-port nc:operation=\"remove\"><id>7</id></service-port>");
  EXPECT_FALSE(has("/config/service-port{7}"));
}

TEST_F(StoreEditTest, ReplaceDropsWhatTheEditLeavesOut) {
  running(
      "<service-port><id>7</id><upstream-rate>5</upstream-rate>"
      "<downstream-rate>6</downstream-rate></service-port>");
  apply(
      "<service-port nc:operation=\"replace\"><id>7</id><upstream-rate>5</upstream-rate>"
      "</service-port>");
  EXPECT_EQ(value("/config/service-port{7}/upstream-rate"), "5");
  EXPECT_FALSE(has("/config/service-port{7}/downstream-rate"));
}

TEST_F(StoreEditTest, ReplaceOfAContainerClearsIt) {
  running("<profile><gpon><media-profile><name>m</name></media-profile></gpon></profile>" + kPort7);
  apply(
      "<profile nc:operation=\"replace\"><gpon><media-profile><name>n</name></media-profile>"
      "</gpon></profile>");
  EXPECT_FALSE(has("/config/profile/gpon/media-profile{m}"));
  EXPECT_TRUE(has("/config/profile/gpon/media-profile{n}"));
  EXPECT_TRUE(has("/config/service-port{7}"));
}

TEST_F(StoreEditTest, ADeletedLeafFallsBackToItsDefault) {
  const std::string link =
      "<interface><gpon><chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>1</port-id>";
  running(link + "<upstream-fec>false</upstream-fec></gpon></interface>");
  apply(link + "<upstream-fec nc:operation=\"delete\"/></gpon></interface>");
  EXPECT_EQ(value("/config/interface/gpon{1 1 1}/upstream-fec"), "true");
  EXPECT_EQ(text().find("upstream-fec"), std::string::npos);
}

TEST_F(StoreEditTest, ANewEntryHasItsDefaults) {
  apply(
      "<interface><gpon><chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>1</port-id>"
      "</gpon></interface>");
  EXPECT_EQ(value("/config/interface/gpon{1 1 1}/downstream-fec"), "true");
}

TEST_F(StoreEditTest, ANodeOfOneCaseEndsTheOtherCase) {
  running(kPort7);
  apply("<service-port><id>7</id><xgspon><id>1/1/2</id></xgspon></service-port>");
  EXPECT_FALSE(has("/config/service-port{7}/gpon"));
  EXPECT_EQ(value("/config/service-port{7}/xgspon/id"), "1/1/2");
}

TEST_F(StoreEditTest, ANewEntryHasNoEmptyContainerOfACaseThatIsNotInUse) {
  running(kPort7);
  apply("<service-port><id>9</id><gpon nc:operation='merge'/></service-port>");
  EXPECT_FALSE(has("/config/service-port{9}/gpon"));
  apply("<service-port nc:operation='delete'><id>7</id></service-port>");
  apply("<service-port><id>7</id><gpon><id nc:operation='remove'>1/1/1</id></gpon></service-port>");
  EXPECT_FALSE(has("/config/service-port{7}/gpon"));
}

TEST_F(StoreEditTest, NodesOfTwoCasesInOneEditAreRefused) {
  EXPECT_EQ(refusal("<service-port><id>7</id><xgspon><id>1/1/2</id></xgspon>"
                    "<gpon><id>1/1/2</id></gpon></service-port>"),
            "'xgspon' and 'gpon' exclude each other below /config/service-port{7}");
}

TEST_F(StoreEditTest, OperationsInsideANewEntryApply) {
  EXPECT_EQ(refusal("<service-port><id>7</id><upstream-rate nc:operation=\"delete\"/>"
                    "</service-port>"),
            "cannot delete /config/service-port{7}/upstream-rate: it does not exist");
  apply(
      "<service-port nc:operation=\"create\"><id>7</id>"
      "<upstream-rate nc:operation=\"create\">5</upstream-rate></service-port>");
  EXPECT_EQ(value("/config/service-port{7}/upstream-rate"), "5");
}

TEST_F(StoreEditTest, AMissingMandatoryLeafIsRefused) {
  const std::string what = refusal(
      "<profile><gpon><line-profile><name>l</name><tcont><id>1</id></tcont></line-profile>"
      "</gpon></profile>");
  EXPECT_NE(what.find("bandwidth-profile"), std::string::npos) << what;
}

TEST_F(StoreEditTest, ADeletedMandatoryLeafIsRefused) {
  running(
      "<profile><gpon><line-profile><name>l</name><tcont><id>1</id>"
      "<bandwidth-profile>b</bandwidth-profile></tcont></line-profile></gpon></profile>");
  const std::string what = refusal(
      "<profile><gpon><line-profile><name>l</name><tcont><id>1</id>"
      "<bandwidth-profile nc:operation=\"delete\"/></tcont></line-profile></gpon></profile>");
  EXPECT_NE(what.find("bandwidth-profile"), std::string::npos) << what;
}

TEST_F(StoreEditTest, WhatTheModelDoesNotKnowIsRefused) {
  EXPECT_NE(refusal("<no-such-node/>").find("no-such-node"), std::string::npos);
  EXPECT_NE(refusal("<service-port><id>7</id><match><vlan><vlan-id>5000</vlan-id></vlan></match>"
                    "</service-port>")
                .find("5000"),
            std::string::npos);
  EXPECT_NE(refusal("<service-port/>"), "");
  EXPECT_NE(refusal("<service-port><id>7</id>"), "");
  EXPECT_NE(refusal("<service-port nc:operation=\"destroy\"><id>7</id></service-port>"), "");
}

TEST_F(StoreEditTest, LeafListValuesComeAndGoOneByOne) {
  const std::string head =
      "<profile><gpon><service-profile><name>s</name><vlan-mapping><name>m</name><uni>";
  const std::string tail = "</uni></vlan-mapping></service-profile></gpon></profile>";
  running(head + "<ethernet>1</ethernet><ethernet>2</ethernet>" + tail);
  apply(head + "<ethernet nc:operation=\"delete\">1</ethernet><ethernet>3</ethernet>" + tail);
  EXPECT_FALSE(has("/config/profile/gpon/service-profile{s}/vlan-mapping{m}/uni/ethernet{1}"));
  EXPECT_TRUE(has("/config/profile/gpon/service-profile{s}/vlan-mapping{m}/uni/ethernet{2}"));
  EXPECT_TRUE(has("/config/profile/gpon/service-profile{s}/vlan-mapping{m}/uni/ethernet{3}"));
}

TEST_F(StoreEditTest, EntriesAreInKeyOrderAfterInsertionInAnyOrder) {
  running("<service-port><id>30</id></service-port><service-port><id>4</id></service-port>");
  apply("<service-port><id>100</id></service-port><service-port><id>5</id></service-port>");
  const auto entries =
      datastore_.entries(datastore_.root(), *datastore_.schema().root().child("service-port"));
  std::vector<std::string> ids;
  for (const lyd_node* entry : entries) ids.emplace_back(value_text(lyd_child(entry)));
  EXPECT_EQ(ids, (std::vector<std::string>{"4", "5", "30", "100"}));
  const std::string printed = text();
  EXPECT_LT(printed.find("<id>5</id>"), printed.find("<id>30</id>"));
  EXPECT_LT(printed.find("<id>30</id>"), printed.find("<id>100</id>"));
}

TEST_F(StoreEditTest, LeafListValuesAreInOrderAfterInsertionInAnyOrder) {
  const auto mapping = [](const std::string& values) {
    return "<profile><gpon><service-profile><name>s</name><vlan-mapping><name>m</name><uni>" +
           values + "</uni></vlan-mapping></service-profile></gpon></profile>";
  };
  const auto stand_in_order = [&](const std::vector<std::string>& values) {
    const std::string printed = text();
    std::size_t at = 0;
    for (const std::string& value : values) {
      const std::size_t found = printed.find("<ethernet>" + value + "</ethernet>");
      EXPECT_NE(found, std::string::npos) << value;
      EXPECT_GE(found, at) << printed;
      at = found;
    }
  };
  running(mapping("<ethernet>10</ethernet><ethernet>9</ethernet>"));
  stand_in_order({"9", "10"});
  apply(mapping("<ethernet>8</ethernet><ethernet>200</ethernet>"));
  stand_in_order({"8", "9", "10", "200"});
  const std::string before = text();
  {
    Transaction transaction(datastore_);
    transaction.edit(config(mapping("<ethernet nc:operation=\"delete\">9</ethernet>")),
                     Format::kXml);
    transaction.prepare();
    stand_in_order({"8", "10", "200"});
  }
  EXPECT_EQ(text(), before);
}

TEST_F(StoreEditTest, SeveralEditsMakeOneTransaction) {
  running(kPort7);
  Transaction transaction(datastore_);
  transaction.edit(config("<service-port nc:operation=\"delete\"><id>7</id></service-port>"),
                   Format::kXml);
  transaction.edit(config(kPort7), Format::kXml);
  transaction.edit(config("<service-port nc:operation=\"create\"><id>8</id></service-port>"),
                   Format::kXml);
  transaction.edit(config("<service-port nc:operation=\"delete\"><id>8</id></service-port>"),
                   Format::kXml);
  transaction.prepare();
  EXPECT_EQ(transaction.changes(), nullptr);
}

TEST_F(StoreEditTest, WhatIsNotCommittedIsTakenBack) {
  running(kPort7 + kPort9);
  const std::string before = text();
  {
    Transaction transaction(datastore_);
    transaction.edit(
        config("<service-port nc:operation=\"delete\"><id>9</id></service-port>"
               "<service-port><id>7</id><upstream-rate>1</upstream-rate><xgspon><id>x</id></xgspon>"
               "</service-port><service-port><id>1</id></service-port>"),
        Format::kXml);
    transaction.edit(config("<service-port nc:operation=\"delete\"><id>7</id></service-port>"
                            "<service-port><id>9</id><admin-enabled>true</admin-enabled>"
                            "</service-port>"),
                     Format::kXml);
    transaction.prepare();
    EXPECT_NE(text(), before);
  }
  EXPECT_EQ(text(), before);
  EXPECT_TRUE(has("/config/service-port{9}"));
}

TEST_F(StoreEditTest, AWholeNewConfigurationReplacesTheOldOne) {
  running(kPort7 + kPort9);
  const std::string before = text();
  {
    Transaction transaction(datastore_);
    transaction.replace(config(kPort9), Format::kXml);
    transaction.prepare();
    EXPECT_FALSE(has("/config/service-port{7}"));
  }
  EXPECT_EQ(text(), before);
  Transaction transaction(datastore_);
  transaction.replace(config(kPort9), Format::kXml);
  transaction.prepare();
  transaction.commit();
  EXPECT_FALSE(has("/config/service-port{7}"));
}

std::string bandwidth_profile(const std::string& traffic) {
  return "<profile><gpon><bandwidth-profile><name>b</name><traffic>" + traffic +
         "</traffic></bandwidth-profile></gpon></profile>";
}

// The model requires the assured bandwidth, too.
const std::string kIncomplete = bandwidth_profile("<type-3><maximum>9</maximum></type-3>");
const std::string kComplete =
    bandwidth_profile("<type-3><assured>3</assured><maximum>9</maximum></type-3>");

// An edit can make a configuration invalid that was valid when it was read.
TEST_F(StoreEditTest, AnInvalidEditOfAWholeNewConfigurationIsRefused) {
  running(kPort7);
  const std::string before = text();
  {
    Transaction transaction(datastore_);
    transaction.replace(config(kPort9), Format::kXml);
    transaction.edit(config(kIncomplete), Format::kXml);
    EXPECT_THROW(transaction.prepare(), InputError);
  }
  EXPECT_EQ(text(), before);
}

TEST_F(StoreEditTest, AnEditCanMakeAWholeNewConfigurationInvalid) {
  running(kPort7);
  const std::string before = text();
  {
    Transaction transaction(datastore_);
    transaction.replace(config(kComplete), Format::kXml);
    transaction.edit(config(bandwidth_profile("<type-3><assured nc:operation=\"delete\"/>"
                                              "</type-3>")),
                     Format::kXml);
    EXPECT_THROW(transaction.prepare(), InputError);
  }
  EXPECT_EQ(text(), before);
}

TEST_F(StoreEditTest, AWholeNewConfigurationCanBeEdited) {
  running(kPort7);
  Transaction transaction(datastore_);
  transaction.replace(config(kPort9), Format::kXml);
  transaction.edit(config(kComplete), Format::kXml);
  transaction.prepare();
  transaction.commit();
  EXPECT_FALSE(has("/config/service-port{7}"));
  EXPECT_TRUE(has("/config/service-port{9}"));
  EXPECT_EQ(value("/config/profile/gpon/bandwidth-profile{b}/traffic/type-3/assured"), "3");
}

TEST_F(StoreEditTest, AWholeNewConfigurationReplacesEarlierEdits) {
  running(kPort7);
  Transaction transaction(datastore_);
  transaction.edit(config(kIncomplete + "<service-port><id>8</id></service-port>"), Format::kXml);
  transaction.replace(config(kPort9), Format::kXml);
  transaction.prepare();
  transaction.commit();
  EXPECT_FALSE(has("/config/profile/gpon/bandwidth-profile{b}"));
  EXPECT_FALSE(has("/config/service-port{7}"));
  EXPECT_FALSE(has("/config/service-port{8}"));
  EXPECT_TRUE(has("/config/service-port{9}"));
}

TEST_F(StoreEditTest, TheLastWholeNewConfigurationCounts) {
  running(kPort7);
  const std::string before = text();
  {
    Transaction transaction(datastore_);
    transaction.replace(config(kComplete), Format::kXml);
    transaction.edit(config(kPort7), Format::kXml);
    transaction.replace(config(kPort9), Format::kXml);
    transaction.prepare();
    EXPECT_FALSE(has("/config/profile/gpon/bandwidth-profile{b}"));
    EXPECT_FALSE(has("/config/service-port{7}"));
    EXPECT_TRUE(has("/config/service-port{9}"));
  }
  EXPECT_EQ(text(), before);
}

TEST_F(StoreEditTest, AWholeNewConfigurationGivenUpAmongEditsLeavesTheOldOne) {
  running(kPort7 + kComplete);
  const std::string before = text();
  for (const std::string& edit : {kPort9, kIncomplete}) {
    {
      Transaction transaction(datastore_);
      transaction.edit(config(edit), Format::kXml);
      transaction.replace(config(kPort9), Format::kXml);
    }
    EXPECT_EQ(text(), before);
    {
      Transaction transaction(datastore_);
      transaction.edit(config(edit), Format::kXml);
      transaction.replace(config(kPort9), Format::kXml);
      transaction.edit(config(edit), Format::kXml);
    }
    EXPECT_EQ(text(), before);
  }
}

TEST_F(StoreEditTest, JsonChangesCarryOperationsAsMetadata) {
  running(kPort7);
  Transaction transaction(datastore_);
  transaction.edit(R"({"base:config": {"service-port": [{"id": 7, "upstream-rate": 4,
                       "match": {"vlan": {"vlan-id": 12}}},
                       {"id": 9, "admin-enabled": true}]}})",
                   Format::kJson);
  transaction.edit(R"({"base:config": {"service-port": [{"id": 7,
                       "upstream-rate": 4, "@upstream-rate": {"ietf-netconf:operation": "delete"}},
                       {"@": {"ietf-netconf:operation": "delete"}, "id": 9}]}})",
                   Format::kJson);
  transaction.prepare();
  EXPECT_FALSE(has("/config/service-port{7}/upstream-rate"));
  EXPECT_FALSE(has("/config/service-port{9}"));
  EXPECT_EQ(value("/config/service-port{7}/match/vlan/vlan-id"), "12");
}

TEST_F(StoreEditTest, AConfigurationWithEditOperationsIsRefused) {
  EXPECT_THROW(running("<service-port nc:operation=\"create\"><id>7</id></service-port>"),
               InputError);
}

TEST_F(StoreEditTest, ClearTextPasswordsAreStoredEncrypted) {
  const std::string head = "<profile><gpon><tr069-acs-profile><name>a</name><password>";
  const std::string tail = "</password></tr069-acs-profile></gpon></profile>";
  running(head + "$0$hunter2" + tail);
  const std::string stored = value("/config/profile/gpon/tr069-acs-profile{a}/password");
  EXPECT_EQ(stored.substr(0, 3), "$8$");
  EXPECT_EQ(text().find("hunter2"), std::string::npos);
  apply(head + "$0$other" + tail);
  EXPECT_NE(value("/config/profile/gpon/tr069-acs-profile{a}/password"), stored);
  EXPECT_EQ(text().find("other"), std::string::npos);
  EXPECT_NE(refusal(head + "bare" + tail), "");
}

}  // namespace
}  // namespace tarnd::store
