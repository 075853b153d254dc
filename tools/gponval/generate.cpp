#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/gponval/card_faults.h"
#include "tools/gponval/card_size.h"
#include "tools/gponval/card_variation.h"
#include "tools/gponval/commands.h"
#include "tools/gponval/generated_card.h"
#include "tools/gponval/output.h"
#include "tools/gponval/whole_number.h"

namespace gponval {
namespace {

constexpr const char* kHelp =
    "Writes a valid card of any size, or one with known faults.\n"
    "\n"
    "Writes the configuration of a card to standard output, as XML: the same bytes for the\n"
    "same options, and valid under every rule of the plug-in. Without options it is a full\n"
    "card. The links are 1/1/1, 1/1/2 and so on, the XGS-PON links after the GPON links.\n"
    "The ONUs authenticate by serial number.\n"
    "More than 4096 service ports are accepted only with a --card of as many\n"
    "max-service-ports.\n"
    "\n"
    "With --seed, cards of one size differ: the numbers are the most, and a card has between\n"
    "half of them and all, except links and GEM ports; names, VLANs, serial numbers and\n"
    "profiles vary. Each fault of --faults is found by its own requests when the card is\n"
    "committed to an empty one, and nothing else is.\n";

constexpr const char* kExamples =
    "Examples:\n"
    "  gponval generate > card.xml\n"
    "  gponval generate --links 2 --onus 8 --service-ports 16 > small.xml\n"
    "  gponval generate --links 64 --service-ports 16384 > four-times.xml\n"
    "  gponval generate --links 0 --xgs-links 4 > xgs.xml\n"
    "  gponval generate --size town --seed 7 > seventh.xml\n"
    "  gponval generate --size town --faults serial-number,ssid > wrong.xml\n"
    "  gponval generate --faults list\n"
    "\n";

struct SizeName {
  const char* name;
  CardSize size;
};

constexpr std::array<SizeName, 2> kSizes = {{{"full", {}}, {"town", kTown}}};

using Number = std::uint32_t CardSize::*;

struct GenerateArguments {
  std::string size = kSizes.front().name;
  std::vector<std::pair<Number, std::uint32_t>> numbers;  // in place of those of the size
  std::optional<std::uint32_t> seed;
  std::optional<std::string> faults;
};

CardSize size_of(const GenerateArguments& arguments) {
  const auto* named = std::find_if(kSizes.begin(), kSizes.end(), [&](const SizeName& known) {
    return known.name == arguments.size;
  });
  CardSize size = named->size;
  for (const auto& [number, value] : arguments.numbers) size.*number = value;
  check_card_size(size);
  return size;
}

void list_faults() {
  std::size_t name_width = 0;
  std::size_t requests_width = 0;
  for (const FaultKind& kind : fault_kinds()) {
    name_width = std::max(name_width, kind.name.size());
    requests_width = std::max(requests_width, kind.requests.size());
  }
  const auto column = [](std::string_view text, std::size_t width) {
    return std::string(text) + std::string(width + 2 - text.size(), ' ');
  };
  for (const FaultKind& kind : fault_kinds()) {
    std::cout << column(kind.name, name_width) << column(kind.requests, requests_width) << kind.text
              << '\n';
  }
}

void generate_card(const GenerateArguments& arguments) {
  std::vector<const FaultKind*> faults;
  if (arguments.faults.has_value()) faults = parse_faults(*arguments.faults);
  CardVariation variation;
  if (arguments.seed.has_value()) variation = CardVariation(*arguments.seed);
  CardSize size = variation.varied(size_of(arguments));
  const CardAdditions additions = add_faults(faults, size);
  check_card_size(size);
  write_card(std::cout, size, variation, additions);
}

ExitStatus generate(const GenerateArguments& arguments) {
  if (arguments.faults == "list") {
    list_faults();
  } else {
    generate_card(arguments);
  }
  finish_output();
  return ExitStatus::kAccepted;
}

void add_number(CLI::App& app, const std::string& name, GenerateArguments& arguments, Number number,
                const std::string& help) {
  app.add_option_function<std::uint32_t>(
         name,
         [number, &arguments](std::uint32_t value) {
           arguments.numbers.emplace_back(number, value);
         },
         help + " (" + std::to_string(CardSize().*number) + ")")
      ->type_name("N")
      ->transform(whole_number(0, UINT32_MAX));
}

}  // namespace

Command add_generate(CLI::App& gponval) {
  CLI::App* app = gponval.add_subcommand("generate", kHelp);
  auto arguments = std::make_shared<GenerateArguments>();
  app->footer(std::string(kExamples) + kExitStatusHelp);
  std::vector<std::string> sizes;
  for (const SizeName& known : kSizes) sizes.emplace_back(known.name);
  app->add_option("--size", arguments->size, "The numbers that are not given: full or town (full)")
      ->type_name("full|town")
      ->check(CLI::IsMember(sizes));
  const struct {
    const char* name;
    Number number;
    const char* help;
  } numbers[] = {
      {"--links", &CardSize::links, "GPON links"},
      {"--xgs-links", &CardSize::xgs_links, "XGS-PON links"},
      {"--onus", &CardSize::onus, "ONUs on each link"},
      {"--service-ports", &CardSize::service_ports, "Service ports"},
      {"--bandwidth-profiles", &CardSize::bandwidth_profiles, "Bandwidth profiles"},
      {"--line-profiles", &CardSize::line_profiles, "Line profiles"},
      {"--gems", &CardSize::gems, "GEM ports in each line profile"},
      {"--service-profiles", &CardSize::service_profiles, "Service profiles"},
      {"--rg-profiles", &CardSize::rg_profiles, "Residential-gateway profiles"},
      {"--tr069-profiles", &CardSize::tr069_profiles, "TR-069 server profiles"},
      {"--sip-profiles", &CardSize::sip_profiles, "SIP-agent profiles"},
      {"--media-profiles", &CardSize::media_profiles, "Media profiles"},
  };
  for (const auto& [name, number, help] : numbers) {
    add_number(*app, name, *arguments, number, help);
  }
  app->add_option("--seed", arguments->seed,
                  "Makes cards that differ, always the same for the same seed")
      ->type_name("N")
      ->transform(whole_number(0, UINT32_MAX));
  app->add_option("--faults", arguments->faults,
                  "Adds these faults, separated by commas, or all; list prints them")
      ->type_name("LIST");
  return {app, [arguments] { return generate(*arguments); }};
}

}  // namespace gponval
