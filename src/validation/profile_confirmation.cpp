#include "profile_confirmation.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "confd_cdb.h"
#include "gpon_vald_trace_itf.h"
#include "validation_guards.h"

namespace valid {
namespace {

constexpr const char* kGponList = "gpon";

struct Free {
  void operator()(char* text) const { std::free(text); }
};
using XpathResult = std::unique_ptr<char, Free>;

// The words are the same for every profile, the records are the validator's own.
void record(const TraceSource& source, int level, const std::string& text) {
  if (zlog_category_t* const category = get_trace_cat()) {
    zlog(category, source.file, std::strlen(source.file), source.function,
         std::strlen(source.function), source.line, level, "%s", text.c_str());
  }
}

// Empty where the committed configuration cannot be read.
std::optional<bool> is_committed(const confd_trans_ctx* tctx, const char* profile_path,
                                 const std::string& name) {
  ConfigSession session(tctx, ConfigSession::AfterFailedStart::kLeave);
  if (!session.open()) {
    return std::nullopt;
  }
  const int exists = cdb_exists(session.socket(), profile_path, name.c_str());
  session.end();
  if (exists < 0) {
    return std::nullopt;
  }
  return exists != 0;
}

// The name goes in as it is: one that holds a quote makes an expression that does not evaluate.
std::string users_expression(const ProfileConfirmation& profile, const TraceSource& source,
                             const std::string& name) {
  std::string list = kGponList;
  if (profile.interface_list != nullptr) {
    list = profile.interface_list();
    record(source, kTraceFlow, "itfType:" + list);
  }
  return "count(/config/interface/" + list + profile.users + name + "'])";
}

XpathResult evaluate(std::int32_t sock, const confd_trans_ctx* tctx,
                     const std::string& expression) {
  char* result = nullptr;
  maapi_xpath_eval_expr(sock, tctx->thandle, expression.c_str(), &result, nullptr, nullptr);
  return XpathResult(result);
}

std::int32_t refuse(confd_trans_ctx* tctx, const char* text) {
  confd_trans_seterr(tctx, "%s", text);
  return CONFD_ERR;
}

std::int32_t ask_if_used(const ProfileConfirmation& profile, const TraceSource& source,
                         std::int32_t sock, confd_trans_ctx* tctx, const std::string& name) {
  const std::string profile_text = std::string(profile.kind) + " " + name;
  const XpathResult result = evaluate(sock, tctx, users_expression(profile, source, name));
  if (result == nullptr) {
    record(source, kTraceFlow,
           std::string("There was an error (") + confd_lasterr() +
               ") checking if there is any ONU using " + profile_text + ".");
    return refuse(tctx, kFailedAccessingConfdData);
  }

  int count = 0;
  try {
    count = std::stoi(result.get());
  } catch (const std::invalid_argument& error) {
    record(source, kTraceFlow,
           std::string("There was an error (") + confd_lasterr() + ") (" + error.what() +
               ") checking if there is any ONU using " + profile_text + ".");
    return refuse(tctx, profile.count_unreadable);
  }

  record(source, kTraceFlow,
         "There are " + std::to_string(count) + " onus associated with " + name);
  if (count < 1) {
    return CONFD_OK;
  }
  confd_trans_seterr(tctx, "%s", *profile.warning);
  return CONFD_VALIDATION_WARN;
}

}  // namespace

std::int32_t confirm_profile_change(const ProfileConfirmation& profile, const TraceSource& source,
                                    std::int32_t sock, confd_trans_ctx* tctx,
                                    const confd_hkeypath_t* keypath) {
  const ValidationTrace trace(source.function);
  const std::string name = value_text(&keypath->v[0][0]);
  const std::string profile_text = std::string(profile.kind) + " " + name;
  if (trace_enabled(kTraceDetail)) {
    record(source, kTraceDetail, "Check if " + profile_text + " has been edited.");
  }

  const std::optional<bool> committed = is_committed(tctx, profile.profile_path, name);
  if (!committed.has_value()) {
    return trace.end(refuse(tctx, kFailedAccessingConfdData));
  }
  if (!*committed) {
    if (trace_enabled(kTraceDetail)) {
      record(source, kTraceDetail, profile_text + " was not edited");
    }
    return trace.end(CONFD_OK);
  }
  return trace.end(ask_if_used(profile, source, sock, tctx, name));
}

}  // namespace valid
