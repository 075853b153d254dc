#include "netconf/reading.h"

#include <cstdlib>
#include <memory>

#include "netconf/subtree_filter.h"
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

std::string print_selected(const store::Datastore& datastore, const Element& filter) {
  const std::string* type = filter.attribute("type");
  if (type != nullptr && *type != "subtree") {
    RpcError error =
        error_of("protocol", "bad-attribute", "this server has filters of the type 'subtree' only");
    error.info = "<bad-attribute>type</bad-attribute><bad-element>filter</bad-element>";
    refuse(error);
  }
  datastore.settle_order();
  const store::TreeOwner selected = select_subtrees(filter, datastore.root());
  return selected != nullptr ? print(datastore.schema(), selected.get()) : "";
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
