#include "netconf/reading.h"

#include "netconf/data_text.h"
#include "netconf/subtree_filter.h"
#include "netconf/with_defaults.h"
#include "netconf/xpath_filter.h"
#include "standalone/store/transaction.h"

namespace tarnd::netconf {
namespace {

[[noreturn]] void refuse_type() {
  RpcError error =
      error_of("protocol", "bad-attribute", "a filter has the type 'subtree' or 'xpath'");
  error.info = "<bad-attribute>type</bad-attribute><bad-element>filter</bad-element>";
  refuse(error);
}

store::TreeOwner selected(const store::Datastore& datastore, const Element& filter,
                          Defaults defaults) {
  const std::string* type = filter.attribute("type");
  if (type == nullptr || *type == "subtree") {
    return select_subtrees(filter, datastore.root(), defaults);
  }
  if (*type != "xpath") refuse_type();
  return select_by_xpath(filter, datastore);
}

std::string data_of(const Run& run) {
  const Defaults defaults = defaults_asked_for(run);
  const Element* filter = find_parameter(run, "filter");
  const store::Datastore& datastore = run.card.datastore;
  datastore.settle_order();
  std::string text = "<data>";
  if (filter == nullptr) {
    append_data(text, datastore.root(), defaults);
  } else if (const auto tree = selected(datastore, *filter, defaults); tree != nullptr) {
    append_data(text, tree.get(), defaults);
  }
  return text + "</data>";
}

}  // namespace

std::string get(const Run& run) {
  const store::CommittedSight sight(run.card.candidate);
  return data_of(run);
}

std::string get_config(const Run& run) {
  return datastore_in(run, "source") == Target::kCandidate ? data_of(run) : get(run);
}

}  // namespace tarnd::netconf
