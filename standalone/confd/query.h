#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "confd_maapi.h"
#include "standalone/confd/model.h"
#include "standalone/confd/query_chunk.h"
#include "standalone/confd/selector.h"
#include "standalone/store/datastore.h"

namespace tarnd::confd {

/// What a query asks for. The paths of `select` and `sort` begin at each node that is found.
struct QueryRequest {
  const char* expression = nullptr;    ///< XPath of the nodes to find
  const char* context_node = nullptr;  ///< path of the expression's context, or null for the root
  std::span<const char* const> select;
  std::span<const char* const> sort;
};

/// A started query: its results are fixed, their values are read chunk by chunk.
struct Query {
  confd_query_result_type form = CONFD_QUERY_STRING;
  std::size_t num_elements = 0;
  std::size_t chunk_size = 0;
  std::size_t next = 0;  ///< index of the next chunk's first result
  std::vector<const lyd_node*> results;
  std::vector<Selection> selections;
};

/// Finds and sorts the results of a query; the caller sets the form and size of its chunks. If it
/// returns nothing, the call has failed.
std::optional<Query> find_results(const Model& model, const store::Datastore& datastore,
                                  const QueryRequest& request);

/// Reads the next results of a query. A chunk without results is the end.
std::unique_ptr<Chunk> next_chunk(const Model& model, const store::Datastore& datastore,
                                  Query& query);

}  // namespace tarnd::confd
