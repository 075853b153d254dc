#include "netconf/monitoring.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "netconf/utc_time.h"
#include "netconf/warnings.h"
#include "netconf/xml_text.h"
#include "netconf/yang_modules.h"
#include "standalone/store/libyang_compat.h"

namespace tarnd::netconf {
namespace {

std::string element(std::string_view name, std::string_view content) {
  const std::string tag(name);
  return "<" + tag + ">" + std::string(content) + "</" + tag + ">";
}

std::string leaf(std::string_view name, std::string_view value) {
  return element(name, escaped(value));
}

std::string leaf(std::string_view name, std::uint64_t value) {
  return element(name, std::to_string(value));
}

std::string counts(const MessageCounts& counts) {
  return leaf("in-rpcs", counts.rpcs) + leaf("in-bad-rpcs", counts.bad_rpcs) +
         leaf("out-rpc-errors", counts.errors) + leaf("out-notifications", std::uint64_t{0});
}

std::string datastore(std::string_view name, const std::optional<SessionId>& holder,
                      std::time_t since) {
  std::string content = leaf("name", name);
  if (holder.has_value()) {
    content += element("locks", element("global-lock", leaf("locked-by-session", *holder) +
                                                           leaf("locked-time", utc_time(since))));
  }
  return element("datastore", content);
}

std::string session(SessionId id, const SessionInfo& info) {
  return element("session", leaf("session-id", id) +
                                "<transport xmlns:gvn=\"urn:gponval:netconf\">gvn:unix-socket"
                                "</transport>" +
                                leaf("username", info.user) +
                                leaf("login-time", utc_time(info.login)) + counts(info.counts));
}

std::string schemas(const YangModules& modules) {
  std::string text;
  for (const YangModule& module : modules.all()) {
    text += element("schema", leaf("identifier", module.name) + leaf("version", module.revision) +
                                  "<format>yang</format>" + leaf("namespace", module.name_space) +
                                  "<location>NETCONF</location>");
  }
  return element("schemas", text);
}

std::string monitoring(const Card& card, const std::string& offered) {
  std::string sessions;
  for (const auto& [id, info] : card.sessions) sessions += session(id, info);
  const ServerCounts& server = card.counts;
  return "<netconf-state xmlns=\"" + std::string(kMonitoringNamespace) + "\">" + offered +
         element("datastores",
                 datastore("running", card.running_lock, card.running_locked) +
                     datastore("candidate", card.candidate_lock, card.candidate_locked)) +
         schemas(*card.modules) + element("sessions", sessions) +
         element("statistics", leaf("netconf-start-time", utc_time(server.start)) +
                                   leaf("in-bad-hellos", server.bad_hellos) +
                                   leaf("in-sessions", server.sessions) +
                                   leaf("dropped-sessions", server.dropped) +
                                   counts(server.messages)) +
         "</netconf-state>";
}

std::string library(const YangModules& modules) {
  std::string text = leaf("module-set-id", modules.set_id());
  for (const YangModule& module : modules.all()) {
    std::string features;
    for (const std::string& feature : module.features) features += leaf("feature", feature);
    text += element("module",
                    leaf("name", module.name) + leaf("revision", module.revision) +
                        leaf("namespace", module.name_space) + features +
                        leaf("conformance-type", module.is_implemented ? "implement" : "import"));
  }
  return "<modules-state xmlns=\"urn:ietf:params:xml:ns:yang:ietf-yang-library\">" + text +
         "</modules-state>";
}

std::string commit_line(const state::CommitLine& line) {
  const auto optional_leaf = [](std::string_view name, const std::optional<std::string>& value) {
    return value.has_value() ? leaf(name, *value) : std::string();
  };
  return element("commit",
                 leaf("number", static_cast<std::uint64_t>(line.number)) +
                     leaf("time", utc_time(line.time)) + leaf("kind", state::to_string(line.kind)) +
                     leaf("user", line.author.user) + leaf("session", line.author.session) +
                     optional_leaf("label", line.author.label) +
                     optional_leaf("comment", line.author.comment) +
                     leaf("changes", static_cast<std::uint64_t>(line.changes)));
}

std::string commit_history(const state::Journal& journal) {
  std::string commits;
  for (const state::CommitLine& line : journal.latest()) commits += commit_line(line);
  return "<commit-history xmlns=\"" + std::string(kWarningsNamespace) + "\">" + commits +
         "</commit-history>";
}

std::string text_of(const Run& run, std::string_view name) {
  const Element* given = find_parameter(run, name);
  return given != nullptr ? std::string(trimmed(given->text)) : std::string();
}

}  // namespace

store::TreeOwner state_of(const Card& card, const std::string& offered) {
  store::TreeOwner tree(nullptr, &lyd_free_all);
  if (card.modules == nullptr) return tree;
  ly_ctx* context = card.modules->context();
  std::string text = monitoring(card, offered) + library(*card.modules);
  if (card.journal != nullptr) text += commit_history(*card.journal);
  lyd_node* read = nullptr;
  if (lyd_parse_data_mem(context, text.c_str(), LYD_XML, LYD_PARSE_ONLY | LYD_PARSE_STRICT, 0,
                         &read) != LY_SUCCESS) {
    throw InputError(store::take_libyang_error(context));
  }
  tree.reset(read);
  return tree;
}

std::string get_schema(const Run& run) {
  const std::string identifier(trimmed(parameter(run, "identifier").text));
  const std::string version = text_of(run, "version");
  const std::string format = text_of(run, "format");
  const std::size_t after_prefix = format.find(':') + 1;
  if (!format.empty() && format.substr(after_prefix) != "yang") {
    refuse(invalid_value("the format is '" + format + "'; schemas have the format yang"));
  }
  const YangModule* found = nullptr;
  for (const YangModule& module : run.card.modules->all()) {
    if (module.name != identifier || (!version.empty() && module.revision != version)) continue;
    if (found != nullptr) {
      RpcError error = error_of("application", "operation-failed",
                                "several schemas have the name '" + identifier + "'");
      error.app_tag = "data-not-unique";
      refuse(error);
    }
    found = &module;
  }
  if (found == nullptr) {
    refuse(error_of("application", "invalid-value",
                    "there is no schema '" + identifier + "'" +
                        (version.empty() ? "" : " of the version '" + version + "'")));
  }
  return "<data xmlns=\"" + std::string(kMonitoringNamespace) + "\">" +
         escaped(YangModules::text_of(*found)) + "</data>";
}

}  // namespace tarnd::netconf
