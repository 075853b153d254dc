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

/// What a card of the benchmarks allows for; the rule's YANG form has the same number.
constexpr std::uint32_t kMostServicePorts = 20'000;

/// One full card, or as many of them in one configuration: four times the links, the service ports
/// and the profiles of every kind.
gponval::CardSize full_cards(std::uint32_t cards);

/// The configuration as XML, its ONUs known by their serial numbers, so that every rule applies.
std::string card_text(const gponval::CardSize& size);

/// An edit with this content inside `config`.
std::string change(std::string_view content);

/// Service ports on the first ONU, each with a VLAN of its own, `operation` such as "delete".
std::string added_ports(int count, std::string_view operation = "");

/// A change of the card and what takes it back.
struct Edit {
  std::string change;
  std::string back;
};

/// All of them as one.
Edit joined(const std::vector<Edit>& edits);

/// The processor time of the work in milliseconds: what other programs do at the same time does not
/// count.
double milliseconds(const std::function<void()>& work);

/// The smallest of the figures: what it takes undisturbed.
double fastest(int runs, const std::function<double()>& once);

/// The most memory that the process ever had, in MB.
double peak_megabytes();

/// Runs the work in a process of its own and waits for it; what it prints comes in order.
void in_own_process(const std::function<void()>& work);

/// A card in a daemon with the plug-in. Each measured commit is taken back, so that the next one
/// meets the same card.
class Card {
 public:
  explicit Card(const std::string& text);

  /// Of the constructor's loading.
  [[nodiscard]] double load_milliseconds() const { return load_; }

  /// The commit's own steps: edit, validation by the model, changes, affected points, taking back.
  double steps(const Edit& edit);
  /// Edit to committed. Throws std::runtime_error where the commit is not accepted.
  double commit(const Edit& edit, const std::vector<std::string>& only = {});
  /// The plug-in's part of it: from the prepared transaction to the verdict.
  double answers(const Edit& edit, const std::vector<std::string>& only = {});
  /// Commits a whole configuration in place of the card's, or merged into it, for good.
  double replace_for_good(const std::string& text);
  double merge_for_good(const std::string& text);
  /// The platform calls of one request.
  tarnd::CallCounts calls(const Edit& edit, const std::string& request);
  /// What one request says to an edit, which stands afterwards where it was accepted.
  tarnd::CommitResult verdict(const std::string& edit, const std::string& request);
  /// Applies an edit for good, without asking the plug-in.
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
