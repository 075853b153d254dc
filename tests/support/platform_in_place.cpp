#include "tests/support/platform_in_place.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <zlog.h>

#include <cstdarg>
#include <cstring>

#include "confd_cdb.h"

using tarnd::test::InPlace;

std::optional<InPlace::Xpath> InPlace::xpath;
std::string InPlace::evaluated;
std::function<void(maapi_cursor&)> InPlace::entry;
std::optional<int> InPlace::decrypted;
const char* InPlace::clear_text = nullptr;
std::string InPlace::clear_text_before;
std::optional<std::size_t> InPlace::wiped;
std::optional<int> InPlace::committed_exists;
std::optional<int> InPlace::committed_bool;
fm_board_count_t InPlace::onus_of_board = nullptr;
fm_board_count_t InPlace::links_of_board = nullptr;
std::function<bool(int level)> InPlace::takes_level;
std::optional<int> InPlace::iteration_flags;
std::vector<confd_tag_value_t> InPlace::requested;
std::vector<int> InPlace::text_sizes;
bool InPlace::notes = false;
std::optional<int> InPlace::text_result;
std::vector<std::string> InPlace::freed;
std::string InPlace::message_to;

void InPlace::take_back() {
  xpath.reset();
  evaluated.clear();
  entry = nullptr;
  decrypted.reset();
  clear_text = nullptr;
  clear_text_before.clear();
  wiped.reset();
  committed_exists.reset();
  committed_bool.reset();
  onus_of_board = nullptr;
  links_of_board = nullptr;
  takes_level = nullptr;
  iteration_flags.reset();
  requested.clear();
  text_sizes.clear();
  text_result.reset();
  freed.clear();
  message_to.clear();
}

namespace {

using Iterate = maapi_iter_ret(confd_hkeypath_t*, maapi_iter_op, confd_value_t*, confd_value_t*,
                               void*);

/// The platform's function of the name; those below are found before it.
template <typename Function>
Function* of_platform(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

int maapi_xpath_eval_expr(int sock, int thandle, const char* expr, char** res, void (*trace)(char*),
                          const char* fmtpath, ...) {
  EXPECT_EQ(fmtpath, nullptr);
  InPlace::evaluated = expr;
  if (InPlace::xpath.has_value()) {
    const std::optional<std::string>& text = InPlace::xpath->text;
    *res = text.has_value() ? strdup(text->c_str()) : nullptr;
    return InPlace::xpath->result;
  }
  static auto* const platform =
      of_platform<int(int, int, const char*, char**, void (*)(char*), const char*, ...)>(
          "maapi_xpath_eval_expr");
  return platform(sock, thandle, expr, res, trace, nullptr);
}

int maapi_get_next(struct maapi_cursor* mc) {
  static auto* const platform = of_platform<int(struct maapi_cursor*)>("maapi_get_next");
  const int result = platform(mc);
  if (InPlace::entry && (mc->n > 0 || result != CONFD_OK)) InPlace::entry(*mc);
  return result;
}

int confd_decrypt(const char* ciphertext, int len, char* output) {
  static auto* const platform = of_platform<int(const char*, int, char*)>("confd_decrypt");
  InPlace::clear_text_before = output;
  const int result = platform(ciphertext, len, output);
  InPlace::clear_text = output;
  return InPlace::decrypted.value_or(result);
}

void explicit_bzero(void* bytes, size_t size) noexcept {
  static auto* const platform = of_platform<void(void*, size_t)>("explicit_bzero");
  InPlace::wiped = size;
  platform(bytes, size);
}

// The plug-in looks up names and paths that it has composed before.
int cdb_exists(int sock, const char* fmt, ...) {
  static auto* const platform = of_platform<int(int, const char*, ...)>("cdb_exists");
  std::va_list arguments;
  va_start(arguments, fmt);
  const int result = platform(sock, fmt, va_arg(arguments, const char*));
  va_end(arguments);
  return InPlace::committed_exists.value_or(result);
}

int cdb_get_bool(int sock, int* rval, const char* fmt, ...) {
  static auto* const platform = of_platform<int(int, int*, const char*, ...)>("cdb_get_bool");
  std::va_list arguments;
  va_start(arguments, fmt);
  const int result = platform(sock, rval, fmt, va_arg(arguments, const char*));
  va_end(arguments);
  return InPlace::committed_bool.value_or(result);
}

fm_board_count_t fm_oper_card_tarnd_get_max_num_onu_per_ponlink_from_board(const fm_slot_t* slot) {
  static auto* const platform = of_platform<fm_board_count_t(const fm_slot_t*)>(
      "fm_oper_card_tarnd_get_max_num_onu_per_ponlink_from_board");
  return InPlace::onus_of_board != nullptr ? InPlace::onus_of_board : platform(slot);
}

fm_board_count_t fm_oper_card_tarnd_get_max_num_ponlink_from_board(const fm_slot_t* slot) {
  static auto* const platform = of_platform<fm_board_count_t(const fm_slot_t*)>(
      "fm_oper_card_tarnd_get_max_num_ponlink_from_board");
  return InPlace::links_of_board != nullptr ? InPlace::links_of_board : platform(slot);
}

int zlog_level_enabled(zlog_category_t* category, int level) {
  static auto* const library = of_platform<int(zlog_category_t*, int)>("zlog_level_enabled");
  if (InPlace::takes_level) return InPlace::takes_level(level) ? 1 : 0;
  return library(category, level);
}

int maapi_keypath_diff_iterate(int sock, int thandle, Iterate* iter, int flags, void* initstate,
                               const char* fmtpath, ...) {
  static auto* const platform = of_platform<int(int, int, Iterate*, int, void*, const char*, ...)>(
      "maapi_keypath_diff_iterate");
  EXPECT_STREQ(fmtpath, "%h");
  InPlace::iteration_flags = flags;
  std::va_list arguments;
  va_start(arguments, fmtpath);
  const int result = platform(sock, thandle, iter, flags, initstate, fmtpath,
                              va_arg(arguments, confd_hkeypath_t*));
  va_end(arguments);
  return result;
}

int maapi_get_values(int sock, int thandle, confd_tag_value_t* values, int n, const char* fmt,
                     ...) {
  static auto* const platform =
      of_platform<int(int, int, confd_tag_value_t*, int, const char*, ...)>("maapi_get_values");
  InPlace::requested.assign(values, values + n);
  std::va_list arguments;
  va_start(arguments, fmt);
  const int result = platform(sock, thandle, values, n, fmt, va_arg(arguments, unsigned int));
  va_end(arguments);
  return result;
}

int confd_val2str(confd_type* type, const confd_value_t* val, char* buf, int bufsiz) {
  static auto* const platform =
      of_platform<int(confd_type*, const confd_value_t*, char*, int)>("confd_val2str");
  if (InPlace::notes) InPlace::text_sizes.push_back(bufsiz);
  const int result = platform(type, val, buf, bufsiz);
  return InPlace::text_result.value_or(result);
}

void confd_free_value(confd_value_t* v) {
  static auto* const platform = of_platform<void(confd_value_t*)>("confd_free_value");
  if (!InPlace::notes || v == nullptr) return platform(v);
  confd_value_t copy = *v;
  if (copy.type == C_BUF && CONFD_GET_BUFPTR(&copy) != nullptr) {
    InPlace::freed.emplace_back(CONFD_GET_CBUFPTR(&copy));
  }
  platform(&copy);
}

int maapi_prio_message(int sock, const char* to, const char* message) {
  static auto* const platform =
      of_platform<int(int, const char*, const char*)>("maapi_prio_message");
  InPlace::message_to = to;
  return platform(sock, to, message);
}
}
