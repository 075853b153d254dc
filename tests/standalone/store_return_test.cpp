// Commits that are taken back together.

#include <gtest/gtest.h>

#include "standalone/store/transaction.h"
#include "tests/standalone/small_edits.h"
#include "tests/support/model.h"

namespace tarnd::store {
namespace {

using test::config;

// Edits that come one after the other; "WHOLE" replaces the configuration.
struct Row {
  const char* name;
  std::vector<std::string> edits;
};

const std::vector<Row>& rows() {
  static const std::vector<Row> table = {
      {"created, changed, deleted",
       {port("3", "create", "1"), port("3", "merge", "2"), port("3", "delete", "2")}},
      {"deleted, created, changed",
       {port("1", "delete", "1"), port("1", "create", "2"), port("1", "merge", "3")}},
      {"there and back", {port("1", "merge", "2"), port("1", "merge", "1")}},
      {"inside what was created",
       {link("<onu><id>9</id><description>b</description></onu>"),
        link("<onu><id>9</id><description>c</description></onu>"),
        link("<onu nc:operation=\"delete\"><id>9</id></onu><onu><id>4</id></onu>")}},
      {"around what was changed",
       {link("<onu><id>1</id><description>b</description></onu>"),
        "<interface nc:operation=\"delete\"/>", link("<onu><id>7</id></onu>")}},
      {"a whole configuration in between",
       {port("1", "delete", "1"), "WHOLE", port("9", "create", "1")}},
      {"a whole configuration last", {port("1", "merge", "8"), port("4", "create", "1"), "WHOLE"}},
      {"two whole ones", {"WHOLE", port("9", "create", "1"), "WHOLE"}},
      {"a default",
       {link("<upstream-fec>false</upstream-fec>"),
        link("<upstream-fec nc:operation=\"delete\"/>")}},
  };
  return table;
}

class ReturnTest : public ::testing::Test {
 protected:
  ReturnTest() { datastore_.load(config(kLoaded), Format::kXml); }

  [[nodiscard]] std::string text() const { return datastore_.print(Format::kXml); }
  static void apply(Transaction& transaction, const std::string& edit) {
    if (edit == "WHOLE") {
      transaction.replace(config("<service-port><id>7</id></service-port>"), Format::kXml);
    } else {
      transaction.edit(config(edit), Format::kXml);
    }
  }
  [[nodiscard]] std::string committed(const Transaction& transaction) const {
    const CommittedSight sight(transaction);
    return text();
  }

  Datastore datastore_{test::model()};
};

// Of each row so many edits are committed, and the others are edits when it goes back.
TEST_F(ReturnTest, GoesBackToWhatWasCommittedThen) {
  const std::string loaded = text();
  for (const Row& row : rows()) {
    for (std::size_t commits = 0; commits <= row.edits.size(); ++commits) {
      SCOPED_TRACE(std::string(row.name) + ", " + std::to_string(commits) + " commits");
      Transaction transaction(datastore_);
      transaction.set_return();
      for (std::size_t at = 0; at < row.edits.size(); ++at) {
        apply(transaction, row.edits[at]);
        if (at < commits) transaction.commit();
      }
      const std::string edited = text();
      const bool was_edited = transaction.is_edited();
      transaction.go_back();
      EXPECT_FALSE(transaction.has_return());
      EXPECT_EQ(text(), was_edited ? edited : loaded);
      EXPECT_EQ(committed(transaction), loaded);
      transaction.prepare();
      EXPECT_EQ(transaction.changes() != nullptr, was_edited && edited != loaded);
      transaction.discard();
      EXPECT_EQ(text(), loaded);
    }
  }
}

TEST_F(ReturnTest, WhatWentBackCanBeCommittedAgain) {
  Transaction transaction(datastore_);
  transaction.set_return();
  apply(transaction, port("3", "create", "1"));
  transaction.commit();
  apply(transaction, port("4", "create", "1"));
  const std::string edited = text();
  transaction.go_back();
  transaction.commit();
  EXPECT_EQ(committed(transaction), edited);
  apply(transaction, port("5", "create", "1"));
  transaction.discard();
  EXPECT_EQ(text(), edited);
}

TEST_F(ReturnTest, ASecondReturnIsTheFirst) {
  const std::string loaded = text();
  Transaction transaction(datastore_);
  transaction.set_return();
  apply(transaction, port("3", "create", "1"));
  transaction.commit();
  transaction.set_return();
  apply(transaction, port("4", "create", "1"));
  transaction.commit();
  transaction.go_back();
  EXPECT_EQ(text(), loaded);
}

TEST_F(ReturnTest, WithoutAReturnCommitsStay) {
  Transaction transaction(datastore_);
  transaction.set_return();
  apply(transaction, port("3", "create", "1"));
  transaction.commit();
  const std::string first = text();
  transaction.forget_return();
  transaction.go_back();
  EXPECT_EQ(text(), first);
  apply(transaction, port("4", "create", "1"));
  transaction.discard();
  EXPECT_EQ(text(), first);
}

}  // namespace
}  // namespace tarnd::store
