// Helpers of the client library that need the model only, and the answer's text.

#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "confd_maapi.h"
#include "standalone/confd/errors.h"
#include "standalone/confd/format.h"
#include "standalone/confd/model.h"
#include "standalone/confd/value_array.h"
#include "standalone/crypto.h"
#include "standalone/session/session_state.h"
#include "standalone/store/path.h"

namespace tarnd::confd {
namespace {

confd_cs_node* find_cs_node(const confd_cs_node* start, const char* fmt, std::va_list args) {
  Model* model = loaded_model();
  const std::optional<std::string> text = format_path(fmt, args);
  if (model == nullptr || !text.has_value()) return nullptr;
  std::string path = *text;
  if (start != nullptr) {
    const auto* node = static_cast<const ModelNode*>(start->opaque);
    path = node->schema->path() + "/" + path;
  }
  const auto parsed = store::Path::parse(model->schema(), path, nullptr);
  return parsed.has_value() ? model->cs_node(*parsed->last().node) : nullptr;
}

std::string format_text(const char* fmt, std::va_list args) {
  std::va_list again;
  va_copy(again, args);
  const int size = std::vsnprintf(nullptr, 0, fmt, again);
  va_end(again);
  if (size < 0) return {};
  std::string text(static_cast<std::size_t>(size), '\0');
  std::vsnprintf(text.data(), text.size() + 1, fmt, args);
  return text;
}

int decrypt(const char* ciphertext, int len, char* output) {
  if (!enter(PlatformCall::confd_decrypt)) return CONFD_ERR;
  if (find_session_with_crypto_keys() == nullptr) {
    return fail(CONFD_ERR_NOSESSION, "the crypto keys are not installed");
  }
  if (len < 0) return fail(CONFD_ERR_PROTOUSAGE, "the length is negative");
  std::optional<std::string> clear = decrypt_string({ciphertext, static_cast<std::size_t>(len)});
  if (!clear.has_value()) return fail(CONFD_ERR_BADTYPE, "the text cannot be decrypted");
  std::string& text = *clear;
  // The clear text is shorter than its encrypted form by more than its NUL.
  std::memcpy(output, text.c_str(), text.size() + 1);
  wipe(text);
  return CONFD_OK;
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
  if (!tarnd::confd::enter(PlatformCall::confd_max_object_size)) return CONFD_ERR;
  if (object == nullptr) return tarnd::confd::fail(CONFD_ERR_PROTOUSAGE, "a node is needed");
  const auto* node = static_cast<const tarnd::confd::ModelNode*>(object->opaque);
  return tarnd::confd::max_value_array_size(*node->schema);
}

char* confd_hash2str(uint32_t hash) {
  if (!tarnd::confd::enter(PlatformCall::confd_hash2str)) return nullptr;
  const tarnd::confd::Model* model = tarnd::confd::loaded_model();
  const std::string* name = model != nullptr ? model->name_of(hash) : nullptr;
  return name != nullptr ? const_cast<char*>(name->c_str()) : nullptr;
}

void confd_trans_seterr(struct confd_trans_ctx* tctx, const char* fmt, ...) {
  tarnd::enter_platform_call(PlatformCall::confd_trans_seterr);
  if (tctx == nullptr) return;
  tarnd::SessionState* session = tarnd::find_session_by_handle(tctx->thandle);
  if (session == nullptr) return;
  va_list args;
  va_start(args, fmt);
  session->error_text = tarnd::confd::format_text(fmt, args);
  va_end(args);
}

int maapi_install_crypto_keys(int sock) {
  if (!tarnd::confd::enter(PlatformCall::maapi_install_crypto_keys)) return CONFD_ERR;
  tarnd::SessionState* session = tarnd::find_session_by_socket(sock);
  if (session == nullptr) {
    return tarnd::confd::fail(CONFD_ERR_NOSESSION, "no transaction has this socket");
  }
  session->crypto_keys_installed = true;
  return CONFD_OK;
}

int confd_decrypt(const char* ciphertext, int len, char* output) {
  return tarnd::confd::decrypt(ciphertext, len, output);
}
