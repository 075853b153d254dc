// Sixteen times the entries cost about twenty times as much, more on a machine whose cores and
// caches others use, too. A step that looks at all entries for each of them would cost 256 times as
// much.

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <functional>
#include <numeric>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "standalone/store/change_tree.h"
#include "standalone/store/edit_log.h"
#include "standalone/store/list_index.h"
#include "standalone/store/transaction.h"
#include "standalone/store/validity.h"
#include "tests/support/model.h"

namespace tarnd::store {
namespace {

using test::config;
using Ids = std::vector<int>;

struct Order {
  const char* name;
  Ids (*ids)(int count);
};

void PrintTo(const Order& order, std::ostream* out) {
  *out << order.name;
}

constexpr int kTimesTheEntries = 16;
constexpr double kMostGrowth = 80;

Ids ascending(int count) {
  Ids ids(count);
  std::iota(ids.begin(), ids.end(), 1);
  return ids;
}

Ids descending(int count) {
  Ids ids = ascending(count);
  std::reverse(ids.begin(), ids.end());
  return ids;
}

Ids random(int count) {
  Ids ids = ascending(count);
  std::shuffle(ids.begin(), ids.end(), std::mt19937(1));
  return ids;
}

double seconds(const std::function<void()>& work) {
  const auto now = [] {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
  };
  const double start = now();
  work();
  return now() - start;
}

// The times of the parts of some work, each at its fastest.
class Parts {
 public:
  void measure(const char* part, const std::function<void()>& work) {
    const double time = seconds(work);
    for (auto& [name, least] : times_) {
      if (name != part) continue;
      least = std::min(least, time);
      return;
    }
    times_.emplace_back(part, time);
  }

  [[nodiscard]] bool grew_little(const Parts& smaller) const {
    for (std::size_t i = 0; i < times_.size(); ++i) {
      if (times_[i].second / smaller.times_[i].second >= kMostGrowth) return false;
    }
    return true;
  }

  // How much longer each took than the same part of a smaller work.
  void expect_growth(const Parts& smaller) const {
    for (std::size_t i = 0; i < times_.size(); ++i) {
      EXPECT_LT(times_[i].second / smaller.times_[i].second, kMostGrowth) << times_[i].first;
    }
  }

 private:
  std::vector<std::pair<std::string, double>> times_;
};

// Does the work with some entries and with many more, in turn, so that other programs on the
// machine affect both; some more times if they have affected the many more.
void expect_growth(int count, const std::function<void(int count, Parts& parts)>& work) {
  Parts few;
  Parts many;
  constexpr int kRuns = 3;
  constexpr int kMostRuns = 10;
  for (int run = 0; run < kRuns || (run < kMostRuns && !many.grew_little(few)); ++run) {
    work(count, few);
    work(kTimesTheEntries * count, many);
  }
  many.expect_growth(few);
}

// Service ports in a tree without a datastore.
class Ports {
 public:
  explicit Ports(const Ids& ids) : ids_(ids) {
    const SchemaNode& config = test::model().root();
    lyd_new_inner(nullptr, config.lysc->module, config.name.c_str(), 0, &root_);
  }
  Ports(const Ports&) = delete;
  Ports& operator=(const Ports&) = delete;
  ~Ports() { lyd_free_all(root_); }

  /// Unlinked ports with a rate.
  [[nodiscard]] std::vector<lyd_node*> made() const {
    std::vector<lyd_node*> ports;
    for (const int id : ids_) {
      lyd_node* port = nullptr;
      lyd_new_list(root_, nullptr, "service-port", 0, &port, std::to_string(id).c_str());
      lyd_unlink_tree(port);
      lyd_new_term(port, nullptr, "upstream-rate", "1", 0, nullptr);
      ports.push_back(port);
    }
    return ports;
  }

  lyd_node*& root() { return root_; }
  static const SchemaNode& list() { return *test::model().root().child("service-port"); }

 private:
  const Ids ids_;
  lyd_node* root_ = nullptr;
};

class StoreGrowthTest : public ::testing::TestWithParam<Order> {};

INSTANTIATE_TEST_SUITE_P(Orders, StoreGrowthTest,
                         ::testing::Values(Order{"Ascending", ascending},
                                           Order{"Descending", descending},
                                           Order{"Random", random}),
                         [](const auto& order) { return order.param.name; });

TEST_P(StoreGrowthTest, OfAnIndexWhoseEntriesComeAndGo) {
  expect_growth(5000, [&](int count, Parts& parts) {
    Ports ports(GetParam().ids(count));
    ListIndex index(ports.root(), Ports::list());
    const std::vector<lyd_node*> entries = ports.made();
    parts.measure("entries come", [&] {
      for (lyd_node* entry : entries) index.insert(entry);
    });
    parts.measure("the order", [&] { EXPECT_EQ(index.ordered().size(), entries.size()); });
    parts.measure("entries go", [&] {
      for (lyd_node* entry : entries) index.erase(entry);
    });
    for (lyd_node* entry : entries) lyd_free_tree(entry);
  });
}

TEST_P(StoreGrowthTest, OfALogOfChanges) {
  expect_growth(1250, [&](int count, Parts& parts) {
    Ports ports(GetParam().ids(count));
    TreeKeeper keeper;
    EditLog log(keeper, ports.root());
    const auto insert = [&](const std::vector<lyd_node*>& entries) {
      for (lyd_node* entry : entries) log.insert(ports.root(), entry);
    };
    std::vector<lyd_node*> entries = ports.made();
    parts.measure("new entries", [&] { insert(entries); });
    parts.measure("new entries taken back", [&] { log.undo(); });
    entries = ports.made();
    insert(entries);
    parts.measure("new entries kept", [&] { log.keep(); });

    parts.measure("leaves go", [&] {
      for (lyd_node* entry : entries) log.remove(lyd_child(entry)->next);
    });
    parts.measure("leaves come back", [&] { log.undo(); });
    parts.measure("entries go", [&] {
      for (lyd_node* entry : entries) log.remove(entry);
    });
    const std::vector<lyd_node*> others = ports.made();
    parts.measure("entries of the same keys come", [&] { insert(others); });
    parts.measure("the check", [&] { check_edits(*log.root_record()); });
    parts.measure("what differs", [&] { change_tree(*log.root_record()); });
    parts.measure("what came and went taken back", [&] { log.undo(); });
  });
}

std::string ports(const Ids& ids, const std::string& operation = "", const std::string& leaf = "") {
  std::string text;
  for (const int id : ids) {
    text += "<service-port" + operation + "><id>" + std::to_string(id) + "</id>" + leaf +
            "</service-port>";
  }
  return config(text);
}

TEST(GrowthTest, OfLooksAtWhatWasCommitted) {
  expect_growth(1250, [&](int count, Parts& parts) {
    const Ids ids = random(count);
    Datastore datastore(test::model());
    datastore.load(ports(ids), Format::kXml);
    Transaction transaction(datastore);
    transaction.edit(ports(ids, " nc:operation=\"delete\""), Format::kXml);
    transaction.prepare();
    const Path list = *Path::parse(datastore.schema(), "/config/service-port", nullptr);
    parts.measure("committed", [&] {
      for (const int id : ids) {
        const std::string path = "/config/service-port{" + std::to_string(id) + "}";
        EXPECT_NE(transaction.committed(*Path::parse(datastore.schema(), path, nullptr)), nullptr);
        EXPECT_EQ(transaction.committed_entries(list), ids.size());
      }
    });
  });
}

TEST(GrowthTest, OfTheDifferenceOfTwoConfigurations) {
  expect_growth(1250, [&](int count, Parts& parts) {
    const Ids ids = random(count);
    Datastore datastore(test::model());
    datastore.load(ports(ascending(count)), Format::kXml);
    Transaction transaction(datastore);
    transaction.replace(ports(ids, "", "<upstream-rate>2</upstream-rate>"), Format::kXml);
    parts.measure("difference", [&] { transaction.prepare(); });
    EXPECT_EQ(transaction.changes()->children.size(), ids.size());
  });
}

}  // namespace
}  // namespace tarnd::store
