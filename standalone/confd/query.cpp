#include "standalone/confd/query.h"

#include <algorithm>
#include <string>

#include "standalone/confd/errors.h"
#include "standalone/confd/integers.h"
#include "standalone/confd/print.h"
#include "standalone/store/xpath.h"

namespace tarnd::confd {
namespace {

const std::vector<Selector>& selectors_for(const std::vector<Selection>& selections,
                                           const lyd_node* result) {
  const store::SchemaNode* schema = &store::schema_of(result);
  return std::find_if(selections.begin(), selections.end(),
                      [&](const Selection& selection) { return selection.result == schema; })
      ->selectors;
}

// -1, 0 or 1. A node that does not exist comes first; values of other than these types have no
// order.
int compare(const confd_value_t& left, const confd_value_t& right) {
  const auto order = [](const auto& l, const auto& r) {
    return l < r ? -1 : static_cast<int>(r < l);
  };
  if (left.type != right.type) return order(left.type, right.type);
  int result = 0;
  const auto order_by = [&](auto member) { result = order(left.val.*member, right.val.*member); };
  if (visit_integer(left.type, order_by)) return result;
  switch (left.type) {
    case C_BUF:
      return order(value_text(left), value_text(right));
    case C_BOOL:
      return order(left.val.boolean, right.val.boolean);
    case C_ENUM_VALUE:
      return order(left.val.enumvalue, right.val.enumvalue);
    case C_IPV4:
      return order(ntohl(left.val.ip.s_addr), ntohl(right.val.ip.s_addr));
    default:
      return 0;
  }
}

// The selectors for every kind of node among the results; nothing if the call has failed.
std::optional<std::vector<Selection>> make_selections(const store::Schema& schema,
                                                      std::span<const char* const> paths,
                                                      const std::vector<const lyd_node*>& results) {
  std::vector<Selection> selections;
  for (const lyd_node* result : results) {
    const store::SchemaNode* kind = &store::schema_of(result);
    if (std::any_of(selections.begin(), selections.end(),
                    [&](const Selection& known) { return known.result == kind; })) {
      continue;
    }
    Selection& added = selections.emplace_back(Selection{kind, {}});
    for (const char* path : paths) {
      auto selector = Selector::make(schema, *kind, path);
      if (!selector.has_value()) {
        fail(CONFD_ERR_XPATH, "'" + std::string(path) + "' is no node of '" + kind->path() + "'");
        return std::nullopt;
      }
      added.selectors.push_back(std::move(*selector));
    }
  }
  return selections;
}

// Sorts the results by the values at the paths, the first path first; false if the call has failed.
bool sort_results(const Model& model, const store::Datastore& datastore,
                  std::span<const char* const> paths, std::vector<const lyd_node*>& results) {
  const auto selections = make_selections(datastore.schema(), paths, results);
  if (!selections.has_value()) return false;
  const auto less = [&](const lyd_node* left, const lyd_node* right) {
    const std::vector<Selector>& left_keys = selectors_for(*selections, left);
    const std::vector<Selector>& right_keys = selectors_for(*selections, right);
    for (std::size_t i = 0; i < paths.size(); ++i) {
      const int order = compare(left_keys[i].value(model, datastore, left).get(),
                                right_keys[i].value(model, datastore, right).get());
      if (order != 0) return order < 0;
    }
    return false;
  };
  std::stable_sort(results.begin(), results.end(), less);
  return true;
}

// The context node of a query; false if the call has failed.
bool find_context(const store::Datastore& datastore, const char* text, const lyd_node*& context) {
  context = nullptr;
  if (text == nullptr) return true;
  std::string why;
  const auto path = store::Path::parse(datastore.schema(), text, &why);
  if (!path.has_value()) {
    fail(CONFD_ERR_BADPATH, why);
    return false;
  }
  context = datastore.find(*path);
  if (context == nullptr) fail(CONFD_ERR_NOEXISTS, "the context node does not exist");
  return context != nullptr;
}

}  // namespace

std::optional<Query> find_results(const Model& model, const store::Datastore& datastore,
                                  const QueryRequest& request) {
  const lyd_node* context = nullptr;
  if (!find_context(datastore, request.context_node, context)) return std::nullopt;
  store::XPath xpath(datastore, context);
  auto results = xpath.nodes(request.expression);
  if (!results.has_value()) {
    fail(CONFD_ERR_XPATH, xpath.error());
    return std::nullopt;
  }
  auto selections = make_selections(datastore.schema(), request.select, *results);
  if (!selections.has_value()) return std::nullopt;
  if (!request.sort.empty() && !sort_results(model, datastore, request.sort, *results)) {
    return std::nullopt;
  }
  Query query;
  query.num_elements = request.select.size();
  query.results = std::move(*results);
  query.selections = std::move(*selections);
  return query;
}

std::unique_ptr<Chunk> next_chunk(const Model& model, const store::Datastore& datastore,
                                  Query& query) {
  const std::size_t begin = std::min(query.next, query.results.size());
  const std::size_t end = begin + std::min(query.chunk_size, query.results.size() - begin);
  auto chunk = make_chunk(query.form, end - begin, query.num_elements);
  chunk->offset = static_cast<int>(begin) + 1;
  std::size_t element = 0;
  for (std::size_t i = begin; i < end; ++i) {
    const lyd_node* result = query.results[i];
    for (const Selector& selector : selectors_for(query.selections, result)) {
      chunk->fill(element++, {model, datastore, selector, result});
    }
  }
  query.next = end;
  return chunk;
}

}  // namespace tarnd::confd
