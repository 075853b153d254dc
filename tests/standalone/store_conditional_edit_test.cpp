// Edits that are kept only if a test says so, and edits of which only a part can be applied.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "standalone/store/transaction.h"
#include "tests/standalone/small_edits.h"
#include "tests/support/model.h"

namespace tarnd::store {
namespace {

using test::config;
using ::testing::HasSubstr;

struct Row {
  const char* name;
  std::string before;  // edits that stay
  std::string edit;
};

const std::vector<Row>& rows() {
  static const std::vector<Row> table = {
      {"nothing before", "", port("1", "delete", "1") + port("3", "merge", "5")},
      {"created before, changed", port("3", "create", "1"), port("3", "merge", "2")},
      {"created before, deleted", port("3", "create", "1"), port("3", "delete", "2")},
      {"changed before, deleted", port("1", "merge", "7"), port("1", "delete", "2")},
      {"changed before, changed", port("1", "merge", "7"), port("1", "merge", "1")},
      {"deleted before, created", port("1", "delete", "1"), port("1", "create", "1")},
      {"deleted before, created otherwise", port("1", "delete", "1"), port("1", "create", "2")},
      {"replaced before, replaced", port("1", "replace", "3"), port("1", "replace", "4")},
      {"inside what was created", link("<onu><id>9</id><description>b</description></onu>"),
       link("<onu><id>9</id><description nc:operation=\"delete\"/></onu>")},
      {"around what was edited", link("<onu><id>1</id><description>b</description></onu>"),
       link("<onu nc:operation=\"delete\"><id>1</id></onu><onu><id>8</id></onu>"
            "<onu><id>7</id></onu>")},
      {"a list out of order", link("<onu><id>9</id></onu><onu><id>5</id></onu>"),
       "<interface><gpon nc:operation=\"delete\"><chassis-id>1</chassis-id><slot-id>1</slot-id>"
       "<port-id>3</port-id></gpon></interface>"},
      {"everything", port("3", "create", "1"), "EVERYTHING"},
      {"a default", link("<upstream-fec>false</upstream-fec>"),
       link("<upstream-fec nc:operation=\"delete\"/>")},
  };
  return table;
}

std::string edit_of(const Row& row) {
  if (row.edit != "EVERYTHING") return config(row.edit);
  return "<config xmlns=\"urn:tarnd:base\" "
         "xmlns:nc=\"urn:ietf:params:xml:ns:netconf:base:1.0\" nc:operation=\"remove\"/>";
}

class ConditionalEditTest : public ::testing::Test {
 protected:
  ConditionalEditTest() { datastore_.load(config(kLoaded), Format::kXml); }

  [[nodiscard]] std::string text() const { return datastore_.print(Format::kXml); }

  Datastore datastore_{test::model()};
};

TEST_F(ConditionalEditTest, AnEditThatIsNotKeptLeavesTheEditsBefore) {
  const std::string loaded = text();
  for (const Row& row : rows()) {
    for (const bool throws : {false, true}) {
      SCOPED_TRACE(std::string(row.name) + (throws ? ", thrown" : ""));
      Transaction transaction(datastore_);
      if (!row.before.empty()) transaction.edit(config(row.before), Format::kXml);
      const std::string before = text();
      std::string within;
      const auto test = [&] {
        transaction.prepare();
        within = text();
        if (throws) throw std::runtime_error("no");
        return false;
      };
      if (throws) {
        EXPECT_THROW(transaction.edit_if(edit_of(row), Format::kXml, test), std::runtime_error);
      } else {
        transaction.edit_if(edit_of(row), Format::kXml, test);
      }
      EXPECT_NE(within, before);
      EXPECT_EQ(text(), before);
      EXPECT_EQ(transaction.is_edited(), !row.before.empty());
      transaction.prepare();
      EXPECT_EQ(transaction.changes() != nullptr, !row.before.empty());
      {
        const CommittedSight sight(transaction);
        EXPECT_EQ(text(), loaded);
      }
      transaction.discard();
      EXPECT_EQ(text(), loaded);
    }
  }
}

TEST_F(ConditionalEditTest, AnEditThatIsKeptIsAnEdit) {
  for (const Row& row : rows()) {
    SCOPED_TRACE(row.name);
    std::string plain;
    {
      Transaction transaction(datastore_);
      if (!row.before.empty()) transaction.edit(config(row.before), Format::kXml);
      transaction.edit(edit_of(row), Format::kXml);
      plain = text();
    }
    Transaction transaction(datastore_);
    if (!row.before.empty()) transaction.edit(config(row.before), Format::kXml);
    transaction.edit_if(edit_of(row), Format::kXml, [] { return true; });
    EXPECT_EQ(text(), plain);
  }
}

TEST_F(ConditionalEditTest, WhatWasNotKeptIsNotCommitted) {
  Transaction transaction(datastore_);
  transaction.edit(config(port("3", "create", "1")), Format::kXml);
  const std::string before = text();
  transaction.edit_if(config(port("1", "delete", "1")), Format::kXml, [] { return false; });
  transaction.commit();
  EXPECT_EQ(text(), before);
  transaction.edit(config(port("1", "merge", "8")), Format::kXml);
  transaction.discard();
  EXPECT_EQ(text(), before);
}

TEST_F(ConditionalEditTest, AnEditThatCannotBeAppliedIsNotTested) {
  Transaction transaction(datastore_);
  const std::string before = text();
  EXPECT_THROW(transaction.edit_if(config(port("1", "create", "1")), Format::kXml,
                                   []() -> bool { throw std::logic_error("tested"); }),
               InputError);
  EXPECT_EQ(text(), before);
}

TEST_F(ConditionalEditTest, AppliesWhatFitsAndReturnsTheRest) {
  Transaction transaction(datastore_);
  const auto failures = transaction.edit_what_fits(
      config(port("1", "create", "4") + port("2", "delete", "1") + port("3", "create", "4") +
             port("9", "delete", "1") +
             link("<onu><id>1</id><description nc:operation=\"create\">c</description></onu>"
                  "<onu><id>4</id></onu>")),
      Format::kXml);
  ASSERT_EQ(failures.size(), 3U);
  EXPECT_EQ(failures[0].fault(), InputFault::kExists);
  EXPECT_THAT(failures[0].what(), HasSubstr("description"));
  EXPECT_EQ(failures[1].fault(), InputFault::kExists);
  EXPECT_THAT(failures[1].what(), HasSubstr("service-port{1}"));
  EXPECT_EQ(failures[2].fault(), InputFault::kMissing);
  EXPECT_THAT(failures[2].what(), HasSubstr("service-port{9}"));
  Datastore expected(test::model());
  expected.load(config("<service-port><id>1</id><upstream-rate>1</upstream-rate></service-port>"
                       "<service-port><id>3</id><upstream-rate>4</upstream-rate></service-port>" +
                       link("<onu><id>1</id><description>a</description></onu><onu><id>2</id></onu>"
                            "<onu><id>4</id></onu>")),
                Format::kXml);
  EXPECT_EQ(text(), expected.print(Format::kXml));
}

TEST_F(ConditionalEditTest, NothingFitsOfWhatIsNoEdit) {
  Transaction transaction(datastore_);
  const std::string before = text();
  EXPECT_THROW(
      transaction.edit_what_fits(config(port("3", "create", "4") + "<nix/>"), Format::kXml),
      InputError);
  EXPECT_EQ(text(), before);
  EXPECT_FALSE(transaction.is_edited());
}

}  // namespace
}  // namespace tarnd::store
