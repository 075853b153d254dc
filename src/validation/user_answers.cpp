#include "user_answers.h"

namespace valid {

std::int32_t reject(confd_trans_ctx* tctx, const char* text) {
  confd_trans_seterr(tctx, "%s", text);
  return CONFD_ERR;
}

std::int32_t ask_to_confirm(confd_trans_ctx* tctx, const char* text) {
  confd_trans_seterr(tctx, "%s", text);
  return CONFD_VALIDATION_WARN;
}

}  // namespace valid
