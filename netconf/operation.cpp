#include "netconf/operation.h"

#include <utility>

#include "netconf/parameters.h"

namespace tarnd::netconf {

namespace {

Target target_named(const Element& element) {
  for (const Target target : {Target::kRunning, Target::kCandidate}) {
    if (!element.is(kBaseNamespace, to_string(target))) continue;
    check_nothing_in(element);
    return target;
  }
  if (element.name_space != kBaseNamespace) {
    refuse(unknown_namespace(element.name, element.name_space));
  }
  refuse(unknown_element(element.name));
}

}  // namespace

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
  if (element.children.empty()) refuse(missing_element("running"));
  for (const Element& child : element.children) target_named(child);
  if (element.children.size() == 1) return target_named(element.children.front());
  refuse(bad_element(element.children[1].name,
                     "'" + element.name + "' names several datastores; it takes one"));
}

std::string session_name(const Run& run) {
  return "session " + std::to_string(run.caller.id);
}

}  // namespace tarnd::netconf
