#include "tests/catalogue/validation_map.h"

#include <stdexcept>
#include <vector>

#include "tests/catalogue/requests.h"

namespace tarnd::test {
namespace {

constexpr const char* kHead =
    "| request | validator | source | nodes | unit test |\n"
    "|---|---|---|---|---|\n";

std::string code(const std::string& text) {
  return "`" + text + "`";
}

std::string link(const std::string& file, const std::string& folder) {
  return "[" + file + "](" + folder + file + ")";
}

std::string joined(const std::vector<std::string>& parts) {
  std::string text;
  for (const std::string& part : parts) text += (text.empty() ? "" : "<br>") + part;
  return text;
}

std::string row_of(const Request& request) {
  std::vector<std::string> nodes;
  for (const std::string& node : request.nodes) nodes.push_back(code(node));
  std::vector<std::string> tests;
  for (const std::string& test : request.unit_tests) {
    tests.push_back(link(test + ".cpp", "../../tests/unit/"));
  }
  return "| " + code(request.name) + " | " + code(request.validator) + " | " +
         link(request.source + ".cpp", "") + " | " + joined(nodes) + " | " + joined(tests) + " |\n";
}

}  // namespace

std::string validation_map() {
  std::string table = kHead;
  for (const Request& request : requests()) table += row_of(request);
  return table;
}

std::string with_validation_map(const std::string& page) {
  const std::size_t from = page.find(kHead);
  if (from == std::string::npos) throw std::runtime_error("the page has no table of requests");
  std::size_t to = from;
  while (page.compare(to, 1, "|") == 0) to = page.find('\n', to) + 1;
  return page.substr(0, from) + validation_map() + page.substr(to);
}

}  // namespace tarnd::test
