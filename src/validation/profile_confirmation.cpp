#include "profile_confirmation.h"

#include <optional>
#include <string>

#include "confd_cdb.h"
#include "pon_link.h"
#include "user_answers.h"
#include "validation_guards.h"
#include "validation_texts.h"
#include "xpath_count.h"

namespace valid {
namespace {

// No value if the committed configuration cannot be read.
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

// The name is inserted as it is. With a quote in the name, the evaluation of the expression fails.
std::string users_expression(const ProfileConfirmation& profile, const TraceSource& source,
                             const std::string& name) {
  std::string list = kGponList;
  if (profile.interface_list != nullptr) {
    list = profile.interface_list();
    VALID_TRACE_AS(source, kTraceFlow, "itfType:%s", list.c_str());
  }
  return "count(/config/interface/" + list + profile.users + name + "'])";
}

std::int32_t ask_if_used(const ProfileConfirmation& profile, const TraceSource& source,
                         std::int32_t sock, confd_trans_ctx* tctx, const std::string& name) {
  const XpathResult users = evaluate_xpath(sock, tctx, users_expression(profile, source, name));
  if (users.text == nullptr) {
    VALID_TRACE_AS(source, kTraceFlow,
                   "There was an error (%s) checking if there is any ONU using %s %s.",
                   confd_lasterr(), profile.kind, name.c_str());
    return reject(tctx, kConfdUnreadable);
  }
  std::string error;
  const std::optional<int> count = count_in(users.text.get(), error);
  if (!count.has_value()) {
    VALID_TRACE_AS(source, kTraceFlow,
                   "There was an error (%s) (%s) checking if there is any ONU using %s %s.",
                   confd_lasterr(), error.c_str(), profile.kind, name.c_str());
    return reject(tctx, profile.count_unreadable);
  }
  VALID_TRACE_AS(source, kTraceFlow, "There are %d onus associated with %s", *count, name.c_str());
  return *count < 1 ? CONFD_OK : ask_to_confirm(tctx, *profile.warning);
}

}  // namespace

std::int32_t confirm_profile_change(const ProfileConfirmation& profile, const TraceSource& source,
                                    std::int32_t sock, confd_trans_ctx* tctx,
                                    const confd_hkeypath_t* keypath) {
  const ValidationTrace trace(source.function);
  const std::string name = value_text(&keypath->v[0][0]);
  VALID_TRACE_AS_IF(source, kTraceDetail, "Check if %s %s has been edited.", profile.kind,
                    name.c_str());

  const std::optional<bool> committed = is_committed(tctx, profile.profile_path, name);
  if (!committed.has_value()) {
    return trace.end(reject(tctx, kConfdUnreadable));
  }
  if (!*committed) {
    VALID_TRACE_AS_IF(source, kTraceDetail, "%s %s was not edited", profile.kind, name.c_str());
    return trace.end(CONFD_OK);
  }
  return trace.end(ask_if_used(profile, source, sock, tctx, name));
}

}  // namespace valid
