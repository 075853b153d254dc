#include <algorithm>
#include <array>
#include <iomanip>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "standalone/daemon/daemon.h"
#include "tools/gponval/commands.h"
#include "tools/gponval/options.h"
#include "tools/gponval/output.h"
#include "tools/gponval/plugin_location.h"

namespace gponval {
namespace {

constexpr const char* kHelp =
    "Lists the validation points of the model.\n"
    "\n"
    "Lists the validation points of the data model that the plug-in serves, in the order in\n"
    "which a commit calls them. A point marked \"list\" is called once for the whole list if\n"
    "an entry of it changed; the others are called for each instance that changed.\n";

constexpr const char* kExamples =
    "Examples:\n"
    "  gponval points\n"
    "  gponval points --format json\n"
    "\n";

constexpr std::size_t kNameSize = 256;
constexpr int kJsonIndent = 2;

using Points = std::vector<tarnd::PointInModel>;

std::string served_name(const tarnd::PluginEntryPoints& plugin) {
  std::array<char, kNameSize> name{};
  plugin.get_validation_point(name.data(), static_cast<int>(name.size()));
  return name.data();
}

void print_text(const Points& points) {
  std::size_t width = 0;
  for (const auto& [node, point] : points) width = std::max(width, point->request.size());
  for (const auto& [node, point] : points) {
    std::cout << std::left << std::setw(static_cast<int>(width)) << point->request << "  "
              << (point->call_once ? "list   " : "       ") << node->path() << '\n';
  }
}

void print_json(const Points& points) {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const auto& [node, point] : points) {
    list.push_back({{"request", point->request},
                    {"path", node->path()},
                    {"call-once", point->call_once},
                    {"priority", point->priority}});
  }
  const nlohmann::ordered_json object = {{"points", std::move(list)}};
  std::cout << object.dump(kJsonIndent) << '\n';
}

ExitStatus list_points(const RunOptions& options) {
  const tarnd::store::Schema schema(find_model());
  const tarnd::Plugin plugin(find_plugin(options.plugin));
  const Points points = tarnd::validation_points(schema, served_name(plugin.entry_points()));
  if (options.format == "json") {
    print_json(points);
  } else {
    print_text(points);
  }
  finish_output();
  return ExitStatus::kAccepted;
}

}  // namespace

Command add_points(CLI::App& gponval) {
  CLI::App* app = gponval.add_subcommand("points", kHelp);
  auto options = std::make_shared<RunOptions>();
  app->footer(std::string(kExamples) + kExitStatusHelp);
  add_plugin_option(*app, *options);
  add_format_option(*app, *options);
  return {app, [options] { return list_points(*options); }};
}

}  // namespace gponval
