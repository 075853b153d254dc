#include "standalone/store/validity.h"

#include <gtest/gtest.h>

#include <map>

#include "standalone/store/libyang_compat.h"
#include "standalone/store/transaction.h"
#include "tests/support/model.h"
#include "tests/support/own_model.h"
#include "tests/support/random_content.h"

namespace tarnd::store {
namespace {

using test::config;
using test::ContentKind;
using test::kModelOfRules;
using test::OwnModel;
using test::RandomContent;
using TreeOwner = std::unique_ptr<lyd_node, decltype(&lyd_free_all)>;

TreeOwner parsed(const Schema& schema, const std::string& text) {
  lyd_node* tree = nullptr;
  const LY_ERR result = lyd_parse_data_mem(schema.context(), text.c_str(), LYD_XML,
                                           LYD_PARSE_ONLY | LYD_PARSE_STRICT, 0, &tree);
  EXPECT_EQ(result, LY_SUCCESS) << take_libyang_error(schema.context()) << "\n" << text;
  return {tree, lyd_free_all};
}

std::string refusal(const lyd_node* tree) {
  try {
    check_subtree(tree);
  } catch (const InputError& error) {
    return error.what();
  }
  return "";
}

std::string refusal(Transaction& transaction) {
  try {
    transaction.prepare();
  } catch (const InputError& error) {
    return error.what();
  }
  return "";
}

std::string refusal(const std::string& content) {
  return refusal(parsed(test::model(), config(content)).get());
}

std::string profile(const std::string& content) {
  return "<profile><gpon>" + content + "</gpon></profile>";
}

TEST(ValidityTest, NamesTheEntryThatLacksAMandatoryLeaf) {
  EXPECT_EQ(refusal(profile("<line-profile><name>gold</name><tcont><id>1</id></tcont>"
                            "</line-profile>")),
            "/config/profile/gpon/line-profile{gold}/tcont{1}: mandatory node 'bandwidth-profile' "
            "does not exist");
  EXPECT_EQ(refusal(profile("<bandwidth-profile><name>b</name><traffic><type-3><assured>1</assured>"
                            "</type-3></traffic></bandwidth-profile>")),
            "/config/profile/gpon/bandwidth-profile{b}/traffic/type-3: mandatory node 'maximum' "
            "does not exist");
}

TEST(ValidityTest, NamesTheNodesThatExcludeEachOther) {
  EXPECT_EQ(refusal("<service-port><id>7</id><gpon><id>1/1/1</id></gpon><xgspon><id>1/1/2</id>"
                    "</xgspon></service-port>"),
            "/config/service-port{7}: 'xgspon' and 'gpon' exclude each other");
}

TEST(ValidityTest, NamesWhatExistsTwice) {
  const std::string two = "<service-port><id>7</id></service-port>";
  EXPECT_EQ(refusal(two + "<service-port><id>8</id></service-port>" + two),
            "/config/service-port{7}: exists twice");
  EXPECT_EQ(refusal("<service-port><id>7</id><upstream-rate>1</upstream-rate>"
                    "<upstream-rate>2</upstream-rate></service-port>"),
            "/config/service-port{7}/upstream-rate: exists twice");
  EXPECT_EQ(refusal("<service-port><id>7</id><match/><match/></service-port>"),
            "/config/service-port{7}/match: exists twice");
  EXPECT_EQ(refusal(profile("<service-profile><name>s</name><vlan-mapping><name>m</name><uni>"
                            "<ethernet>2</ethernet><ethernet>1</ethernet><ethernet>2</ethernet>"
                            "</uni></vlan-mapping></service-profile>")),
            "/config/profile/gpon/service-profile{s}/vlan-mapping{m}/uni/ethernet{2}: exists "
            "twice");
}

TEST(ValidityTest, IgnoresAContainerOfACaseWithoutContent) {
  EXPECT_EQ(refusal(profile("<bandwidth-profile><name>b</name><traffic><type-3/></traffic>"
                            "</bandwidth-profile>")),
            "");
}

bool is_valid_for_libyang(const lyd_node* tree) {
  lyd_node* copy = nullptr;
  lyd_dup_single(tree, nullptr, LYD_DUP_RECURSIVE | LYD_DUP_WITH_FLAGS, &copy);
  const LY_ERR result = lyd_validate_all(&copy, nullptr, LYD_VALIDATE_PRESENT, nullptr);
  lyd_free_all(copy);
  return result == LY_SUCCESS;
}

// Both verdicts occur often.
void expect_both(unsigned refused, unsigned tries) {
  EXPECT_GT(refused, tries / 5);
  EXPECT_LT(refused, tries * 4 / 5);
}

TEST(ValidityTest, AgreesWithLibyangOnWholeConfigurations) {
  const OwnModel model(kModelOfRules);
  const Schema schema(model.folder());
  unsigned refused = 0;
  constexpr unsigned kConfigurations = 6000;
  for (unsigned seed = 0; seed < kConfigurations; ++seed) {
    const std::string text = config(RandomContent(seed, {}).of(schema.root().lysc));
    const TreeOwner tree = parsed(schema, text);
    const std::string what = refusal(tree.get());
    const bool valid = is_valid_for_libyang(tree.get());
    ASSERT_EQ(what.empty(), valid) << what << take_libyang_error(schema.context()) << "\n" << text;
    if (!valid) ++refused;
  }
  expect_both(refused, kConfigurations);
}

TEST(ValidityTest, AContainerOfACaseMustBeCompleteOnceTheCaseIsInUse) {
  const OwnModel model(
      "container config { list a { key k; leaf k { type int8; } choice c { case x {"
      "leaf o { type int8; } container needs { leaf n { type int8; mandatory true; } } } } } }");
  const Schema schema(model.folder());
  Datastore datastore(schema);
  {
    Transaction transaction(datastore);
    transaction.edit(config("<a><k>1</k><needs/></a>"), Format::kXml);
    transaction.prepare();
    transaction.commit();
  }
  Transaction transaction(datastore);
  transaction.edit(config("<a><k>1</k><o>1</o></a>"), Format::kXml);
  EXPECT_EQ(refusal(transaction), "/config/a{1}: mandatory node 'needs/n' does not exist");
}

// An edit removes the other cases of its own choice, but not those of a choice around its case.
std::string without_choice_in_case() {
  const std::string kInner = "choice inner";
  std::string model = kModelOfRules;
  return model.replace(model.find(kInner), kInner.size(), "container inner");
}

// The outcome of edits.
enum class Outcome { kNotTaken, kRefused, kValid };

// Compares the verdict of prepare() on the edits with libyang's verdict on the whole configuration.
Outcome edit(Datastore& datastore, const std::vector<std::string>& edits) {
  Transaction transaction(datastore);
  try {
    for (const std::string& text : edits) transaction.edit(text, Format::kXml);
  } catch (const InputError&) {
    return Outcome::kNotTaken;
  }
  const bool valid = is_valid_for_libyang(datastore.root());
  const std::string whole = refusal(datastore.root());
  EXPECT_EQ(whole.empty(), valid) << whole;
  try {
    transaction.prepare();
    transaction.commit();
    EXPECT_TRUE(valid) << take_libyang_error(datastore.schema().context());
    return Outcome::kValid;
  } catch (const InputError& error) {
    EXPECT_FALSE(valid) << error.what();
    return Outcome::kRefused;
  }
}

// Only the edits are checked, but the verdict is that on the whole configuration.
TEST(ValidityTest, AgreesWithLibyangOnEdits) {
  const OwnModel model(without_choice_in_case());
  const Schema schema(model.folder());
  constexpr ContentKind kRunning{.values = 4, .mistakes = 100'000};
  constexpr ContentKind kEdit{.values = 4, .mistakes = 100, .operations = true};
  std::map<Outcome, unsigned> outcomes;
  for (unsigned seed = 0; seed < 1000; ++seed) {
    Datastore datastore(schema);
    RandomContent(seed, kRunning).load_into(datastore);
    RandomContent content(seed, kEdit);
    for (unsigned transactions = 0; transactions < 5; ++transactions) {
      const std::string before = datastore.print(Format::kXml);
      std::vector<std::string> edits = {config(content.of(schema.root().lysc))};
      if (seed % 2 == 0) edits.push_back(config(content.of(schema.root().lysc)));
      ++outcomes[edit(datastore, edits)];
      ASSERT_FALSE(HasFailure()) << before << "\n" << edits.front() << "\n" << edits.back();
    }
  }
  EXPECT_GT(outcomes[Outcome::kRefused], 500U);
  EXPECT_GT(outcomes[Outcome::kValid], 500U);
}

}  // namespace
}  // namespace tarnd::store
