#include "standalone/store/list_index.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

#include "standalone/store/datastore.h"
#include "tests/support/model.h"

namespace tarnd::store {
namespace {

// A list of service ports, its index, and the expected content of the index.
class IndexedPorts {
 public:
  explicit IndexedPorts(int ports) {
    lyd_new_inner(nullptr, root().lysc->module, root().name.c_str(), 0, &config_);
    for (int id = 0; id < ports; ++id) link(id);
    index_.emplace(config_, list());
  }
  IndexedPorts(const IndexedPorts&) = delete;
  IndexedPorts& operator=(const IndexedPorts&) = delete;
  ~IndexedPorts() { lyd_free_all(config_); }

  [[nodiscard]] bool has(int id) const { return ports_.contains(id); }

  bool insert(int id) { return index_->insert(link(id)); }

  void erase(int id) {
    const auto port = ports_.extract(id);
    index_->erase(port.mapped());
    // The next new port may get the same address.
    lyd_free_tree(port.mapped());
  }

  void expect_order() const {
    std::vector<const lyd_node*> expected;
    for (const auto& [id, port] : ports_) expected.push_back(port);
    const auto ordered = index_->ordered();
    ASSERT_EQ(std::vector<const lyd_node*>(ordered.begin(), ordered.end()), expected);
  }

  void expect_found(int id) const {
    const std::vector<std::string> key = {std::to_string(id)};
    const auto port = ports_.find(id);
    ASSERT_EQ(index_->find(key), port != ports_.end() ? port->second : nullptr) << id;
  }

 private:
  static const SchemaNode& root() { return test::model().root(); }
  static const SchemaNode& list() { return *root().child("service-port"); }

  lyd_node* link(int id) {
    lyd_node* port = nullptr;
    lyd_new_list(config_, nullptr, list().name.c_str(), 0, &port, std::to_string(id).c_str());
    ports_[id] = port;
    return port;
  }

  lyd_node* config_ = nullptr;
  std::map<int, lyd_node*> ports_;
  std::optional<ListIndex> index_;
};

TEST(ListIndexTest, ReportsWhetherAnEntryIsTheLast) {
  IndexedPorts ports(3);
  EXPECT_TRUE(ports.insert(7));
  EXPECT_TRUE(ports.insert(9));
  EXPECT_FALSE(ports.insert(8));
  ports.expect_order();
  EXPECT_TRUE(ports.insert(10));
}

// Any number of entries is added and removed between two reads of the order.
TEST(ListIndexTest, IsInKeyOrderAfterAnyInsertionsAndRemovals) {
  constexpr int kIds = 200;
  for (unsigned seed = 0; seed < 50; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const auto below = [&](int limit) {
      return std::uniform_int_distribution<int>(0, limit - 1)(random);
    };
    IndexedPorts ports(below(kIds));
    for (int look = 0; look < 40; ++look) {
      for (int steps = below(below(2) == 0 ? 4 : kIds); steps > 0; --steps) {
        const int id = below(kIds);
        if (ports.has(id)) {
          ports.erase(id);
        } else {
          ports.insert(id);
        }
        ports.expect_found(below(kIds));
      }
      ports.expect_order();
    }
  }
}

}  // namespace
}  // namespace tarnd::store
