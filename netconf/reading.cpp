#include "netconf/reading.h"

#include <algorithm>
#include <optional>

#include "netconf/data_text.h"
#include "netconf/monitoring.h"
#include "netconf/subtree_filter.h"
#include "netconf/with_defaults.h"
#include "netconf/xpath_filter.h"
#include "standalone/store/transaction.h"

namespace tarnd::netconf {
namespace {

[[noreturn]] void refuse_type() {
  refuse(bad_attribute("type", "filter", "a filter has the type 'subtree' or 'xpath'"));
}

bool is_by_xpath(const Element& filter) {
  const std::string* type = filter.attribute("type");
  if (type == nullptr || *type == "subtree") return false;
  if (*type != "xpath") refuse_type();
  return true;
}

void append_tree(std::string& text, const lyd_node* tree, Defaults defaults) {
  for (const lyd_node* root = tree; root != nullptr; root = root->next) {
    append_data(text, root, defaults);
  }
}

void append_subtrees(std::string& text, const Element& filter, const lyd_node* tree,
                     Defaults defaults) {
  for (const lyd_node* root = tree; root != nullptr; root = root->next) {
    append_tree(text, select_subtrees(filter, root, defaults).get(), defaults);
  }
}

[[noreturn]] void refuse_namespace() {
  refuse(invalid_value("the filter's XPath expression: no module has one of its namespaces"));
}

// What the filter selects of the configuration and of the server's state, which may be null.
std::string selected(const store::Datastore& datastore, const lyd_node* state,
                     const Element& filter, Defaults defaults) {
  std::string text;
  if (!is_by_xpath(filter)) {
    append_subtrees(text, filter, datastore.root(), defaults);
    append_subtrees(text, filter, state, defaults);
    return text;
  }
  const auto of_configuration = select_by_xpath(filter, datastore.root());
  const auto of_state = state != nullptr ? select_by_xpath(filter, state) : std::nullopt;
  if (!of_configuration.has_value() && !of_state.has_value()) refuse_namespace();
  if (of_configuration.has_value()) append_tree(text, of_configuration->get(), defaults);
  if (of_state.has_value()) append_tree(text, of_state->get(), defaults);
  return text;
}

bool is_costly(const Element& parameter) {
  if (parameter.name != "filter") return false;
  const std::string* type = parameter.attribute("type");
  return type != nullptr && *type == "xpath" ? !is_plain_path(parameter)
                                             : is_many_subtrees(parameter);
}

std::string data_of(const Run& run, const lyd_node* state) {
  const Defaults defaults = defaults_asked_for(run);
  const Element* filter = find_parameter(run, "filter");
  const store::Datastore& datastore = run.card.datastore;
  datastore.settle_order();
  std::string text = "<data>";
  if (filter != nullptr) {
    text += selected(datastore, state, *filter, defaults);
  } else {
    append_data(text, datastore.root(), defaults);
    append_tree(text, state, defaults);
  }
  return text + "</data>";
}

std::string running_with(const Run& run, const lyd_node* state) {
  const store::CommittedSight sight(run.card.candidate);
  return data_of(run, state);
}

}  // namespace

std::string get(const Run& run, const std::string& offered) {
  const store::TreeOwner state = state_of(run.card, offered);
  return running_with(run, state.get());
}

std::string get_config(const Run& run) {
  return datastore_in(run, "source") == Target::kCandidate ? data_of(run, nullptr)
                                                           : running_with(run, nullptr);
}

bool has_costly_filter(const Element& operation) {
  return std::any_of(operation.children.begin(), operation.children.end(), &is_costly);
}

}  // namespace tarnd::netconf
