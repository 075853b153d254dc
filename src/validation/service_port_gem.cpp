#include "service_port_gem.h"

#include <string>

#include "confd_get_str.h"

namespace valid {
namespace {

constexpr const char* kLineProfileGem = "/config/profile/gpon/line-profile{%s}/gem{%d}/gem-id";
constexpr const char* kGemNotConfigured =
    "Service-port [%u] gem [%d] was not configured to onu [%d]";

}  // namespace

bool line_profile_has_gem(std::int32_t sock, const confd_trans_ctx* tctx,
                          const char* line_profile_path, std::uint32_t gem) {
  std::string line_profile;
  GetStrFromConfd(sock, tctx->thandle, line_profile_path, "", line_profile);
  return maapi_exists(sock, tctx->thandle, kLineProfileGem, line_profile.c_str(),
                      static_cast<int>(gem)) != 0;
}

std::int32_t reject_missing_gem(confd_trans_ctx* tctx, std::uint32_t sp, std::uint32_t gem,
                                std::uint32_t onu) {
  confd_trans_seterr(tctx, kGemNotConfigured, sp, static_cast<int>(gem), static_cast<int>(onu));
  return CONFD_ERR;
}

}  // namespace valid
