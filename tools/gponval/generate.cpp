#include <charconv>
#include <cstdint>
#include <iostream>
#include <memory>
#include <string>
#include <system_error>

#include "tools/gponval/commands.h"
#include "tools/gponval/generated_card.h"
#include "tools/gponval/output.h"

namespace gponval {
namespace {

constexpr const char* kHelp =
    "Writes a valid card of any size.\n"
    "\n"
    "Writes the configuration of a card to standard output, as XML: the same bytes for the\n"
    "same options, and valid under every rule of the plug-in. Without options it is a full\n"
    "card. The links are 1/1/1, 1/1/2 and so on, the XGS-PON links after the GPON links.\n"
    "The ONUs authenticate by serial number.\n"
    "More than 4096 service ports are accepted only with a --card of as many\n"
    "max-service-ports.\n";

constexpr const char* kExamples =
    "Examples:\n"
    "  gponval generate > card.xml\n"
    "  gponval generate --links 2 --onus 8 --service-ports 16 > small.xml\n"
    "  gponval generate --links 64 --service-ports 16384 > four-times.xml\n"
    "  gponval generate --links 0 --xgs-links 4 > xgs.xml\n"
    "\n";

ExitStatus generate(const CardSize& size) {
  check_card_size(size);
  write_card(std::cout, size);
  finish_output();
  return ExitStatus::kAccepted;
}

// The library's own conversion reads 010 as 8, and its message has no range.
std::uint32_t number_of(const std::string& option, const std::string& text) {
  std::uint32_t number = 0;
  const char* end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || rest != end) {
    throw CLI::ValidationError(
        option, "'" + text + "' is no number from 0 to " + std::to_string(UINT32_MAX));
  }
  return number;
}

void add_number(CLI::App& app, const std::string& name, std::uint32_t& number,
                const std::string& help) {
  app.add_option_function<std::string>(
         name, [name, &number](const std::string& text) { number = number_of(name, text); },
         help + " (" + std::to_string(number) + ")")
      ->type_name("N");
}

}  // namespace

Command add_generate(CLI::App& gponval) {
  CLI::App* app = gponval.add_subcommand("generate", kHelp);
  auto size = std::make_shared<CardSize>();
  app->footer(std::string(kExamples) + kExitStatusHelp);
  add_number(*app, "--links", size->links, "GPON links");
  add_number(*app, "--xgs-links", size->xgs_links, "XGS-PON links");
  add_number(*app, "--onus", size->onus, "ONUs on each link");
  add_number(*app, "--service-ports", size->service_ports, "Service ports");
  add_number(*app, "--bandwidth-profiles", size->bandwidth_profiles, "Bandwidth profiles");
  add_number(*app, "--line-profiles", size->line_profiles, "Line profiles");
  add_number(*app, "--gems", size->gems, "GEM ports in each line profile");
  add_number(*app, "--service-profiles", size->service_profiles, "Service profiles");
  add_number(*app, "--rg-profiles", size->rg_profiles, "Residential-gateway profiles");
  add_number(*app, "--tr069-profiles", size->tr069_profiles, "TR-069 server profiles");
  add_number(*app, "--sip-profiles", size->sip_profiles, "SIP-agent profiles");
  add_number(*app, "--media-profiles", size->media_profiles, "Media profiles");
  return {app, [size] { return generate(*size); }};
}

}  // namespace gponval
