#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

#include "confd_maapi.h"

namespace valid {

struct Free {
  void operator()(char* text) const { std::free(text); }
};

struct XpathResult {
  int result = CONFD_ERR;            ///< of the evaluation
  std::unique_ptr<char, Free> text;  ///< null without a text
};

/// Evaluates the expression over the transaction.
XpathResult evaluate_xpath(std::int32_t sock, const confd_trans_ctx* tctx,
                           const std::string& expression);

/// The number that the result of a count() begins with. If the text begins with no number, returns
/// no value and sets `error` to the reason. Throws std::out_of_range if the number is out of the
/// range of an int.
std::optional<int> count_in(const char* text, std::string& error);

}  // namespace valid
