// The value of an XPath expression.

#include <cstdarg>
#include <cstring>
#include <optional>
#include <string>

#include "confd_maapi.h"
#include "standalone/confd/call.h"
#include "standalone/confd/errors.h"
#include "standalone/store/xpath.h"

namespace tarnd::confd {
namespace {

int eval_expr(int sock, int thandle, const char* expr, char** res, const char* fmt,
              std::va_list args) {
  *res = nullptr;
  const SessionState* session = enter_session(PlatformCall::maapi_xpath_eval_expr, sock, thandle);
  if (session == nullptr) return CONFD_ERR;
  const store::Datastore& datastore = session->transaction.datastore();
  const lyd_node* context = nullptr;
  if (fmt != nullptr) {
    const auto path = read_path(session->model, fmt, args);
    if (!path.has_value()) return CONFD_ERR;
    context = datastore.find(*path);
    if (context == nullptr) return fail(CONFD_ERR_NOEXISTS, "the context node does not exist");
  }
  store::XPath xpath(datastore, context);
  const std::optional<std::string> text = xpath.text(expr);
  if (!text.has_value()) return fail(CONFD_ERR_XPATH, xpath.error());
  *res = strdup(text->c_str());
  return CONFD_OK;
}

}  // namespace
}  // namespace tarnd::confd

int maapi_xpath_eval_expr(int sock, int thandle, const char* expr, char** res, void (*)(char*),
                          const char* fmtpath, ...) {
  va_list args;
  va_start(args, fmtpath);
  const int result = tarnd::confd::eval_expr(sock, thandle, expr, res, fmtpath, args);
  va_end(args);
  return result;
}
