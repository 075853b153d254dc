#include "netconf/reading.h"

#include <cstdlib>
#include <memory>

#include "netconf/subtree_filter.h"
#include "netconf/xpath_filter.h"
#include "standalone/store/transaction.h"

namespace tarnd::netconf {
namespace {

std::string print(const store::Schema& schema, const lyd_node* tree) {
  char* text = nullptr;
  const LY_ERR result = lyd_print_mem(&text, tree, LYD_XML, LYD_PRINT_WD_EXPLICIT);
  const std::unique_ptr<char, decltype(&std::free)> owner(text, &std::free);
  if (result != LY_SUCCESS) {
    ly_err_clean(schema.context(), nullptr);
    throw RpcFailure(RpcError{});
  }
  return text != nullptr ? text : "";
}

[[noreturn]] void refuse_type() {
  RpcError error =
      error_of("protocol", "bad-attribute", "a filter has the type 'subtree' or 'xpath'");
  error.info = "<bad-attribute>type</bad-attribute><bad-element>filter</bad-element>";
  refuse(error);
}

store::TreeOwner selected(const store::Datastore& datastore, const Element& filter) {
  const std::string* type = filter.attribute("type");
  datastore.settle_order();
  if (type == nullptr || *type == "subtree") return select_subtrees(filter, datastore.root());
  if (*type != "xpath") refuse_type();
  return select_by_xpath(filter, datastore);
}

std::string print_selected(const store::Datastore& datastore, const Element& filter) {
  const store::TreeOwner tree = selected(datastore, filter);
  return tree != nullptr ? print(datastore.schema(), tree.get()) : "";
}

std::string data_of(const Run& run) {
  const Element* filter = find_parameter(run, "filter");
  const store::Datastore& datastore = run.card.datastore;
  const std::string data =
      filter != nullptr ? print_selected(datastore, *filter) : datastore.print(store::Format::kXml);
  return "<data>" + data + "</data>";
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
