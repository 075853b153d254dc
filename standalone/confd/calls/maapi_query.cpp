// Queries: the nodes that an XPath expression finds, with selected values, in chunks.

#include <cstddef>
#include <utility>

#include "confd_maapi.h"
#include "standalone/confd/call.h"
#include "standalone/confd/errors.h"
#include "standalone/confd/query.h"

namespace tarnd::confd {
namespace {

constexpr std::size_t kDefaultChunkSize = 100;

struct QueryInSession {
  SessionState* session = nullptr;
  Query* query = nullptr;
};

// The query with that handle; null if the call has failed.
QueryInSession enter_query(PlatformCall call, int sock, int handle) {
  SessionState* session = enter_session(call, sock);
  if (session == nullptr) return {};
  const auto found = session->queries.find(handle);
  if (found == session->queries.end()) {
    fail(CONFD_ERR_NOEXISTS, "no query has this handle");
    return {};
  }
  return {session, &found->second};
}

}  // namespace
}  // namespace tarnd::confd

using tarnd::PlatformCall;

int maapi_query_start(int sock, int thandle, const char* expr, const char* context_node,
                      int chunk_size, int initial_offset, enum confd_query_result_type result_as,
                      int nselect, const char* select[], int nsort, const char* sort[]) {
  using namespace tarnd::confd;
  tarnd::SessionState* session = enter_session(PlatformCall::maapi_query_start, sock, thandle);
  if (session == nullptr) return CONFD_ERR;
  if (chunk_size < 0 || initial_offset < 1 || nselect < 1 || nsort < 0) {
    return fail(CONFD_ERR_PROTOUSAGE, "a number of the query is out of range");
  }
  auto query = find_results(session->model, session->transaction.datastore(),
                            {expr,
                             context_node,
                             {select, static_cast<std::size_t>(nselect)},
                             {sort, static_cast<std::size_t>(nsort)}});
  if (!query.has_value()) return CONFD_ERR;
  query->form = result_as;
  query->chunk_size = chunk_size > 0 ? static_cast<std::size_t>(chunk_size) : kDefaultChunkSize;
  query->next = static_cast<std::size_t>(initial_offset) - 1;
  const int handle = tarnd::next_number();
  session->queries.emplace(handle, std::move(*query));
  return handle;
}

int maapi_query_result(int sock, int qh, struct confd_query_result** qrs) {
  const auto [session, query] =
      tarnd::confd::enter_query(PlatformCall::maapi_query_result, sock, qh);
  if (query == nullptr) return CONFD_ERR;
  const tarnd::store::Datastore& datastore = session->transaction.datastore();
  *qrs = tarnd::confd::next_chunk(session->model, datastore, *query).release();
  return CONFD_OK;
}

int maapi_query_free_result(struct confd_query_result* qrs) {
  tarnd::enter_platform_call(PlatformCall::maapi_query_free_result);
  delete static_cast<tarnd::confd::Chunk*>(qrs);
  return CONFD_OK;
}

int maapi_query_stop(int sock, int qh) {
  const auto [session, query] = tarnd::confd::enter_query(PlatformCall::maapi_query_stop, sock, qh);
  if (query == nullptr) return CONFD_ERR;
  session->queries.erase(qh);
  return CONFD_OK;
}
