// MAAPI queries: the nodes that an expression names, with selected values, in chunks.

#include "standalone/confd/query.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <type_traits>

#include "standalone/confd/errors.h"
#include "standalone/confd/keypath.h"
#include "standalone/confd/place.h"
#include "standalone/confd/print.h"
#include "standalone/confd/xpath.h"

namespace tarnd::confd {
namespace {

constexpr std::size_t kDefaultChunkSize = 100;

using Row = std::remove_pointer_t<decltype(confd_query_result::results)>;
using KeypathAndValue = std::remove_pointer_t<decltype(Row::kv)>;

// A chunk with the memory of everything in it.
struct Chunk : confd_query_result {
  // cppcheck-suppress uninitDerivedMemberVar ; the parentheses make all of it zero
  Chunk() : confd_query_result() {}
  Chunk(const Chunk&) = delete;
  Chunk& operator=(const Chunk&) = delete;
  ~Chunk() {
    for (confd_tag_value_t& tagged : tagged_values) release(tagged.v);
    for (KeypathAndValue& pair : keypaths_and_values) release(pair.val);
  }

  std::vector<Row> rows;
  std::vector<std::string> texts;
  std::vector<char*> text_pointers;
  std::vector<confd_hkeypath_t> keypaths;
  std::vector<KeypathAndValue> keypaths_and_values;
  std::vector<confd_tag_value_t> tagged_values;
};

const Selection& selection_for(const Query& query, const lyd_node* result) {
  const store::SchemaNode* schema = &store::schema_of(result);
  return *std::find_if(query.selections.begin(), query.selections.end(),
                       [&](const Selection& selection) { return selection.result == schema; });
}

// A value as text, by the name that the model has for it.
std::string text_of(const store::SchemaNode& node, const confd_value_t& value) {
  return value_text(node, value).value_or(value_text(value));
}

// -1, 0 or 1. What does not exist comes first; values of other than these types have no order.
int compare(const confd_value_t& left, const confd_value_t& right) {
  const auto order = [](const auto& l, const auto& r) {
    return l < r ? -1 : static_cast<int>(r < l);
  };
  if (left.type != right.type) return order(left.type, right.type);
  switch (left.type) {
    case C_BUF:
      return order(value_text(left), value_text(right));
    case C_INT8:
      return order(left.val.i8, right.val.i8);
    case C_INT16:
      return order(left.val.i16, right.val.i16);
    case C_INT32:
      return order(left.val.i32, right.val.i32);
    case C_INT64:
      return order(left.val.i64, right.val.i64);
    case C_UINT8:
      return order(left.val.u8, right.val.u8);
    case C_UINT16:
      return order(left.val.u16, right.val.u16);
    case C_UINT32:
      return order(left.val.u32, right.val.u32);
    case C_UINT64:
      return order(left.val.u64, right.val.u64);
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

// Reads one query's results.
class ChunkReader {
 public:
  ChunkReader(const SessionState& session, const Query& query)
      : model_(session.model), datastore_(session.transaction.datastore()), query_(query) {}

  std::unique_ptr<Chunk> read(std::size_t begin, std::size_t end) {
    auto chunk = std::make_unique<Chunk>();
    chunk->type = query_.type;
    chunk->offset = static_cast<int>(begin) + 1;
    chunk->nresults = static_cast<int>(end - begin);
    chunk->nelements = static_cast<int>(query_.num_elements);
    make_room(*chunk, (end - begin) * query_.num_elements);
    chunk->rows.resize(end - begin);
    chunk->results = chunk->rows.data();
    std::size_t element = 0;
    for (std::size_t i = begin; i < end; ++i) {
      chunk->rows[i - begin] = row_at(*chunk, element);
      const lyd_node* result = query_.results[i];
      for (const Selector& selector : selection_for(query_, result).selectors) {
        fill(*chunk, element++, selector, result);
      }
    }
    return chunk;
  }

 private:
  void make_room(Chunk& chunk, std::size_t elements) const {
    switch (query_.type) {
      case CONFD_QUERY_STRING:
        chunk.texts.resize(elements);
        chunk.text_pointers.resize(elements);
        break;
      case CONFD_QUERY_HKEYPATH:
        chunk.keypaths.resize(elements);
        break;
      case CONFD_QUERY_HKEYPATH_VALUE:
        chunk.keypaths_and_values.resize(elements);
        break;
      case CONFD_QUERY_TAG_VALUE:
        chunk.tagged_values.resize(elements);
        break;
    }
  }

  [[nodiscard]] Row row_at(Chunk& chunk, std::size_t element) const {
    Row row = {};
    switch (query_.type) {
      case CONFD_QUERY_STRING:
        row.str = chunk.text_pointers.data() + element;
        break;
      case CONFD_QUERY_HKEYPATH:
        row.hkp = chunk.keypaths.data() + element;
        break;
      case CONFD_QUERY_HKEYPATH_VALUE:
        row.kv = chunk.keypaths_and_values.data() + element;
        break;
      case CONFD_QUERY_TAG_VALUE:
        row.tv = chunk.tagged_values.data() + element;
        break;
    }
    return row;
  }

  void fill(Chunk& chunk, std::size_t element, const Selector& selector,
            const lyd_node* result) const {
    const store::SchemaNode& target = selector.target();
    OwnedValue value = selector.value(model_, datastore_, result);
    switch (query_.type) {
      case CONFD_QUERY_STRING:
        chunk.texts[element] = text_of(target, value.get());
        chunk.text_pointers[element] = chunk.texts[element].data();
        break;
      case CONFD_QUERY_HKEYPATH:
        // The keypath of what does not exist is empty.
        set_keypath(model_, selector.node(datastore_, result), chunk.keypaths[element]);
        break;
      case CONFD_QUERY_HKEYPATH_VALUE:
        set_keypath(model_, selector.node(datastore_, result),
                    chunk.keypaths_and_values[element].hkp);
        chunk.keypaths_and_values[element].val = value.take();
        break;
      case CONFD_QUERY_TAG_VALUE:
        chunk.tagged_values[element].tag = {model_.node(target).number, model_.namespace_number()};
        chunk.tagged_values[element].v = value.take();
        break;
    }
  }

  const Model& model_;
  const store::Datastore& datastore_;
  const Query& query_;
};

// The arguments of a query that are lists of paths.
struct Paths {
  std::span<const char*> select;
  std::span<const char*> sort;
};

// The selectors of every kind of result there is.
bool make_selections(const store::Schema& schema, std::span<const char* const> paths,
                     const std::vector<const lyd_node*>& results,
                     std::vector<Selection>& selections) {
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
        return false;
      }
      added.selectors.push_back(std::move(*selector));
    }
  }
  return true;
}

bool sort_results(const SessionState& session, std::span<const char* const> paths, Query& query) {
  const store::Datastore& datastore = session.transaction.datastore();
  Query sorting;
  if (!make_selections(datastore.schema(), paths, query.results, sorting.selections)) return false;
  const auto less = [&](const lyd_node* left, const lyd_node* right) {
    const auto& left_keys = selection_for(sorting, left).selectors;
    const auto& right_keys = selection_for(sorting, right).selectors;
    for (std::size_t i = 0; i < paths.size(); ++i) {
      const int order = compare(left_keys[i].value(session.model, datastore, left).get(),
                                right_keys[i].value(session.model, datastore, right).get());
      if (order != 0) return order < 0;
    }
    return false;
  };
  std::stable_sort(query.results.begin(), query.results.end(), less);
  return true;
}

// The context node of a query; false where the call has failed.
bool find_context(const SessionState& session, const char* text, const lyd_node*& context) {
  context = nullptr;
  if (text == nullptr) return true;
  std::string why;
  const auto path = store::Path::parse(session.model.schema(), text, &why);
  if (!path.has_value()) {
    fail(CONFD_ERR_BADPATH, why);
    return false;
  }
  context = session.transaction.datastore().find(*path);
  if (context == nullptr) fail(CONFD_ERR_NOEXISTS, "the context node does not exist");
  return context != nullptr;
}

int start(SessionState& session, const char* expr, const char* context_node, Query query,
          const Paths& paths) {
  const store::Datastore& datastore = session.transaction.datastore();
  const lyd_node* context = nullptr;
  if (!find_context(session, context_node, context)) return CONFD_ERR;
  XPath xpath(datastore, context);
  auto results = xpath.nodes(expr);
  if (!results.has_value()) return fail(CONFD_ERR_XPATH, xpath.error());
  query.results = std::move(*results);
  if (!make_selections(datastore.schema(), paths.select, query.results, query.selections)) {
    return CONFD_ERR;
  }
  if (!paths.sort.empty() && !sort_results(session, paths.sort, query)) return CONFD_ERR;
  const int handle = next_number();
  session.queries.emplace(handle, std::move(query));
  return handle;
}

struct QueryInSession {
  SessionState* session = nullptr;
  Query* query = nullptr;
};

// The query of a handle; null where the call has failed.
QueryInSession enter_query(PlatformCall call, int sock, int handle) {
  if (!enter(call)) return {};
  SessionState* session = find_session_by_socket(sock);
  if (session == nullptr) {
    fail(CONFD_ERR_NOSESSION, "no transaction has this socket");
    return {};
  }
  const auto found = session->queries.find(handle);
  if (found == session->queries.end()) {
    fail(CONFD_ERR_NOEXISTS, "no query has this handle");
    return {};
  }
  return {session, &found->second};
}

int next_chunk(int sock, int handle, confd_query_result** result) {
  const auto [session, query] = enter_query(PlatformCall::maapi_query_result, sock, handle);
  if (query == nullptr) return CONFD_ERR;
  const std::size_t begin = std::min(query->next, query->results.size());
  const std::size_t end = begin + std::min(query->chunk_size, query->results.size() - begin);
  *result = ChunkReader(*session, *query).read(begin, end).release();
  query->next = end;
  return CONFD_OK;
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
  Query query;
  query.type = result_as;
  query.num_elements = static_cast<std::size_t>(nselect);
  query.chunk_size = chunk_size > 0 ? static_cast<std::size_t>(chunk_size) : kDefaultChunkSize;
  query.next = static_cast<std::size_t>(initial_offset) - 1;
  return start(
      *session, expr, context_node, std::move(query),
      {{select, static_cast<std::size_t>(nselect)}, {sort, static_cast<std::size_t>(nsort)}});
}

int maapi_query_result(int sock, int qh, struct confd_query_result** qrs) {
  return tarnd::confd::next_chunk(sock, qh, qrs);
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
