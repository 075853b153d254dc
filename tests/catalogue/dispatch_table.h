#pragma once

#include <string>
#include <vector>

namespace tarnd::test {

/// A row of the dispatch table as the plug-in's source has it.
struct DispatchRow {
  std::string validator;
  std::string request;

  friend bool operator==(const DispatchRow&, const DispatchRow&) = default;
};

/// The rows in their order, read from `gpon_card_valid.cpp` in the folder of the plug-in's sources.
std::vector<DispatchRow> dispatch_table(const std::string& sources);

}  // namespace tarnd::test
