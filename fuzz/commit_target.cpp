// Bytes as a card and a few commits on it, as the daemon makes them. The same commit has the same
// verdict again, a commit that is not accepted changes nothing, and everything that a validator
// opened is closed.

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <optional>
#include <vector>

#include "fuzz/chosen_edit.h"
#include "fuzz/property.h"
#include "fuzz/small_card.h"
#include "fuzz/target.h"
#include "gpon_card_valid.h"
#include "standalone/card/card_file.h"
#include "standalone/confd/keypath.h"
#include "standalone/confd/validation_session.h"
#include "standalone/confd/values.h"
#include "standalone/daemon/daemon.h"
#include "standalone/middleware/trace.h"
#include "tests/support/model.h"

namespace tarnd::fuzz {
namespace {

using store::Format;
using store::Transaction;

constexpr std::size_t kMostCommits = 4;

// If this variable is set, the meaning of the bytes is printed, with the trace of the validators.
constexpr const char* kShow = "FUZZ_SHOW";

constexpr std::array kFlags = {std::optional<bool>(true), std::optional<bool>(false),
                               std::optional<bool>()};
constexpr std::array<std::optional<std::uint32_t>, 8> kFigures = {std::nullopt, 0, 1, 2, 3, 16, 128,
                                                                  4294967295U};

bool start_showing() {
  if (std::getenv(kShow) == nullptr) return false;
  start_trace(TraceLevel::kDetail);
  return true;
}

bool showing() {
  static const bool is_showing = start_showing();
  return is_showing;
}

CardDescription chosen_card(Choices& choices) {
  CardDescription card;
  card.bw_check = choices.of(kFlags);
  card.onus_per_link = choices.of(kFigures);
  card.pon_links = choices.of(kFigures);
  card.manageable_links = choices.of(kFigures);
  card.max_service_ports = choices.of(kFigures);
  card.xgspon = choices.of(kFlags);
  return card;
}

/// One commit, and whether the user goes on after an error and confirms warnings.
struct Commit {
  std::string change;
  bool all;
  bool confirm;
};

Commit chosen_commit(Choices& choices) {
  const bool all = choices.one_in(2);
  const bool confirm = choices.one_in(2);
  return {test::config(chosen_edit(choices, test::model())), all, confirm};
}

template <typename Value>
std::string shown(const std::optional<Value>& value) {
  return value.has_value() ? std::to_string(*value) : "-";
}

void show(const CardDescription& card) {
  std::cout << "card: bw-check " << shown(card.bw_check) << ", onus-per-link "
            << shown(card.onus_per_link) << ", pon-links " << shown(card.pon_links)
            << ", manageable-links " << shown(card.manageable_links) << ", max-service-ports "
            << shown(card.max_service_ports) << ", xgspon " << shown(card.xgspon) << std::endl;
}

void show(const Commit& commit) {
  std::cout << "commit" << (commit.all ? ", all" : "") << (commit.confirm ? ", confirmed" : "")
            << ": " << commit.change << std::endl;
}

void show(const CommitReport& report) {
  for (const Answer& answer : report.answers) {
    std::cout << "  " << to_string(answer.result) << ' ' << answer.request << ' ' << answer.path
              << ' ' << answer.text << std::endl;
  }
  std::cout << to_string(report.result) << std::endl;
}

// The lowest free number shows whether one more is in use.
int next_descriptor() {
  const int descriptor = open("/dev/null", O_RDONLY | O_CLOEXEC);
  close(descriptor);
  // cppcheck-suppress deallocret ; only the number is told
  return descriptor;
}

bool same(const Answer& left, const Answer& right) {
  return left.request == right.request && left.path == right.path && left.result == right.result &&
         left.text == right.text;
}

bool begins_with(const CommitReport& whole, const CommitReport& part) {
  return whole.answers.size() >= part.answers.size() &&
         std::equal(part.answers.begin(), part.answers.end(), whole.answers.begin(), same);
}

// A rejection by these leaves the cursors of its walk to the transaction.
int cursors_left_by(const Answer& answer) {
  if (answer.result != Verdict::kError) return 0;
  if (answer.request == "rg_profile_ssid_unique_check") return 1;
  return answer.request == "itf_grp_validation" ? 2 : 0;
}

/// The daemon of one card, with its configuration.
class Card {
 public:
  explicit Card(const CardDescription& description) : datastore_(test::model()) {
    insert_card(description);
    daemon_.emplace(datastore_,
                    PluginEntryPoints{&lib_init, &get_validation_point, &validate, &lib_finish});
    datastore_.load(small_card(), Format::kXml);
  }

  void try_commit(const Commit& commit) {
    const std::string before = text();
    const std::optional<CommitReport> report = committed(commit);
    if (!report.has_value()) return require_unchanged(before, "a refused edit");
    if (showing()) show(*report);
    const std::string after = text();
    if (report->result == CommitResult::kAccepted) {
      datastore_.load(before, Format::kXml);
    } else {
      require_unchanged(before, "a commit that is not accepted");
    }
    ask_alone(commit, *report);
    require_first_error_ends(commit, *report);
    require_same_again(commit, *report);
    require_unchanged(after, "the same commit again");
  }

 private:
  [[nodiscard]] std::string text() const { return datastore_.print(Format::kXml); }

  void require_unchanged(const std::string& before, const std::string& what) const {
    require(text() == before, what + " leaves the configuration:\n" + before + "---\n" + text());
  }

  // No value if the change is invalid by the model.
  std::unique_ptr<Transaction> edited(const Commit& commit) {
    auto transaction = std::make_unique<Transaction>(datastore_);
    try {
      transaction->edit(commit.change, Format::kXml);
      transaction->prepare();
    } catch (const InputError&) {
      transaction.reset();
    }
    return transaction;
  }

  std::optional<CommitReport> committed(const Commit& commit) {
    const std::unique_ptr<Transaction> transaction = edited(commit);
    if (transaction == nullptr) return std::nullopt;
    CommitOptions options;
    options.all = commit.all;
    options.confirm = [&](const std::vector<Answer>&) { return commit.confirm; };
    return daemon_->commit(*transaction, options);
  }

  void require_same_again(const Commit& commit, const CommitReport& report) {
    const std::optional<CommitReport> again = committed(commit);
    require(again.has_value() && again->result == report.result &&
                again->messages == report.messages && begins_with(*again, report) &&
                begins_with(report, *again),
            "the same commit has the same verdict");
  }

  // Up to the first error the answers are the same, whether the commit goes on after it or not.
  void require_first_error_ends(const Commit& commit, const CommitReport& report) {
    if (report.result != CommitResult::kRejected) return;
    Commit other = commit;
    other.all = !commit.all;
    const std::optional<CommitReport> otherwise = committed(other);
    require(otherwise.has_value() && otherwise->result == report.result &&
                (commit.all ? begins_with(report, *otherwise) : begins_with(*otherwise, report)),
            "the first error is the same with all of them");
  }

  // Each answer of the commit again, as a single request with its path.
  void ask_alone(const Commit& commit, const CommitReport& report) {
    const std::unique_ptr<Transaction> transaction = edited(commit);
    require(transaction != nullptr, "an edit can be made again");
    for (const Answer& answer : report.answers) ask_alone(*transaction, answer);
  }

  static void ask_alone(Transaction& transaction, const Answer& answer) {
    const confd::Model& model = confd::load_model(test::model());
    std::string why;
    const auto path = store::Path::parse(test::model(), answer.path, &why);
    require(path.has_value(), "the path of an answer can be read: " + why);
    confd::OwnedKeypath keypath(model, *path);
    const lyd_node* leaf = path->last().node->kind == store::NodeKind::kLeaf
                               ? transaction.datastore().find(*path)
                               : nullptr;
    confd::OwnedValue value(leaf != nullptr ? confd::own_leaf_value(model, leaf)
                                            : confd::tag_value(model, *path->last().node));

    ValidationSession session(transaction);
    session.begin_request(answer.request);
    const int result = validate(session.context(), keypath.get(), value.data());
    const bool warns = result == CONFD_VALIDATION_WARN;
    require(result == CONFD_OK || result == CONFD_ERR || warns, "a result is one of three");
    const Verdict verdict =
        result == CONFD_OK ? Verdict::kOk : (warns ? Verdict::kWarning : Verdict::kError);
    require(same(answer, {answer.request, answer.path, verdict, session.error_text().value_or(""),
                          answer.msecs}),
            answer.request + " answers alone as among others");
    const ValidationSession::OpenResources open = session.open_resources();
    require(open.cursors <= cursors_left_by(answer), answer.request + " closes its cursors");
    require(open.queries == 0, answer.request + " closes its queries");
    require(open.configuration_sessions == 0, answer.request + " closes its sessions");
  }

  store::Datastore datastore_;
  std::optional<Daemon> daemon_;
};

void try_commits(Choices choices) {
  const CardDescription description = chosen_card(choices);
  if (showing()) show(description);
  Card card(description);
  for (std::size_t made = 0; made < kMostCommits && !choices.at_end(); ++made) {
    const Commit commit = chosen_commit(choices);
    if (showing()) show(commit);
    card.try_commit(commit);
  }
}

}  // namespace
}  // namespace tarnd::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const int descriptor = tarnd::fuzz::next_descriptor();
  tarnd::fuzz::try_commits({data, size});
  tarnd::fuzz::require(tarnd::fuzz::next_descriptor() == descriptor, "every file is closed");
  return 0;
}
