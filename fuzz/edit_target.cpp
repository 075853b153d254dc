// Any text as changes of a small card, one after the other in one transaction; lines of five equal
// signs separate them. A change that is refused or undone leaves no trace, and the committed
// configuration reads back the same.

#include <optional>
#include <string_view>
#include <vector>

#include "fuzz/property.h"
#include "fuzz/small_card.h"
#include "fuzz/target.h"
#include "standalone/store/transaction.h"
#include "tests/support/change_text.h"
#include "tests/support/model.h"

namespace tarnd::fuzz {
namespace {

using store::Datastore;
using store::Format;
using store::Transaction;

constexpr std::string_view kSeparator = "\n=====\n";

std::vector<std::string> changes_in(std::string_view text) {
  std::vector<std::string> changes;
  for (;;) {
    const std::size_t end = text.find(kSeparator);
    changes.emplace_back(text.substr(0, end));
    if (end == std::string_view::npos) return changes;
    text.remove_prefix(end + kSeparator.size());
  }
}

// A change in JSON is recognised by its first character.
Format format_of_change(const std::string& change) {
  const std::size_t first = change.find_first_not_of(" \t\r\n");
  return first != std::string::npos && change[first] == '{' ? Format::kJson : Format::kXml;
}

/// The card after the changes.
struct Outcome {
  std::string configuration;
  std::string changes;

  friend bool operator==(const Outcome&, const Outcome&) = default;
};

// No value if a change is refused.
std::optional<Outcome> edited(Transaction& transaction, const std::vector<std::string>& changes) {
  try {
    for (const std::string& change : changes) transaction.edit(change, format_of_change(change));
    transaction.prepare();
  } catch (const InputError&) {
    return std::nullopt;
  }
  return Outcome{transaction.datastore().print(Format::kXml), test::change_text(transaction)};
}

std::optional<Outcome> edited_and_given_up(Datastore& datastore,
                                           const std::vector<std::string>& changes) {
  const std::string before = datastore.print(Format::kXml);
  std::optional<Outcome> outcome;
  {
    Transaction transaction(datastore);
    outcome = edited(transaction, changes);
  }
  require(datastore.print(Format::kXml) == before, "an edit that is given up leaves no trace");
  return outcome;
}

void require_whole_difference(Datastore& datastore, const Outcome& outcome) {
  Transaction transaction(datastore);
  transaction.replace(outcome.configuration, Format::kXml);
  transaction.prepare();
  require(test::change_text(transaction) == outcome.changes,
          "the changes of the edits are those of the whole difference:\n" + outcome.changes +
              "---\n" + test::change_text(transaction));
}

void require_committed(Datastore& datastore, const std::vector<std::string>& changes,
                       const Outcome& outcome) {
  {
    Transaction transaction(datastore);
    require(edited(transaction, changes) == outcome, "edits made again make the same");
    transaction.commit();
  }
  require(datastore.print(Format::kXml) == outcome.configuration, "a commit keeps the edits");
}

void require_read_back(const Datastore& datastore) {
  const std::string text = datastore.print(Format::kXml);
  Datastore again(test::model());
  again.load(text, Format::kXml);
  require(again.print(Format::kXml) == text, "a configuration in XML reads back as it was");
  again.load(datastore.print(Format::kJson), Format::kJson);
  require(again.print(Format::kXml) == text, "a configuration in JSON reads back as it was");
}

Datastore& running_card() {
  static const auto datastore = [] {
    auto loaded = std::make_unique<Datastore>(test::model());
    loaded->load(small_card(), Format::kXml);
    return loaded;
  }();
  return *datastore;
}

void try_changes(const std::vector<std::string>& changes) {
  Datastore& datastore = running_card();
  const std::optional<Outcome> outcome = edited_and_given_up(datastore, changes);
  if (!outcome.has_value()) return;
  require_whole_difference(datastore, *outcome);
  require_committed(datastore, changes, *outcome);
  require_read_back(datastore);
  datastore.load(small_card(), Format::kXml);
}

}  // namespace
}  // namespace tarnd::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  tarnd::fuzz::try_changes(tarnd::fuzz::changes_in(text));
  return 0;
}
