#include "standalone/load/card_load.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iomanip>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "standalone/report/colours.h"
#include "tools/gponval/commands.h"
#include "tools/gponval/error_line.h"
#include "tools/gponval/host.h"
#include "tools/gponval/inputs.h"
#include "tools/gponval/output.h"
#include "tools/gponval/terminal.h"
#include "tools/gponval/text_width.h"
#include "tools/gponval/usage_error.h"

namespace gponval {
namespace {

using nlohmann::ordered_json;
using tarnd::CardLimits;
using tarnd::CardLoad;
using tarnd::Fit;
using tarnd::LineProfileLoad;
using tarnd::LinkLoad;

constexpr const char* kHelp =
    "Prints what a card carries.\n"
    "\n"
    "Prints the ONUs of each PON link and the upstream bandwidth in kbit/s that they reserve,\n"
    "the TCONTs of each line profile, and the number of service ports, each with its limit.\n"
    "The figures are the plug-in's own; where it does not check the bandwidth, there is a\n"
    "dash. With --fit, also prints how many more ONUs each link accepts.\n";

constexpr const char* kExamples =
    "Examples:\n"
    "  gponval load --running card.xml\n"
    "  gponval load --running card.xml --card town.card --fit line-home\n"
    "  gponval load --running card.xml --format json\n"
    "\n";

constexpr int kJsonIndent = 2;
constexpr double kPercent = 100;
constexpr double kNearlyFull = 90;
constexpr double kShareDigits = 10'000;
constexpr int kBarWidth = 10;
constexpr std::string_view kUnknown = "-";
constexpr std::string_view kAnyNumber = "any number";

struct LoadArguments {
  InputOptions inputs;
  RunOptions run;
  std::optional<std::string> fit;
};

/// What a report shows: the load, and how the line profile of --fit fits each link.
struct Shown {
  CardLoad load;
  std::vector<Fit> fits;  ///< one for each link; empty without --fit
};

double share_of(std::uint32_t reserved, std::uint32_t capacity) {
  return static_cast<double>(reserved) / capacity;
}

std::uint32_t room_of(std::uint32_t reserved, std::uint32_t capacity) {
  return reserved < capacity ? capacity - reserved : 0;
}

// "/config/interface/gpon{1 1 3}" is shown as "gpon 1/1/3".
std::string short_name(const std::string& path) {
  std::string name = path.substr(path.rfind('/') + 1);
  std::replace(name.begin(), name.end(), ' ', '/');
  std::replace(name.begin(), name.end(), '{', ' ');
  name.pop_back();
  return name;
}

std::string of_most(std::uint32_t used, std::optional<std::uint32_t> most) {
  if (!most.has_value()) return std::to_string(used);
  return std::to_string(used) + " of " + std::to_string(*most);
}

/// A text of a table; its colour takes no room.
struct Cell {
  // cppcheck-suppress noExplicitConstructor  // rows are written as lists of texts
  Cell(std::string shown, std::string_view in_colour = {})
      : text(std::move(shown)), colour(in_colour) {}

  std::string text;
  std::string_view colour;
};

/// Rows with columns as wide as their widest text. The first column is aligned at the left, the
/// others at the right.
class Table {
 public:
  explicit Table(std::vector<Cell> head) { add(std::move(head)); }

  void add(std::vector<Cell> row) {
    widths_.resize(std::max(widths_.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i) {
      widths_[i] = std::max(widths_[i], text_width(row[i].text));
    }
    rows_.push_back(std::move(row));
  }

  void print(std::ostream& out, bool colours) const {
    for (const std::vector<Cell>& row : rows_) {
      for (std::size_t i = 0; i < row.size(); ++i) {
        const std::string padding(widths_[i] - text_width(row[i].text), ' ');
        if (i > 0) out << "  " << padding;
        const bool coloured = colours && !row[i].colour.empty();
        if (coloured) out << row[i].colour;
        out << row[i].text;
        if (coloured) out << tarnd::report::kPlain;
        if (i == 0 && row.size() > 1) out << padding;
      }
      out << '\n';
    }
  }

 private:
  std::vector<std::vector<Cell>> rows_;
  std::vector<std::size_t> widths_;
};

// "[####......]  40.0 %"; what is above the capacity fills the bar.
Cell bar(double share) {
  const int filled = std::clamp(static_cast<int>(std::lround(share * kBarWidth)), 0, kBarWidth);
  std::ostringstream text;
  text << '[' << std::string(filled, '#') << std::string(kBarWidth - filled, '.') << "] "
       << std::fixed << std::setprecision(1) << std::setw(5) << share * kPercent << " %";
  if (share > 1) return {text.str(), tarnd::report::kRed};
  return {text.str(),
          share * kPercent >= kNearlyFull ? tarnd::report::kYellow : tarnd::report::kGreen};
}

void add_bandwidth(std::vector<Cell>& row, std::uint32_t reserved, std::uint32_t capacity) {
  row.emplace_back(std::to_string(reserved));
  row.push_back(bar(share_of(reserved, capacity)));
  row.emplace_back(std::to_string(room_of(reserved, capacity)));
}

// Their figures may look harmless, since the plug-in stops counting at the fault.
void print_rejecting_links(std::ostream& out, const CardLoad& load, bool colours) {
  for (const LinkLoad& link : load.links) {
    if (link.rejected.empty()) continue;
    if (colours) out << tarnd::report::kRed;
    out << short_name(link.path)
        << ": every change of its ONUs is rejected: " << printable(link.rejected);
    if (colours) out << tarnd::report::kPlain;
    out << '\n';
  }
}

void print_links(std::ostream& out, const CardLoad& load, bool colours) {
  const CardLimits& limits = load.limits;
  out << "Upstream bandwidth of the PON links in kbit/s: total of " << limits.capacity.total
      << ", with " << limits.onu_overhead << " for each ONU; fixed of " << limits.capacity.fixed
      << '\n';
  Table table({{"link"}, {"ONUs"}, {"total"}, {"share"}, {"room"}, {"fixed"}, {"share"}, {"room"}});
  for (const LinkLoad& link : load.links) {
    std::vector<Cell> row = {short_name(link.path), of_most(link.onus, limits.onus_per_link)};
    if (link.reserved.has_value()) {
      add_bandwidth(row, link.reserved->total, limits.capacity.total);
      add_bandwidth(row, link.reserved->fixed, limits.capacity.fixed);
    } else {
      row.insert(row.end(), 6, Cell(std::string(kUnknown)));
    }
    table.add(std::move(row));
  }
  table.print(out, colours);
  print_rejecting_links(out, load, colours);
}

Cell tconts(std::uint32_t used, std::uint32_t most) {
  return {of_most(used, most), used > most ? tarnd::report::kRed : std::string_view()};
}

void print_line_profiles(std::ostream& out, const CardLoad& load, bool colours) {
  out << "\nTCONTs of the line profiles, and what each ONU reserves in kbit/s\n";
  Table table({{"line profile"}, {"types 2 to 5"}, {"type 1"}, {"total"}, {"fixed"}});
  for (const LineProfileLoad& line : load.line_profiles) {
    table.add({{printable(line.name)},
               tconts(line.dynamic_tconts, load.limits.dynamic_tconts),
               tconts(line.static_tconts, load.limits.static_tconts),
               {std::to_string(line.reserved.total)},
               {std::to_string(line.reserved.fixed)}});
  }
  table.print(out, colours);
}

void print_fits(std::ostream& out, const Shown& shown, const std::string& line_profile) {
  out << "\nMore ONUs with the line profile " << printable(line_profile)
      << ", and what rejects the next one\n";
  Table table({{"link"}, {"ONUs"}, {"limit"}});
  for (std::size_t i = 0; i < shown.fits.size(); ++i) {
    const Fit& fit = shown.fits[i];
    table.add({{short_name(shown.load.links[i].path)},
               {fit.onus.has_value() ? std::to_string(*fit.onus) : std::string(kAnyNumber)},
               {fit.onus.has_value() ? printable(fit.limit) : std::string(kUnknown)}});
  }
  table.print(out, false);
}

void print_text(std::ostream& out, const Shown& shown, const LoadArguments& arguments) {
  const bool colours = has_colours(out);
  print_links(out, shown.load, colours);
  print_line_profiles(out, shown.load, colours);
  out << "\nService ports: " << of_most(shown.load.service_ports, shown.load.limits.service_ports)
      << '\n';
  if (arguments.fit.has_value()) print_fits(out, shown, *arguments.fit);
}

ordered_json json_of(std::uint32_t reserved, std::uint32_t capacity) {
  return {{"reserved", reserved},
          {"capacity", capacity},
          {"share", std::round(share_of(reserved, capacity) * kShareDigits) / kShareDigits},
          {"room", room_of(reserved, capacity)}};
}

ordered_json json_of(const LinkLoad& link, const CardLimits& limits) {
  ordered_json object = {{"path", link.path},
                         {"onus", {{"used", link.onus}, {"limit", nullptr}}},
                         {"total", nullptr},
                         {"fixed", nullptr},
                         {"rejected", nullptr}};
  if (limits.onus_per_link.has_value()) object["onus"]["limit"] = *limits.onus_per_link;
  if (!link.rejected.empty()) object["rejected"] = link.rejected;
  if (link.reserved.has_value()) {
    object["total"] = json_of(link.reserved->total, limits.capacity.total);
    object["fixed"] = json_of(link.reserved->fixed, limits.capacity.fixed);
  }
  return object;
}

ordered_json json_of(const LineProfileLoad& line, const CardLimits& limits) {
  return {{"name", line.name},
          {"dynamic-tconts", {{"used", line.dynamic_tconts}, {"limit", limits.dynamic_tconts}}},
          {"static-tconts", {{"used", line.static_tconts}, {"limit", limits.static_tconts}}},
          {"total", line.reserved.total},
          {"fixed", line.reserved.fixed}};
}

ordered_json json_of(const Fit& fit, const LinkLoad& link) {
  ordered_json object = {{"path", link.path}, {"onus", nullptr}, {"limit", nullptr}};
  if (fit.onus.has_value()) {
    object["onus"] = *fit.onus;
    object["limit"] = fit.limit;
  }
  return object;
}

void print_json(std::ostream& out, const Shown& shown, const LoadArguments& arguments) {
  const CardLimits& limits = shown.load.limits;
  ordered_json object;
  object["onu-overhead"] = limits.onu_overhead;
  ordered_json& links = object["links"] = ordered_json::array();
  for (const LinkLoad& link : shown.load.links) links.push_back(json_of(link, limits));
  ordered_json& lines = object["line-profiles"] = ordered_json::array();
  for (const LineProfileLoad& line : shown.load.line_profiles) {
    lines.push_back(json_of(line, limits));
  }
  object["service-ports"] = {{"used", shown.load.service_ports}, {"limit", limits.service_ports}};
  if (arguments.fit.has_value()) {
    ordered_json& fits = object["fit"] = ordered_json::array();
    for (std::size_t i = 0; i < shown.fits.size(); ++i) {
      fits.push_back(json_of(shown.fits[i], shown.load.links[i]));
    }
  }
  out << object.dump(kJsonIndent, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

std::vector<Fit> fits_of(const CardLoad& load, const std::string& name) {
  try {
    const LineProfileLoad& line = find_line_profile(load, name);
    std::vector<Fit> fits;
    fits.reserve(load.links.size());
    for (const LinkLoad& link : load.links) fits.push_back(fit(load.limits, link, line));
    return fits;
  } catch (const tarnd::InputError& error) {
    throw UsageError(std::string("--fit: ") + error.what());
  }
}

ExitStatus load(const LoadArguments& arguments) {
  check_standard_input(arguments.inputs, arguments.run);
  Host host(arguments.run, read_card(arguments.inputs));
  load_running(host.datastore(), arguments.inputs);
  Shown shown;
  shown.load = tarnd::card_load(host.daemon(), host.plugin(), host.datastore());
  if (arguments.fit.has_value()) shown.fits = fits_of(shown.load, *arguments.fit);
  if (arguments.run.format == "json") {
    print_json(std::cout, shown, arguments);
  } else {
    print_text(std::cout, shown, arguments);
  }
  finish_output();
  return ExitStatus::kAccepted;
}

}  // namespace

Command add_load(CLI::App& gponval) {
  CLI::App* app = gponval.add_subcommand("load", kHelp);
  auto arguments = std::make_shared<LoadArguments>();
  app->footer(kExamples + std::string(kExitStatusHelp));
  add_running_option(*app, arguments->inputs);
  add_input_format_option(*app, arguments->inputs);
  add_card_option(*app, arguments->inputs);
  app->add_option("--fit", arguments->fit,
                  "Also print how many more ONUs with this line profile each link accepts,\n"
                  "and what rejects the next one")
      ->type_name("LINE-PROFILE")
      ->group("Validation and output");
  add_plugin_option(*app, arguments->run);
  add_format_option(*app, arguments->run);
  return {app, [arguments] { return load(*arguments); }};
}

}  // namespace gponval
