#include "netconf/state/net_changes.h"

#include <algorithm>
#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace tarnd::netconf::state {
namespace {

using store::ItemChange;

// All that is inside a node follows it in a row, also after "/a/b" what is in it and not "/a/b-c".
struct InsideFirst {
  static int rank(char byte) { return byte == '/' ? -1 : static_cast<unsigned char>(byte); }

  bool operator()(std::string_view left, std::string_view right) const {
    return std::lexicographical_compare(left.begin(), left.end(), right.begin(), right.end(),
                                        [](char a, char b) { return rank(a) < rank(b); });
  }
};

using Net = std::map<std::string, ItemChange, InsideFirst>;

void add(Net& net, std::vector<ItemChange> changes) {
  for (ItemChange& change : changes) {
    const auto [known, is_first] = net.try_emplace(change.path, change);
    if (!is_first) known->second.after = std::move(change.after);
  }
}

}  // namespace

std::vector<ItemChange> changes_between(Connection& connection, Number from, Number to) {
  Net net;
  if (from < to) {
    for_each_change(connection, from + 1, to, [&net](Number, std::vector<ItemChange> changes) {
      add(net, std::move(changes));
    });
  } else if (from > to) {
    for_each_change(connection, from, to + 1, [&net](Number, std::vector<ItemChange> changes) {
      // A commit may name an item twice.
      std::reverse(changes.begin(), changes.end());
      add(net, store::reversed(std::move(changes)));
    });
  }
  std::vector<ItemChange> left;
  for (auto& [path, change] : net) {
    if (change.before != change.after) left.push_back(std::move(change));
  }
  return left;
}

}  // namespace tarnd::netconf::state
