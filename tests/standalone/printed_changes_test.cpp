#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "standalone/report/changes.h"
#include "standalone/store/transaction.h"
#include "tests/support/model.h"
#include "tests/support/own_model.h"
#include "tests/support/random_content.h"

namespace tarnd::store {
namespace {

using nlohmann::json;

// What the changes of gponval print, turned back into edits. What goes is deleted first, since a
// node that comes can end another case of its choice.
class EditsOfPrintedChanges {
 public:
  [[nodiscard]] std::vector<KeypathEdit> all() const {
    std::vector<KeypathEdit> edits = deletions_;
    edits.insert(edits.end(), sets_.begin(), sets_.end());
    return edits;
  }

 protected:
  void erase(const std::string& path) { deletions_.push_back({Operation::kDelete, path}); }
  void set(const std::string& path) { sets_.push_back({Operation::kMerge, path}); }

 private:
  std::vector<KeypathEdit> deletions_;
  std::vector<KeypathEdit> sets_;
};

class EditsOfJson : public EditsOfPrintedChanges {
 public:
  explicit EditsOfJson(const std::string& text) {
    for (const json& change : json::parse(text)) {
      if (change.at("op") == "delete") {
        erase(change.at("path"));
      } else {
        set(change.at("path"), change.at("new"));
      }
    }
  }

 private:
  void set(const std::string& path, const json& value) {
    EditsOfPrintedChanges::set(path + (value.is_string() ? "=" + value.get<std::string>() : ""));
    if (!value.is_object()) return;
    for (const auto& [inside, of] : value.items()) set(path + "/" + inside, of);
  }
};

class EditsOfText : public EditsOfPrintedChanges {
 public:
  explicit EditsOfText(const std::string& text) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) take(line.front(), line.substr(2));
  }

 private:
  void take(char sign, const std::string& rest) {
    const std::size_t indent = rest.find_first_not_of(' ');
    if (sign == '-') {
      if (indent == 0) erase(path_in(rest));
      return;
    }
    if (indent == 0) outermost_ = path_in(rest);
    const std::string path = indent == 0 ? outermost_ : outermost_ + "/" + path_in(rest.substr(4));
    const std::size_t colon = rest.find(": ");
    if (colon == std::string::npos) return set(path);
    const std::string value = rest.substr(colon + 2);
    const std::size_t arrow = sign == '~' ? value.find(" -> ") + 4 : 0;
    set(path + "=" + value_in(value.substr(arrow)));
  }

  static std::string path_in(const std::string& text) { return text.substr(0, text.find(": ")); }
  static std::string value_in(const std::string& text) {
    return text.front() == '"' ? json::parse(text).get<std::string>() : text;
  }

  std::string outermost_;
};

std::string in_json(const Transaction& transaction) {
  std::ostringstream out;
  report::print_changes_json(out, transaction.changes());
  return out.str();
}

std::string in_text(const Transaction& transaction) {
  std::ostringstream out;
  report::print_changes_text(out, transaction.changes(), false);
  return out.str();
}

struct Printed {
  std::string as_json;
  std::string as_text;
};

Printed printed_changes(const Schema& schema, const std::string& from, const std::string& to) {
  Datastore datastore(schema);
  datastore.load(from, Format::kXml);
  Transaction transaction(datastore);
  transaction.replace(to, Format::kXml);
  transaction.prepare();
  return {in_json(transaction), in_text(transaction)};
}

// What still differs from `to` once the edits are applied to `from`.
std::string difference_after(const Schema& schema, const std::string& from, const std::string& to,
                             const std::vector<KeypathEdit>& edits) {
  Datastore datastore(schema);
  datastore.load(from, Format::kXml);
  {
    Transaction transaction(datastore);
    for (const KeypathEdit& edit : edits) transaction.edit(edit);
    transaction.prepare();
    transaction.commit();
  }
  Transaction transaction(datastore);
  transaction.replace(to, Format::kXml);
  transaction.prepare();
  return in_text(transaction);
}

void expect_to_lead_there(const Schema& schema, const std::string& from, const std::string& to) {
  const Printed printed = printed_changes(schema, from, to);
  for (const EditsOfPrintedChanges& edits : {EditsOfPrintedChanges(EditsOfJson(printed.as_json)),
                                             EditsOfPrintedChanges(EditsOfText(printed.as_text))}) {
    try {
      EXPECT_EQ(difference_after(schema, from, to, edits.all()), "") << printed.as_text;
    } catch (const InputError& error) {
      ADD_FAILURE() << error.what() << "\n" << printed.as_text << from << "\n" << to;
    }
  }
}

TEST(PrintedChangesTest, LeadFromOneRandomConfigurationToAnother) {
  const test::OwnModel model(test::kModelOfRules);
  const Schema schema(model.folder());
  int different = 0;
  for (unsigned seed = 0; seed < 300 && !::testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    Datastore datastore(schema);
    test::RandomContent content(seed, {});
    const std::string from = content.load_into(datastore);
    const std::string to = content.load_into(datastore);
    different += from != to ? 1 : 0;
    expect_to_lead_there(schema, from, to);
  }
  EXPECT_GT(different, 100);
}

std::string text_of(const std::string& example) {
  std::ostringstream text;
  text << std::ifstream(std::string(TARND_EXAMPLES_DIR) + "/" + example).rdbuf();
  return text.str();
}

TEST(PrintedChangesTest, LeadFromAnEmptyCardToATownAndBack) {
  const std::string town = text_of("town.xml");
  const std::string empty = text_of("empty.xml");
  expect_to_lead_there(test::model(), empty, town);
  expect_to_lead_there(test::model(), town, empty);
}

}  // namespace
}  // namespace tarnd::store
