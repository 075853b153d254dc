#include "tests/catalogue/dispatch_table.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace tarnd::test {

std::vector<DispatchRow> dispatch_table(const std::string& sources) {
  std::ostringstream text;
  text << std::ifstream(sources + "/gpon_card_valid.cpp").rdbuf();
  const std::string code = text.str();
  const std::string head = " kRequests[] = {";
  const std::size_t begin = code.find(head);
  if (begin == std::string::npos) throw std::runtime_error("no dispatch table in " + sources);
  const std::size_t end = code.find("};", begin);
  std::vector<DispatchRow> rows;
  for (std::size_t row = begin + head.size(); (row = code.find('{', row)) < end; ++row) {
    const std::size_t comma = code.find(',', row);
    const std::size_t open = code.find('"', comma);
    const std::size_t close = code.find('"', open + 1);
    rows.push_back(
        {code.substr(row + 1, comma - row - 1), code.substr(open + 1, close - open - 1)});
  }
  return rows;
}

}  // namespace tarnd::test
