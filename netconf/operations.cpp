#include "netconf/operations.h"

#include <array>
#include <vector>

#include "netconf/committing.h"
#include "netconf/confirmed_commit.h"
#include "netconf/editing.h"
#include "netconf/ending.h"
#include "netconf/locks.h"
#include "netconf/monitoring.h"
#include "netconf/parameters.h"
#include "netconf/reading.h"
#include "netconf/rolling_back.h"
#include "netconf/warnings.h"
#include "netconf/with_defaults.h"
#include "netconf/xml_text.h"
#include "netconf/yang_modules.h"

namespace tarnd::netconf {
namespace {

constexpr std::array kCapabilities{
    "urn:ietf:params:netconf:base:1.0",
    "urn:ietf:params:netconf:base:1.1",
    "urn:ietf:params:netconf:capability:writable-running:1.0",
    "urn:ietf:params:netconf:capability:candidate:1.0",
    "urn:ietf:params:netconf:capability:confirmed-commit:1.1",
    "urn:ietf:params:netconf:capability:validate:1.0",
    "urn:ietf:params:netconf:capability:validate:1.1",
    "urn:ietf:params:netconf:capability:rollback-on-error:1.0",
    "urn:ietf:params:netconf:capability:xpath:1.0",
    "urn:ietf:params:netconf:capability:with-defaults:1.0?basic-mode=explicit"
    "&also-supported=report-all,report-all-tagged,trim",
};

constexpr Parameter kTarget{"target", Content::kDatastore};
constexpr Parameter kSource{"source", Content::kDatastore};
constexpr Parameter kFilter{"filter", Content::kFilter};
constexpr Parameter kWarnings{"warnings", Content::kWord, kWarningsNamespace};
constexpr Parameter kLabel{"label", Content::kWord, kWarningsNamespace};
constexpr Parameter kComment{"comment", Content::kWord, kWarningsNamespace};
constexpr Parameter kWithDefaults{"with-defaults", Content::kWord, kWithDefaultsNamespace};

struct Operation {
  std::string_view name;
  std::vector<Parameter> parameters;
  std::string (*run)(const Run&);
  std::string_view name_space = kBaseNamespace;
};

constexpr std::string_view kMonitoringModule =
    "urn:ietf:params:xml:ns:yang:ietf-netconf-monitoring?module=ietf-netconf-monitoring"
    "&revision=2010-10-04";

std::string get_all(const Run& run) {
  return get(run, capabilities(run.card));
}

const std::vector<Operation>& operations() {
  static const std::vector<Operation> table = {
      {"get", {kFilter, kWithDefaults}, &get_all},
      {"get-config", {kSource, kFilter, kWithDefaults}, &get_config},
      {"edit-config",
       {kTarget,
        {"default-operation"},
        {"test-option"},
        {"error-option"},
        {"config", Content::kConfiguration}},
       &edit_config},
      {"copy-config", {kTarget, kSource}, &copy_config},
      {"lock", {kTarget}, &lock},
      {"unlock", {kTarget}, &unlock},
      {"validate", {kSource, kWarnings}, &validate},
      {"commit",
       {{"confirmed", Content::kNothing},
        {"confirm-timeout"},
        {"persist"},
        {"persist-id"},
        kWarnings,
        kLabel,
        kComment},
       &commit},
      {kRollback,
       {{"to", Content::kWord, kWarningsNamespace}, kWarnings, kLabel, kComment},
       &roll_back,
       kWarningsNamespace},
      {"cancel-commit", {{"persist-id"}}, &cancel_commit},
      {"discard-changes", {}, &discard_changes},
      {"close-session", {}, &close_session},
      {"kill-session", {{"session-id"}}, &kill_session},
      {"get-schema",
       {{"identifier", Content::kWord, kMonitoringNamespace},
        {"version", Content::kWord, kMonitoringNamespace},
        {"format", Content::kWord, kMonitoringNamespace}},
       &get_schema,
       kMonitoringNamespace},
  };
  return table;
}

bool is_offered(const Card& card, const Operation& operation) {
  if (operation.name == kRollback) return card.journal != nullptr;
  return card.modules != nullptr || operation.name_space != kMonitoringNamespace;
}

const Operation& operation_named(const Card& card, const Element& element) {
  for (const Operation& operation : operations()) {
    if (!element.is(operation.name_space, operation.name)) continue;
    if (is_offered(card, operation)) return operation;
  }
  RpcError error = error_of("protocol", "operation-not-supported",
                            "this server has no operation '" + element.name + "'");
  refuse(error);
}

void append_capability(std::string& text, std::string_view capability) {
  text += "<capability>" + escaped(capability) + "</capability>";
}

std::string of_module(const lys_module& module) {
  std::string text = std::string(module.ns) + "?module=" + module.name;
  if (module.revision != nullptr) text += std::string("&revision=") + module.revision;
  return text;
}

}  // namespace

std::string run_operation(Card& card, Caller& caller, const Element& rpc,
                          const std::string& message) {
  if (rpc.children.empty()) refuse(missing_element("an operation"));
  if (rpc.children.size() > 1) refuse(unknown_element(rpc.children[1].name));
  check_no_text(rpc);
  const Element& element = rpc.children.front();
  const Operation& operation = operation_named(card, element);
  check_parameters(element, operation.parameters);
  return operation.run({card, caller, element, message});
}

bool may_take_long(const Element& rpc) {
  if (rpc.children.size() != 1) return false;
  const Element& operation = rpc.children.front();
  const bool reads =
      operation.is(kBaseNamespace, "get") || operation.is(kBaseNamespace, "get-config");
  return reads && has_costly_filter(operation);
}

std::string capabilities(const Card& card) {
  std::string text;
  for (const char* capability : kCapabilities) append_capability(text, capability);
  append_capability(text, of_module(*card.datastore.schema().root().lysc->module));
  append_capability(text, kWarningsModule);
  if (card.modules != nullptr) {
    append_capability(text, kMonitoringModule);
    append_capability(text,
                      "urn:ietf:params:netconf:capability:yang-library:1.0?revision="
                      "2016-06-21&module-set-id=" +
                          card.modules->set_id());
  }
  return "<capabilities>" + text + "</capabilities>";
}

}  // namespace tarnd::netconf
