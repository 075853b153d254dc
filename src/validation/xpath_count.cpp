#include "xpath_count.h"

#include <stdexcept>

namespace valid {

XpathResult evaluate_xpath(std::int32_t sock, const confd_trans_ctx* tctx,
                           const std::string& expression) {
  char* text = nullptr;
  const int result =
      maapi_xpath_eval_expr(sock, tctx->thandle, expression.c_str(), &text, nullptr, nullptr);
  return {result, std::unique_ptr<char, Free>(text)};
}

std::optional<int> count_in(const char* text, std::string& error) {
  try {
    return std::stoi(text);
  } catch (const std::invalid_argument& no_digits) {
    error = no_digits.what();
    return std::nullopt;
  }
}

}  // namespace valid
