// What a state keeps of commits brings back each configuration, byte for byte.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "netconf/state/edit_text.h"
#include "netconf/state/journal.h"
#include "netconf/state/snapshots.h"
#include "tests/netconf/state_file.h"
#include "tests/support/model.h"
#include "tests/support/own_model.h"
#include "tests/support/random_content.h"

namespace tarnd::netconf::state {
namespace {

using store::Datastore;
using store::Format;
using store::Transaction;

std::string xml(const Datastore& datastore) {
  return datastore.print(Format::kXml);
}

// Commits what a transaction has, and keeps how the configuration then is.
class History {
 public:
  explicit History(Datastore& datastore) : datastore_(datastore), journal_(file_.name()) {
    journal_.begin(datastore, {});
    texts_.push_back(xml(datastore));
  }

  void commit(Transaction& transaction) {
    Commit commit;
    commit.changes = transaction.item_changes();
    store_and_do(commit, [&] { transaction.commit(); });
  }

  void go_back(Transaction& transaction) {
    Commit commit;
    commit.kind = Kind::kReturn;
    commit.changes = transaction.changes_to_go_back();
    store_and_do(commit, [&] { transaction.go_back(); });
  }

  void expect_all_restored() {
    for (Number number = 1; number <= journal_.newest(); ++number) {
      Datastore again(datastore_.schema());
      restore(journal_.connection(), again, number);
      ASSERT_EQ(xml(again), texts_.at(static_cast<std::size_t>(number) - 1)) << number;
    }
  }

  /// The commits before are then reached backwards.
  void keep_newest() {
    if (journal_.newest() == 1) return;
    keep_snapshot(journal_.connection(), journal_.newest(), snapshot_text(datastore_), 1);
    journal_.connection().run("DELETE FROM snapshots WHERE number = 1");
  }

  [[nodiscard]] std::size_t size() const { return texts_.size(); }

 private:
  template <typename Do>
  void store_and_do(const Commit& commit, Do action) {
    const std::string before = texts_.back();
    journal_.record(commit, std::nullopt);
    action();
    const std::string after = xml(datastore_);
    EXPECT_EQ(commit.changes.empty(), after == before) << before << "\n" << after;
    if (!commit.changes.empty()) texts_.push_back(after);
  }

  StateFile file_;
  Datastore& datastore_;
  Journal journal_;
  std::vector<std::string> texts_;
};

// Edits until one leaves a valid configuration.
void edit_somehow(Transaction& transaction, test::RandomContent& edits, unsigned seed) {
  const lysc_node* root = transaction.datastore().schema().root().lysc;
  for (int attempt = 0; attempt < 20; ++attempt) {
    try {
      const std::string text = test::config(edits.of(root));
      if (seed % 5 == 4 && attempt == 0) {
        transaction.replace(text, Format::kXml);
      } else {
        transaction.edit(text, Format::kXml);
      }
      transaction.prepare();
      return;
    } catch (const InputError&) {
      transaction.discard();
    }
  }
}

TEST(StateReplayTest, RandomCommitsAreRestoredForwardsAndBackwards) {
  const test::OwnModel model(test::kModelOfRules);
  const store::Schema schema(model.folder());
  std::size_t commits = 0;
  for (unsigned seed = 0; seed < 150; ++seed) {
    SCOPED_TRACE(seed);
    Datastore datastore(schema);
    // Few values, so that many are set to their default, and meet again.
    test::RandomContent contents(seed, {.values = 6});
    test::RandomContent edits(seed + 1000, {.values = 6, .mistakes = 1000, .operations = true});
    contents.load_into(datastore);
    History history(datastore);
    {
      Transaction transaction(datastore);
      for (unsigned number = 0; number < 8; ++number) {
        if (number == 4) transaction.set_return();
        edit_somehow(transaction, edits, seed + number);
        history.commit(transaction);
        if (number == 5) history.go_back(transaction);
      }
    }
    history.expect_all_restored();
    history.keep_newest();
    history.expect_all_restored();
    commits += history.size() - 1;
  }
  EXPECT_GT(commits, 100U);
}

std::string acs(const std::string& password) {
  return "<profile><gpon><tr069-acs-profile><name>acs</name><username>u</username>"
         "<password>" +
         password + "</password></tr069-acs-profile></gpon></profile>";
}

std::string link(const std::string& content) {
  return "<interface><gpon><chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>3</port-id>" +
         content + "</gpon></interface>";
}

std::string mapped(const std::string& values) {
  return "<profile><gpon><service-profile><name>s</name><vlan-mapping><name>m</name><match><outer>"
         "<vlan-id>10</vlan-id></outer></match><uni>" +
         values + "</uni></vlan-mapping></service-profile></gpon></profile>";
}

TEST(StateReplayTest, EachKindOfChangeIsRestored) {
  const std::string edits[] = {
      link("<upstream-fec>true</upstream-fec>"),
      link("<upstream-fec nc:operation='delete'/>"),
      link("<onu><id>1</id><description>&lt;a&gt; &amp; \"b\"  é</description>"
           "<snmp><real-time/></snmp></onu>"),
      link("<onu><id>1</id><snmp nc:operation='delete'/></onu>"),
      link("<onu nc:operation='replace'><id>1</id></onu><onu><id>2</id></onu>"),
      acs("$0$secret"),
      acs("$0$other"),
      mapped("<ethernet>3</ethernet><ethernet>1</ethernet>"),
      mapped("<ethernet>2</ethernet><ethernet nc:operation='delete'>3</ethernet>"),
      "<service-port><id>10</id><gpon><id>1/1/1</id><onu><id>1</id></onu></gpon></service-port>",
      "<service-port><id>10</id><xgspon><id>1/1/1</id></xgspon></service-port>",
      "<service-port><id>9</id></service-port>",
      "<service-port nc:operation='delete'><id>10</id></service-port>",
      "<interface nc:operation='delete'/>",
  };
  Datastore datastore(test::model());
  datastore.load(test::config(""), Format::kXml);
  History history(datastore);
  {
    Transaction transaction(datastore);
    for (const std::string& edit : edits) {
      transaction.edit(test::config(edit), Format::kXml);
      transaction.prepare();
      history.commit(transaction);
    }
  }
  EXPECT_EQ(history.size(), std::size(edits) + 1);
  history.expect_all_restored();
  history.keep_newest();
  history.expect_all_restored();
}

TEST(StateReplayTest, AChangeNamesEachItemOnce) {
  Datastore datastore(test::model());
  datastore.load(test::config(link("<onu><id>1</id><description>a</description></onu>")),
                 Format::kXml);
  Transaction transaction(datastore);
  transaction.edit(test::config(link("<upstream-fec>true</upstream-fec>"
                                     "<onu nc:operation='delete'><id>1</id></onu>")),
                   Format::kXml);
  transaction.prepare();
  const std::string at = "/config/interface/gpon{1 1 3}";
  const std::vector<store::ItemChange> expected = {
      {at + "/upstream-fec", std::nullopt, "true"},
      {at + "/onu{1}", "", std::nullopt},
      {at + "/onu{1}/description", "a", std::nullopt},
  };
  EXPECT_EQ(transaction.item_changes(), expected);
  const std::string begin =
      "<config xmlns=\"urn:tarnd:base\" xmlns:nc=\"urn:ietf:params:xml:ns:netconf:base:1.0\">"
      "<interface><gpon><chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>3</port-id>";
  const std::string end = "</gpon></interface></config>";
  const std::vector<std::string> texts = {
      begin + "<upstream-fec nc:operation=\"remove\"/>" + end,
      begin + "<onu><id>1</id><description>a</description></onu>" + end};
  EXPECT_EQ(edit_texts(test::model(), store::reversed(expected)), texts);
}

TEST(StateReplayTest, AContainerThatGoesAndComesBackIsOneChangeOfEachLeaf) {
  const std::string port = "<service-port><id>7</id><gpon><id>1/1/1</id></gpon></service-port>";
  Datastore datastore(test::model());
  datastore.load(test::config(port), Format::kXml);
  Transaction transaction(datastore);
  transaction.edit(
      test::config("<service-port><id>7</id><gpon nc:operation='replace'><id>1/1/2</id>"
                   "</gpon></service-port>"),
      Format::kXml);
  transaction.prepare();
  const std::vector<store::ItemChange> expected = {
      {"/config/service-port{7}/gpon/id", "1/1/1", "1/1/2"}};
  EXPECT_EQ(transaction.item_changes(), expected);
}

TEST(StateReplayTest, EncryptedLeavesAreKeptEncrypted) {
  Datastore datastore(test::model());
  Transaction transaction(datastore);
  transaction.edit(test::config(acs("$0$cl34r")), Format::kXml);
  transaction.prepare();
  for (const store::ItemChange& change : transaction.item_changes()) {
    EXPECT_EQ(change.after.value_or("").find("cl34r"), std::string::npos);
    if (change.path.ends_with("/password")) {
      EXPECT_EQ(change.after.value_or("").substr(0, 3), "$8$");
    }
  }
}

}  // namespace
}  // namespace tarnd::netconf::state
