// The schema as the client library shows it: nodes, sizes of value arrays, names of numbers.

#include <cstdarg>
#include <optional>
#include <string>

#include "confd_lib.h"
#include "standalone/confd/call.h"
#include "standalone/confd/errors.h"
#include "standalone/confd/format.h"
#include "standalone/confd/model.h"
#include "standalone/confd/value_array.h"
#include "standalone/store/path.h"

namespace tarnd::confd {
namespace {

const store::SchemaNode& schema_of(const confd_cs_node& node) {
  return *static_cast<const ModelNode*>(node.opaque)->schema;
}

confd_cs_node* find_cs_node(const confd_cs_node* start, const char* fmt, std::va_list args) {
  Model* model = loaded_model();
  std::optional<std::string> path = format_path(fmt, args);
  if (model == nullptr || !path.has_value()) return nullptr;
  if (start != nullptr) path = schema_of(*start).path() + "/" + *path;
  const auto parsed = store::Path::parse(model->schema(), *path, nullptr);
  return parsed.has_value() ? model->cs_node(*parsed->last().node) : nullptr;
}

}  // namespace
}  // namespace tarnd::confd

using tarnd::PlatformCall;

struct confd_cs_node* confd_cs_node_cd(const struct confd_cs_node* start, const char* fmt, ...) {
  if (!tarnd::confd::enter(PlatformCall::confd_cs_node_cd)) return nullptr;
  va_list args;
  va_start(args, fmt);
  confd_cs_node* node = tarnd::confd::find_cs_node(start, fmt, args);
  va_end(args);
  if (node == nullptr) tarnd::confd::fail(CONFD_ERR_BADPATH, "the schema has no such node");
  return node;
}

int confd_max_object_size(struct confd_cs_node* object) {
  using namespace tarnd::confd;
  if (!enter(PlatformCall::confd_max_object_size)) return CONFD_ERR;
  if (object == nullptr) return fail(CONFD_ERR_PROTOUSAGE, "a node is needed");
  return max_value_array_size(tarnd::confd::schema_of(*object));
}

char* confd_hash2str(uint32_t hash) {
  if (!tarnd::confd::enter(PlatformCall::confd_hash2str)) return nullptr;
  const tarnd::confd::Model* model = tarnd::confd::loaded_model();
  const std::string* name = model != nullptr ? model->name_of(hash) : nullptr;
  return name != nullptr ? const_cast<char*>(name->c_str()) : nullptr;
}
