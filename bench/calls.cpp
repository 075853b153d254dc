// How many platform calls each request makes, as a function of the card's size. The function is
// found by changing one number at a time, and checked with a card that differs in all.
//
//   calls                prints a table in Markdown
//   calls --check FILE   prints errors only: a card for which the function does not
//                        hold, calls that grow with something that the rule need not read, and a
//                        FILE that does not have the table
//
// A test in tests/catalogue checks that every request is in the table, or why it is not.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <string>

#include "bench/requests.h"

namespace {

using bench::Dimension;
using bench::kDimensions;
using bench::Request;
using tarnd::PlatformCall;

// How many of each there are. ONUs come in full chunks of a query, service ports and bandwidth
// profiles in full batches of a reader: then the number of calls grows evenly.
struct Size {
  std::uint32_t links = 4;
  std::uint32_t onus_of_link = 256;
  std::uint32_t service_ports = 300;
  std::uint32_t bandwidth_profiles = 128;
  std::uint32_t line_profiles = 128;
  std::uint32_t service_profiles = 16;
  std::uint32_t rg_profiles = 8;
  std::uint32_t other_profiles = 8;
  int changed_entries = 1;

  [[nodiscard]] gponval::CardSize card() const {
    gponval::CardSize size;
    size.links = links;
    size.onus = onus_of_link;
    size.service_ports = service_ports;
    size.bandwidth_profiles = bandwidth_profiles;
    size.line_profiles = line_profiles;
    size.service_profiles = service_profiles;
    size.rg_profiles = rg_profiles;
    size.tr069_profiles = other_profiles;
    size.sip_profiles = other_profiles;
    size.media_profiles = other_profiles;
    return size;
  }

  [[nodiscard]] std::array<double, kDimensions> values() const {
    return {static_cast<double>(links),
            static_cast<double>(onus_of_link),
            static_cast<double>(links) * onus_of_link,
            static_cast<double>(service_ports),
            static_cast<double>(bandwidth_profiles),
            static_cast<double>(line_profiles),
            static_cast<double>(service_profiles),
            static_cast<double>(rg_profiles),
            static_cast<double>(other_profiles),
            static_cast<double>(changed_entries)};
  }
};

constexpr Size kBase{};
constexpr Size kFar{3, 384, 600, 192, 192, 24, 16, 16, 3};

// Freeing a name costs almost nothing and is counted separately.
struct Calls {
  double reads = 0;
  double frees = 0;
};

Calls operator-(const Calls& left, const Calls& right) {
  return {left.reads - right.reads, left.frees - right.frees};
}

Calls operator/(const Calls& calls, double number) {
  return {calls.reads / number, calls.frees / number};
}

using CallsOfRequests = std::map<std::string, Calls>;

CallsOfRequests measure(const Size& size) {
  bench::Card card(bench::card_text(size.card()));
  card.apply(bench::preparation());
  // The first request of a process registers the trace.
  const Request& first = bench::requests().front();
  card.calls(first.edit(size.card(), size.changed_entries), first.name);
  CallsOfRequests result;
  for (const Request& request : bench::requests()) {
    const auto counts = card.calls(request.edit(size.card(), size.changed_entries), request.name);
    Calls& calls = result[request.name];
    for (std::size_t i = 0; i < counts.size(); ++i) {
      const bool frees = i == static_cast<std::size_t>(PlatformCall::confd_free_value);
      (frees ? calls.frees : calls.reads) += static_cast<double>(counts.at(i));
    }
  }
  return result;
}

// Calls of one request: a constant, and a number for each of what the card has many of.
struct Function {
  Calls constant;
  std::array<Calls, kDimensions> per;

  [[nodiscard]] Calls at(const Size& size) const {
    Calls calls = constant;
    const auto values = size.values();
    for (std::size_t i = 0; i < kDimensions; ++i) {
      calls.reads += per.at(i).reads * values.at(i);
      calls.frees += per.at(i).frees * values.at(i);
    }
    return calls;
  }
};

Calls& slope(Function& function, Dimension dimension) {
  return function.per.at(static_cast<std::size_t>(dimension));
}

template <typename Number>
void find(const CallsOfRequests& base, std::map<std::string, Function>& functions,
          Dimension dimension, Number Size::*number) {
  Size size = kBase;
  size.*number *= 2;
  const auto step = static_cast<double>(size.*number - kBase.*number);
  for (const auto& [name, calls] : measure(size)) {
    slope(functions[name], dimension) = (calls - base.at(name)) / step;
  }
}

// The number of all ONUs is their product, so each is doubled alone, and both together.
void find_links_and_onus(const CallsOfRequests& base, std::map<std::string, Function>& functions) {
  const double links = kBase.links;
  const double onus = kBase.onus_of_link;
  Size more_links = kBase;
  more_links.links *= 2;
  Size more_onus = kBase;
  more_onus.onus_of_link *= 2;
  Size more_of_both = more_links;
  more_of_both.onus_of_link *= 2;
  const CallsOfRequests with_links = measure(more_links);
  const CallsOfRequests with_onus = measure(more_onus);
  for (const auto& [name, calls] : measure(more_of_both)) {
    const Calls by_links = with_links.at(name) - base.at(name);
    const Calls by_onus = with_onus.at(name) - base.at(name);
    const Calls product = (calls - base.at(name) - by_links - by_onus) / (links * onus);
    slope(functions[name], Dimension::kOnus) = product;
    slope(functions[name], Dimension::kLinks) =
        by_links / links - Calls{product.reads * onus, product.frees * onus};
    slope(functions[name], Dimension::kOnusOfLink) =
        by_onus / onus - Calls{product.reads * links, product.frees * links};
  }
}

std::map<std::string, Function> measured_functions() {
  const CallsOfRequests base = measure(kBase);
  std::map<std::string, Function> result;
  find_links_and_onus(base, result);
  find(base, result, Dimension::kServicePorts, &Size::service_ports);
  find(base, result, Dimension::kBandwidthProfiles, &Size::bandwidth_profiles);
  find(base, result, Dimension::kLineProfiles, &Size::line_profiles);
  find(base, result, Dimension::kServiceProfiles, &Size::service_profiles);
  find(base, result, Dimension::kRgProfiles, &Size::rg_profiles);
  find(base, result, Dimension::kOtherProfiles, &Size::other_profiles);
  find(base, result, Dimension::kChangedEntries, &Size::changed_entries);
  for (auto& [name, function] : result) {
    function.constant = base.at(name) - function.at(kBase);
  }
  return result;
}

bool is_zero(double number) {
  constexpr double kTolerance = 1e-9;
  return std::abs(number) < kTolerance;
}

bool is_zero(const Calls& calls) {
  return is_zero(calls.reads) && is_zero(calls.frees);
}

// "3", "1/128", "3 + 1/300".
std::string number_text(double number) {
  double whole = 0;
  const double part = std::modf(number + 1e-9, &whole);
  std::string text = std::to_string(static_cast<long>(whole));
  if (is_zero(part - 1e-9)) return text;
  const std::string fraction = "1/" + std::to_string(std::lround(1 / part));
  return whole == 0 ? fraction : "(" + text + " + " + fraction + ")";
}

std::string function_text(const Function& function, double Calls::*kind) {
  std::string text;
  const auto add = [&](double number, const std::string& name) {
    if (is_zero(number)) return;
    const std::string figure = number_text(number);
    text += text.empty() ? "" : " + ";
    text += name.empty() ? figure : (figure == "1" ? "" : figure + " ") + name;
  };
  add(function.constant.*kind, "");
  for (std::size_t i = 0; i < kDimensions; ++i) {
    add(function.per.at(i).*kind, std::string(to_string(static_cast<Dimension>(i))));
  }
  return text.empty() ? "0" : text;
}

std::string table(const std::map<std::string, Function>& functions) {
  std::string text = "| request | calls | values freed |\n|---|---|---|\n";
  for (const Request& request : bench::requests()) {
    const Function& function = functions.at(request.name);
    text += "| `" + request.name + "` | " + function_text(function, &Calls::reads) + " | " +
            function_text(function, &Calls::frees) + " |\n";
  }
  return text;
}

bool looks_at(const Request& request, Dimension dimension) {
  return std::find(request.looks_at.begin(), request.looks_at.end(), dimension) !=
         request.looks_at.end();
}

// Prints the errors and returns their number.
int check(const std::map<std::string, Function>& functions) {
  int wrong = 0;
  const CallsOfRequests far = measure(kFar);
  for (const Request& request : bench::requests()) {
    const Function& function = functions.at(request.name);
    for (std::size_t i = 0; i < kDimensions; ++i) {
      const auto dimension = static_cast<Dimension>(i);
      if (is_zero(function.per.at(i)) || looks_at(request, dimension)) continue;
      std::printf("%s grows with the %s\n", request.name.c_str(),
                  std::string(to_string(dimension)).c_str());
      ++wrong;
    }
    const Calls expected = function.at(kFar);
    const Calls& made = far.at(request.name);
    if (!is_zero(made - expected)) {
      std::printf("%s makes %.2f calls and %.2f frees on the other card, not %.2f and %.2f\n",
                  request.name.c_str(), made.reads, made.frees, expected.reads, expected.frees);
      ++wrong;
    }
  }
  return wrong;
}

bool stands_in(const std::string& text, const char* file) {
  std::ostringstream content;
  content << std::ifstream(file).rdbuf();
  return content.str().find(text) != std::string::npos;
}

}  // namespace

int main(int argc, char** argv) {
  const bool check_only = argc == 3 && std::strcmp(argv[1], "--check") == 0;
  if (argc > 1 && !check_only) {
    std::fprintf(stderr, "usage: %s [--check FILE]\n", argv[0]);
    return 2;
  }
  const auto functions = measured_functions();
  const std::string text = table(functions);
  if (!check_only) std::fputs(text.c_str(), stdout);
  int wrong = check(functions);
  if (check_only && !stands_in(text, argv[2])) {
    std::printf("%s does not hold the table that %s prints\n", argv[2], argv[0]);
    ++wrong;
  }
  return wrong == 0 ? 0 : 1;
}
