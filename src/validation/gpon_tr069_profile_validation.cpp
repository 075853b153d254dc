#include "gpon_tr069_profile_validation.h"

#include <alloca.h>

#include <cstddef>
#include <cstring>

#include "profile_confirmation.h"
#include "user_answers.h"
#include "validation_guards.h"

namespace {

constexpr const char* kChangeWarning =
    "Change in tr069-acs-profile configuration will result in temporary data loss for all ONUs "
    "using this profile.";

constexpr valid::ProfileConfirmation kTr069Profile = {
    "tr069-acs-profile",
    "/config/profile/gpon/tr069-acs-profile{%s}",
    "/onu[tr069-acs-profile='",
    nullptr,
    &kChangeWarning,
    valid::kConfdUnreadable,
};

constexpr const char* kInvalidPassword = "Invalid password length/size";
constexpr std::size_t kLongestPassword = 25;
constexpr std::size_t kCipherBlock = 16;
// Far more than any password needs, far less than a stack has.
constexpr std::size_t kLongestCipherText = std::size_t{64} * 1024;

// The compiler may remove a plain memset of memory that is not read again.
class WipedOnReturn {
 public:
  WipedOnReturn(char* text, std::size_t size) : text_(text), size_(size) {}
  WipedOnReturn(const WipedOnReturn&) = delete;
  WipedOnReturn& operator=(const WipedOnReturn&) = delete;
  ~WipedOnReturn() { explicit_bzero(text_, size_); }

 private:
  char* text_;
  std::size_t size_;
};

// Room for the clear text and one more block, in whole blocks.
constexpr std::size_t clear_text_size(std::size_t cipher_text_size) {
  return (cipher_text_size + kCipherBlock + kCipherBlock - 1) / kCipherBlock * kCipherBlock;
}

bool password_fits(std::int32_t sock, const confd_value_t* newval) {
  const std::size_t cipher_text_size = CONFD_GET_BUFSIZE(newval);
  if (cipher_text_size > kLongestCipherText) {
    return false;
  }
  const std::size_t size = clear_text_size(cipher_text_size);
  // The clear text must never be on the heap.
  // cppcheck-suppress allocaCalled
  char* const clear_text = static_cast<char*>(alloca(size));
  std::memset(clear_text, 0, size);
  const WipedOnReturn wiped(clear_text, size);

  if (maapi_install_crypto_keys(sock) != CONFD_OK) {
    return false;
  }
  const int result =
      confd_decrypt(CONFD_GET_CBUFPTR(newval), static_cast<int>(cipher_text_size), clear_text);
  return result == CONFD_OK && strnlen(clear_text, size) <= kLongestPassword;
}

}  // namespace

std::int32_t tr069_profile_confirmation(std::int32_t sock, confd_trans_ctx* tctx,
                                        confd_hkeypath_t* keypath, confd_value_t* /*newval*/) {
  return valid::confirm_profile_change(kTr069Profile, {__FILE__, __func__, __LINE__}, sock, tctx,
                                       keypath);
}

std::int32_t tr069_profile_password_length_check_func(std::int32_t sock, confd_trans_ctx* tctx,
                                                      confd_hkeypath_t* /*keypath*/,
                                                      confd_value_t* newval) {
  const valid::ValidationTrace trace("tr069_profile_password_length_check_func");
  if (password_fits(sock, newval)) {
    return trace.end(CONFD_OK);
  }
  // The same text for every reason, so that it reveals nothing about the keys.
  confd_trans_seterr(tctx, kInvalidPassword);
  return trace.end(CONFD_ERR);
}
