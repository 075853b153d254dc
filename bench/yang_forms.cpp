#include "bench/yang_forms.h"

#include <algorithm>
#include <stdexcept>

#include "bench/full_card.h"

namespace bench {
namespace {

// The time of a validation varies from one run to the next by about the cost of such a rule.
constexpr int kMostRuns = 15;
constexpr double kMillisecondsPerForm = 4000;

std::string last_error(const ly_ctx* context) {
  const ly_err_item* error = ly_err_last(context);
  return error != nullptr && error->msg != nullptr ? error->msg : "unknown error";
}

double validation_milliseconds(YangCard& card) {
  return milliseconds([&] {
    if (!card.validate()) throw std::runtime_error("the card is not valid in YANG");
  });
}

}  // namespace

const std::vector<Form>& yang_forms() {
  static const char* const kOverlap = "no two service ports alike";
  static const char* const kLimit = "number of service ports";
  static const char* const kReferences = "ONU and GEM port of service ports";
  static const char* const kSerials = "serial numbers unique on the card";
  static const char* const kBandwidth = "bandwidth of all links";
  static const char* const kMappings = "VLAN mappings per port";
  static const char* const kAllPorts = "service_port_global_validation";
  static const char* const kEachPort = "sp_gem_check";
  static const char* const kAllOnus = "onu_pwd_sn_unique_check";
  static const char* const kAllLinks = "ponlink_bw_check";
  static const char* const kMapping = "vlan_limit_check";
  static const std::vector<Form> kForms = {
      {kOverlap,
       kAllPorts,
       "unique, -1 as default of the VLAN",
       {"service-port-overlap"},
       true,
       false,
       "-1 may then be given as a VLAN; a link's name is compared as it is spelt"},
      {kOverlap,
       kAllPorts,
       "unique alone",
       {"service-port-overlap-nearly"},
       false,
       false,
       "entries without a VLAN are not compared"},
      {kOverlap,
       kAllPorts,
       "count() of equal entries",
       {"service-port-overlap-by-path"},
       true,
       true,
       ""},
      {kLimit,
       kAllPorts,
       "count() once",
       {"service-port-limit"},
       true,
       false,
       "the limit stands in the model, not in the card"},
      {kLimit,
       kAllPorts,
       "max-elements",
       {"service-port-limit-nearly"},
       false,
       false,
       "entries without a link count as well"},
      {kLimit, kAllPorts, "count() at each entry", {"service-port-limit-by-entry"}, true, true, ""},
      {kReferences,
       kEachPort,
       "keys cut out of the link's name, deref()",
       {"profile-references", "service-port-references"},
       true,
       false,
       "looks at all service ports, not at the changed ones"},
      {kReferences,
       kEachPort,
       "one path in the other",
       {"service-port-references-by-path"},
       true,
       true,
       ""},
      {kSerials,
       kAllOnus,
       "link against links, ONUs by binary digits of their position",
       {"serial-numbers"},
       true,
       false,
       "up to 4096 ONUs on a link"},
      {kSerials,
       kAllOnus,
       "unique on each link",
       {"serial-numbers-nearly"},
       false,
       false,
       "not across links, small letters are others, passwords do not switch it off"},
      {kSerials,
       kAllOnus,
       "count() at each ONU",
       {"serial-numbers-by-onu"},
       false,
       true,
       "small letters are others, passwords do not switch it off"},
      {kBandwidth,
       kAllLinks,
       "one term an ONU and TCONT, deref()",
       {"profile-references", "link-bandwidth"},
       true,
       false,
       "ONUs 1 to 128 and TCONTs 1 to 3; the sums alone"},
      {kMappings,
       kMapping,
       "all ports, once where a profile has over 20 mappings",
       {"vlan-mappings-once"},
       true,
       false,
       "",
       true},
      {kMappings,
       kMapping,
       "the same at each profile",
       {"vlan-mappings-each-profile"},
       true,
       false,
       "",
       true},
      {kMappings,
       kMapping,
       "all ports of each profile",
       {"vlan-mappings-each-port"},
       true,
       false,
       "",
       true},
  };
  return kForms;
}

std::vector<Rule> rules() {
  std::vector<Rule> found;
  for (const Form& form : yang_forms()) {
    if (found.empty() || found.back().name != form.rule) {
      found.push_back({form.rule, form.request});
    }
  }
  return found;
}

std::vector<const char*> best_modules(const std::vector<Rule>& of) {
  std::vector<const char*> modules;
  for (const Rule& rule : of) {
    for (const char* module : best_form(rule.name).modules) {
      if (std::find(modules.begin(), modules.end(), module) == modules.end()) {
        modules.push_back(module);
      }
    }
  }
  return modules;
}

const Form& best_form(const std::string& rule) {
  return *std::find_if(yang_forms().begin(), yang_forms().end(),
                       [&](const Form& form) { return form.rule == rule; });
}

YangCard::YangCard(const std::vector<const char*>& modules, const std::string& text)
    : context_(nullptr, ly_ctx_destroy) {
  ly_ctx* new_context = nullptr;
  if (ly_ctx_new(TARND_MODEL_DIR, LY_CTX_NO_YANGLIBRARY, &new_context) != LY_SUCCESS) {
    throw std::runtime_error("cannot read the model's folder");
  }
  context_.reset(new_context);
  ly_ctx_set_searchdir(new_context, YANG_RULES_DIR);
  ly_ctx_set_searchdir(new_context, WRITTEN_RULES_DIR);
  std::vector<const char*> names{"base"};
  names.insert(names.end(), modules.begin(), modules.end());
  for (const char* name : names) {
    if (ly_ctx_load_module(new_context, name, nullptr, nullptr) == nullptr) {
      throw std::runtime_error("cannot load " + std::string(name) + ": " + last_error(new_context));
    }
  }
  if (lyd_parse_data_mem(new_context, text.c_str(), LYD_XML, LYD_PARSE_ONLY | LYD_PARSE_STRICT, 0,
                         &tree_) != LY_SUCCESS) {
    throw std::runtime_error("cannot read the card: " + last_error(new_context));
  }
}

YangCard::~YangCard() {
  lyd_free_all(tree_);
}

bool YangCard::validate() {
  const bool valid = lyd_validate_all(&tree_, nullptr, LYD_VALIDATE_PRESENT, nullptr) == LY_SUCCESS;
  ly_err_clean(context_.get(), nullptr);
  return valid;
}

double milliseconds_above(const std::vector<const char*>& modules, const std::string& text) {
  YangCard card(modules, text);
  YangCard plain({}, text);
  const double first = validation_milliseconds(card);  // adds the defaults, and costs more
  if (first > kMillisecondsPerForm) return first - validation_milliseconds(plain);
  const int runs = std::clamp(static_cast<int>(kMillisecondsPerForm / first), 1, kMostRuns);
  double with_rules = first;
  double without = validation_milliseconds(plain);
  // In turn, so that both run on the machine in the same state.
  for (int i = 0; i < runs; ++i) {
    with_rules = std::min(with_rules, validation_milliseconds(card));
    without = std::min(without, validation_milliseconds(plain));
  }
  return with_rules - without;
}

}  // namespace bench
