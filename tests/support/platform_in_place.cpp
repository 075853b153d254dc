#include "tests/support/platform_in_place.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstring>

using tarnd::test::InPlace;

std::optional<InPlace::Xpath> InPlace::xpath;
std::string InPlace::evaluated;
std::function<void(maapi_cursor&)> InPlace::entry;
std::optional<int> InPlace::decrypted;
const char* InPlace::clear_text = nullptr;

InPlace::~InPlace() {
  xpath.reset();
  evaluated.clear();
  entry = nullptr;
  decrypted.reset();
  clear_text = nullptr;
}

namespace {

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
  if (InPlace::entry && mc->n > 0) InPlace::entry(*mc);
  return result;
}

int confd_decrypt(const char* ciphertext, int len, char* output) {
  static auto* const platform = of_platform<int(const char*, int, char*)>("confd_decrypt");
  const int result = platform(ciphertext, len, output);
  InPlace::clear_text = output;
  return InPlace::decrypted.value_or(result);
}
}
