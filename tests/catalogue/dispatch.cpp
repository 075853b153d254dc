#include "tests/catalogue/dispatch.h"

#include <optional>
#include <stdexcept>

#include "gpon_card_valid.h"
#include "standalone/confd/keypath.h"
#include "standalone/confd/values.h"

namespace tarnd::test {
namespace {

// The new value of a leaf; for other nodes none.
confd::OwnedValue new_value(const confd::Model& model, const store::Transaction& transaction,
                            const store::Path& path) {
  const lyd_node* node = path.last().node->kind == store::NodeKind::kLeaf
                             ? transaction.datastore().find(path)
                             : nullptr;
  return node != nullptr ? confd::OwnedValue(confd::own_leaf_value(model, node))
                         : confd::OwnedValue();
}

}  // namespace

Outcome dispatch(ValidationSession& session, const std::string& request, confd_hkeypath_t* keypath,
                 confd_value_t* new_value) {
  session.begin_request(request);
  const int cursors_before = session.open_resources().cursors;
  const int result = validate(session.context(), keypath, new_value);
  return {result, session.error_text().value_or(""),
          session.open_resources().cursors - cursors_before};
}

Outcome dispatch(ValidationSession& session, const std::string& request,
                 const std::string& keypath) {
  const store::Transaction& transaction = session.transaction();
  const confd::Model& model = confd::load_model(transaction.datastore().schema());
  std::string why;
  const auto path = store::Path::parse(transaction.datastore().schema(), keypath, &why);
  if (!path.has_value()) throw std::invalid_argument(why);
  confd::OwnedKeypath target(model, *path);
  confd::OwnedValue value = new_value(model, transaction, *path);
  return dispatch(session, request, target.get(), value.data());
}

Outcome dispatch(ValidationSession& session, const Scenario& scenario) {
  return dispatch(session, scenario.request, scenario.keypath);
}

}  // namespace tarnd::test
