// Changes of 100,000 entries in several orders: the times of a commit's steps, accepted or undone,
// and of the whole command. Times are processor times in seconds.

#include <sys/resource.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/full_card.h"
#include "gpon_card_valid.h"
#include "standalone/card/card_file.h"

namespace {

using bench::change;
using tarnd::store::Format;
using tarnd::store::Transaction;

constexpr int kUsualEntries = 100'000;
constexpr double kMostSeconds = 2;
constexpr int kFirst = 100'000;

using Ids = std::vector<int>;

struct Order {
  const char* name;
  Ids ids;
};

std::vector<Order> orders(int entries) {
  Ids ascending(entries);
  std::iota(ascending.begin(), ascending.end(), kFirst);
  const Ids descending(ascending.rbegin(), ascending.rend());
  Ids random = ascending;
  std::shuffle(random.begin(), random.end(), std::mt19937(1));
  return {{"ascending", ascending}, {"descending", descending}, {"random", random}};
}

// A list, the leaf of its entries that changes, and a request that is cheap for it.
struct List {
  const char* name;
  std::string (*around)(const std::string& entries);
  std::string (*entry)(int id, const std::string& operation, const std::string& leaf);
  const char* request;
};

std::string ports(const std::string& entries) {
  return entries;
}

std::string port(int id, const std::string& operation, const std::string& leaf) {
  const std::string head = "<service-port" + operation + "><id>" + std::to_string(id) + "</id>";
  if (leaf.empty()) return head + "</service-port>";
  return head + "<gpon><id>1/1/1</id><onu><id>1</id><gem><gem-id>1</gem-id></gem></onu></gpon>" +
         "<match><vlan><vlan-id>" + std::to_string(1 + id % 4094) +
         "</vlan-id></vlan></match><upstream-rate>" + leaf + "</upstream-rate></service-port>";
}

std::string onus(const std::string& entries) {
  return "<interface><gpon><chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>1</port-id>" +
         entries + "</gpon></interface>";
}

std::string onu(int id, const std::string& operation, const std::string& leaf) {
  const std::string head = "<onu" + operation + "><id>" + std::to_string(id) + "</id>";
  return leaf.empty() ? head + "</onu>" : head + "<description>" + leaf + "</description></onu>";
}

constexpr List kLists[] = {
    {"service ports", ports, port, "service_port_delete_all_warning_check"},
    {"ONUs of one link", onus, onu, "interface_gpon_validation"},
};

std::string edit_of(const List& list, const Ids& ids, const std::string& operation,
                    const std::string& leaf) {
  std::string entries;
  for (const int id : ids) entries += list.entry(id, operation, leaf);
  return change(list.around(entries));
}

tarnd::CardDescription roomy_card() {
  tarnd::CardDescription card = tarnd::CardDescription::standard();
  card.max_service_ports = 1'000'000;
  return card;
}

void print(const char* what, double seconds) {
  std::printf(" %s %6.3f", what, seconds);
}

class Commits {
 public:
  Commits() : schema_(TARND_MODEL_DIR), datastore_(schema_) {
    tarnd::insert_card(roomy_card());
    daemon_ = std::make_unique<tarnd::Daemon>(
        datastore_,
        tarnd::PluginEntryPoints{&lib_init, &get_validation_point, &validate, &lib_finish});
    datastore_.load(bench::card_text(bench::full_cards(1)), Format::kXml);
  }

  void measure(const List& list, const char* what, const char* order, const std::string& edit) {
    std::printf("  %-16s %-8s %-10s", list.name, what, order);
    const double refused = run(list, edit, false);
    const double accepted = run(list, edit, true);
    print("| taken back", refused);
    print(" committed", accepted);
    std::printf("  %s\n", std::max(refused, accepted) <= kMostSeconds ? "holds" : "does not hold");
  }

 private:
  double run(const List& list, const std::string& edit, bool keep) {
    double edited = 0;
    double prepared = 0;
    double ended = 0;
    const double whole = seconds([&] {
      auto transaction = std::make_unique<Transaction>(datastore_);
      edited = seconds([&] { transaction->edit(edit, Format::kXml); });
      prepared = seconds([&] { transaction->prepare(); });
      ended = seconds([&] {
        if (keep) decide(*transaction, list.request);
        transaction.reset();
      });
    });
    if (keep) return whole;
    print("edit", edited);
    print(" prepare", prepared);
    print(" undo", ended);
    return whole;
  }

  void decide(Transaction& transaction, const char* request) {
    tarnd::CommitOptions options;
    options.only = {request};
    options.confirm = [](const auto&) { return true; };
    const tarnd::CommitReport report = daemon_->commit(transaction, options);
    if (report.result != tarnd::CommitResult::kAccepted) {
      throw std::runtime_error("the commit was not accepted: " + report.answers.back().text);
    }
  }

  static double seconds(const std::function<void()>& work) {
    return bench::milliseconds(work) / 1000;
  }

  tarnd::store::Schema schema_;
  tarnd::store::Datastore datastore_;
  std::unique_ptr<tarnd::Daemon> daemon_;
};

void measure_steps(const List& list, const Order& order) {
  Commits commits;
  commits.measure(list, "created", order.name, edit_of(list, order.ids, "", "1"));
  commits.measure(list, "changed", order.name, edit_of(list, order.ids, "", "2"));
  commits.measure(list, "deleted", order.name,
                  edit_of(list, order.ids, " nc:operation=\"delete\"", ""));
}

// The processor time of all child processes until now.
double children_seconds() {
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

void write(const std::filesystem::path& file, const std::string& text) {
  std::ofstream(file) << text;
}

// A request that rejects the change of a committed service port, and one that accepts it.
void measure_command(const Order& order) {
  const List& list = kLists[0];
  const std::filesystem::path folder = "/tmp/large-changes-" + std::to_string(getpid());
  std::filesystem::create_directory(folder);
  write(folder / "running.xml", bench::card_text(bench::full_cards(1)));
  write(folder / "change.xml", edit_of(list, order.ids, "", "1"));
  write(folder / "card", "max-service-ports = 100000\n");
  for (const char* request : {"config_modified_check", "service_port_global_validation"}) {
    const double before = children_seconds();
    const std::string command = std::string(GPONVAL_COMMAND) + " commit --running " +
                                (folder / "running.xml").string() + " --change " +
                                (folder / "change.xml").string() + " --card " +
                                (folder / "card").string() + " --only " + request;
    const int status = std::system((command + " >/dev/null").c_str());
    const double taken = children_seconds() - before;
    std::printf("  gponval commit   %-10s --only %-32s exit %d %6.3f  %s\n", order.name, request,
                WEXITSTATUS(status), taken, taken <= kMostSeconds ? "holds" : "does not hold");
  }
  std::filesystem::remove_all(folder);
}

}  // namespace

int main(int argc, char** argv) {
  const int entries = argc > 1 ? std::atoi(argv[1]) : kUsualEntries;
  std::printf("%d entries beside one full card; at most %.0f s each\n", entries, kMostSeconds);
  for (const List& list : kLists) {
    for (const Order& order : orders(entries)) {
      bench::in_own_process([&] { measure_steps(list, order); });
    }
  }
  for (const Order& order : orders(entries)) measure_command(order);
}
