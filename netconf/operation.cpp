#include "netconf/operation.h"

#include <utility>

namespace tarnd::netconf {

void refuse(RpcError error) {
  throw RpcFailure(std::move(error));
}

const Element* find_parameter(const Run& run, std::string_view name) {
  for (const Element& child : run.operation.children) {
    if (child.name == name) return &child;
  }
  return nullptr;
}

const Element& parameter(const Run& run, std::string_view name) {
  const Element* found = find_parameter(run, name);
  if (found == nullptr) refuse(missing_element(std::string(name)));
  return *found;
}

std::string_view to_string(Target target) {
  return target == Target::kRunning ? "running" : "candidate";
}

Target datastore_in(const Run& run, std::string_view name) {
  const Element& element = parameter(run, name);
  if (element.children.size() != 1) refuse(missing_element("running or candidate"));
  const Element& named = element.children.front();
  if (named.is(kBaseNamespace, "running")) return Target::kRunning;
  if (named.is(kBaseNamespace, "candidate")) return Target::kCandidate;
  refuse(invalid_value("the datastore '" + named.name +
                       "' does not exist; there are running and candidate"));
}

std::string session_name(const Run& run) {
  return "session " + std::to_string(run.caller.id);
}

}  // namespace tarnd::netconf
