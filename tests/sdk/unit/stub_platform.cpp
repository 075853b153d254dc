#include "stub_platform.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "card/limid.h"
#include "middleware/logger.h"
#include "middleware/qzmw.h"
#include "session/qzconfd_session.h"

namespace sdk {
namespace {

constexpr std::size_t kTextSize = 1024;

std::string printed(const confd_value_t& value) {
  switch (value.type) {
    case C_BUF:
      return CONFD_GET_CBUFPTR(&value);
    case C_UINT32:
      return std::to_string(CONFD_GET_UINT32(&value));
    case C_ENUM_VALUE:
      return "enum<" + std::to_string(CONFD_GET_ENUM_VALUE(&value)) + ">";
    default:
      return "?";
  }
}

/// A path format with the conversions that the tested functions use.
std::string path_of(const char* format, std::va_list arguments) {
  std::string path;
  for (const char* at = format; *at != '\0'; ++at) {
    if (*at != '%') {
      path += *at;
      continue;
    }
    ++at;
    if (*at == 's') {
      path += va_arg(arguments, const char*);
    } else if (*at == 'd' || *at == 'u') {
      path += std::to_string(va_arg(arguments, int));
    } else if (*at == 'x') {
      path += printed(*va_arg(arguments, const confd_value_t*));
    } else if (*at == '*') {
      ++at;
      const int count = va_arg(arguments, int);
      const auto* const keys = va_arg(arguments, const confd_value_t*);
      for (int i = 0; i < count; ++i) path += (i == 0 ? "" : " ") + printed(keys[i]);
    }
  }
  return path;
}

int fail() {
  confd_errno = platform().failure;
  return CONFD_ERR;
}

}  // namespace

Platform& platform() {
  static Platform the_platform;
  return the_platform;
}

confd_value_t number(std::uint32_t value) {
  confd_value_t result{};
  CONFD_SET_UINT32(&result, value);
  return result;
}

confd_value_t enumeration(std::int32_t value) {
  confd_value_t result{};
  CONFD_SET_ENUM_VALUE(&result, value);
  return result;
}

confd_value_t name_tag(std::uint32_t tag) {
  confd_value_t result{};
  CONFD_SET_XMLTAG(&result, tag, 0);
  return result;
}

confd_value_t text(const std::string& value) {
  confd_value_t result{};
  CONFD_SET_BUF(&result, reinterpret_cast<unsigned char*>(strdup(value.c_str())),
                static_cast<unsigned int>(value.size()));
  return result;
}

confd_value_t nothing() {
  confd_value_t result{};
  CONFD_SET_NOEXISTS(&result);
  return result;
}

}  // namespace sdk

using sdk::platform;

extern "C" {

sdk_failure* sdk_last_failure() {
  static sdk_failure failure{"no such node", 0};
  return &failure;
}

void sdk_set_error(confd_trans_ctx* /*tctx*/, const char* fmt, ...) {
  std::va_list arguments;
  va_start(arguments, fmt);
  char text[sdk::kTextSize];
  std::vsnprintf(text, sizeof(text), fmt, arguments);
  va_end(arguments);
  platform().user_text = text;
}

int sdk_print(const void* what, int is_keypath, char* buf, int size) {
  const std::string text =
      is_keypath != 0 ? "keypath" : sdk::printed(*static_cast<const confd_value_t*>(what));
  return std::snprintf(buf, static_cast<std::size_t>(size), "%s", text.c_str());
}

void sdk_free_values(confd_value_t* values, unsigned int count) {
  for (unsigned int i = 0; i < count; ++i) {
    if (values[i].type == C_BUF) std::free(CONFD_GET_BUFPTR(&values[i]));
    ++platform().freed;
  }
}

int sdk_read(int /*sock*/, int /*thandle*/, sdk_read_kind what, void* result, const char* fmt,
             ...) {
  std::va_list arguments;
  va_start(arguments, fmt);
  const std::string path = sdk::path_of(fmt, arguments);
  va_end(arguments);
  const auto found = platform().numbers.find(path);
  if (what == SDK_EXISTS) return found == platform().numbers.end() ? 0 : 1;
  if (found == platform().numbers.end()) return sdk::fail();
  if (what == SDK_COUNT) return found->second;
  std::memcpy(result, &found->second, sizeof(found->second));
  return CONFD_OK;
}

int sdk_open_cursor(int /*sock*/, int /*thandle*/, maapi_cursor* mc, const char* /*secondary*/,
                    const char* fmt, ...) {
  std::va_list arguments;
  va_start(arguments, fmt);
  std::snprintf(mc->path, sizeof(mc->path), "%s", sdk::path_of(fmt, arguments).c_str());
  va_end(arguments);
  mc->n = 1;
  mc->secondary_index = 0;
  return CONFD_OK;
}

int maapi_get_next(maapi_cursor* mc) {
  const std::vector<confd_value_t>& entries = platform().lists[mc->path];
  const auto next = static_cast<std::size_t>(mc->secondary_index++);
  mc->n = next < entries.size() ? 1 : 0;
  if (mc->n != 0) mc->keys[0] = entries[next];
  return CONFD_OK;
}

int sdk_close_cursor(maapi_cursor* /*mc*/) {
  return CONFD_OK;
}

int maapi_query_start(int /*sock*/, int /*thandle*/, const char* /*expr*/,
                      const char* /*context_node*/, int /*chunk_size*/, int /*initial_offset*/,
                      confd_query_result_type /*result_as*/, int /*nselect*/,
                      const char* /*select*/[], int /*nsort*/, const char* /*sort*/[]) {
  return 0;
}

int maapi_query_result(int /*sock*/, int /*qh*/, confd_query_result** qrs) {
  std::vector<confd_value_t>& selected = platform().selected;
  auto* const chunk = new confd_query_result{};
  chunk->type = CONFD_QUERY_TAG_VALUE;
  chunk->nelements = 1;
  chunk->nresults = static_cast<int>(selected.size());
  chunk->results = new sdk_query_row[selected.size()];
  for (std::size_t i = 0; i < selected.size(); ++i) {
    chunk->results[i].tv = new confd_tag_value_t{{}, selected[i]};
  }
  selected.clear();
  *qrs = chunk;
  return CONFD_OK;
}

int maapi_query_free_result(confd_query_result* qrs) {
  for (int i = 0; i < qrs->nresults; ++i) {
    confd_free_value(CONFD_GET_TAG_VALUE(qrs->results[i].tv));
    delete qrs->results[i].tv;
  }
  delete[] qrs->results;
  delete qrs;
  return CONFD_OK;
}

int maapi_query_stop(int /*sock*/, int /*qh*/) {
  return CONFD_OK;
}

int maapi_prio_message(int /*sock*/, const char* to, const char* message) {
  platform().messages.push_back(std::string(to) + ": " + message);
  return CONFD_OK;
}

// The daemon's own services; no trace is wanted.

const limid_type_t limid_type_gpon = reinterpret_cast<limid_type_t>("gpon");
const limid_type_t limid_type_xgspon = reinterpret_cast<limid_type_t>("xgspon");

int limid_type_compare(limid_type_t left, limid_type_t right) {
  return left != nullptr && left == right ? 1 : 0;
}

int qzconfd_maapi_socket_get(void* handle) {
  return *static_cast<int*>(handle);
}

zlog_category_t* qzmw_trace_register_category(const char* /*name*/) {
  return nullptr;
}
}

void Logger::Debug(const std::string& /*text*/) {}
