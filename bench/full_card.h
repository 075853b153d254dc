#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "standalone/daemon/daemon.h"
#include "standalone/platform_calls.h"
#include "tools/gponval/generated_card.h"

namespace bench {

/// The limit of the benchmarks' cards; the rule's YANG form has the same number.
constexpr std::uint32_t kMostServicePorts = 20'000;

/// The size of one full card, or of several in one configuration. For example, four cards have four
/// times the links, the service ports and the profiles of every kind.
gponval::CardSize full_cards(std::uint32_t cards);

/// The configuration as XML. Its ONUs are identified by serial number, so that every rule applies.
std::string card_text(const gponval::CardSize& size);

/// An edit with this content inside `config`.
std::string change(std::string_view content);

/// Service ports on the first ONU, each with its own VLAN; `operation` is one such as "delete".
std::string added_ports(int count, std::string_view operation = "");

/// A change of the card and the change that undoes it.
struct Edit {
  std::string change;
  std::string back;
};

/// Joins them to one.
Edit joined(const std::vector<Edit>& edits);

/// The processor time of the work in milliseconds, without that of other programs.
double milliseconds(const std::function<void()>& work);

/// The smallest of several figures, which is the least disturbed.
double fastest(int runs, const std::function<double()>& once);

/// The most memory that the process ever had, in MB.
double peak_megabytes();

/// Runs the work in its own process and waits for it; its output keeps its place.
void in_own_process(const std::function<void()>& work);

/// A card in a daemon with the plug-in. Each measured commit is undone, so that the next one has
/// the same card.
class Card {
 public:
  explicit Card(const std::string& text);
  /// The same with other entry points than the plug-in's own.
  Card(const std::string& text, const tarnd::PluginEntryPoints& plugin);

  /// The time of the loading in the constructor.
  [[nodiscard]] double load_milliseconds() const { return load_; }

  /// The commit's own steps: edit, validation by the model, changes, affected points, undo.
  double steps(const Edit& edit);
  /// The whole commit. Throws std::runtime_error if it is not accepted.
  double commit(const Edit& edit, const std::vector<std::string>& only = {});
  /// The plug-in's part of it, from the prepared transaction to the verdict.
  double answers(const Edit& edit, const std::vector<std::string>& only = {});
  /// Commits a whole configuration, in place of the card's or merged into it, without undoing it.
  double replace_for_good(const std::string& text);
  double merge_for_good(const std::string& text);
  /// The platform calls of one request.
  tarnd::CallCounts calls(const Edit& edit, const std::string& request);
  /// The answer of one request to an edit, which is kept if it was accepted.
  tarnd::CommitResult verdict(const std::string& edit, const std::string& request);
  /// Applies an edit without calling the plug-in, and keeps it.
  void apply(const std::string& edit);
  /// The configuration as XML.
  [[nodiscard]] std::string text() const;

 private:
  tarnd::CommitReport decide(tarnd::store::Transaction& transaction,
                             const std::vector<std::string>& only);

  tarnd::store::Schema schema_;
  tarnd::store::Datastore datastore_;
  std::unique_ptr<tarnd::Daemon> daemon_;
  double load_ = 0;
};

}  // namespace bench
