// Decryption of encrypted leaves.

#include <cstddef>
#include <optional>
#include <string>

#include "confd_lib.h"
#include "standalone/confd/call.h"
#include "standalone/confd/errors.h"
#include "standalone/confd/session_state.h"
#include "standalone/crypto.h"

int confd_decrypt(const char* ciphertext, int len, char* output) {
  using tarnd::confd::fail;
  if (!tarnd::confd::enter(tarnd::PlatformCall::confd_decrypt)) return CONFD_ERR;
  if (tarnd::find_session_with_crypto_keys() == nullptr) {
    return fail(CONFD_ERR_NOSESSION, "the crypto keys are not installed");
  }
  if (len < 0) return fail(CONFD_ERR_PROTOUSAGE, "the length is negative");
  std::optional<std::string> clear =
      tarnd::decrypt_string({ciphertext, static_cast<std::size_t>(len)});
  if (!clear.has_value()) return fail(CONFD_ERR_BADTYPE, "the text cannot be decrypted");
  // The clear text with its NUL is shorter than its encrypted form.
  output[clear->copy(output, clear->size())] = '\0';
  tarnd::wipe(*clear);
  return CONFD_OK;
}
