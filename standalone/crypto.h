#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tarnd {

/// The encrypted form of a clear text, "$8$" and base64 of a 16-byte IV and the AES-CFB-128
/// ciphertext. The same text always gives the same form, so writing it again changes nothing.
std::string encrypt_string(std::string_view clear);

/// The clear text of an encrypted form, or nothing where it is malformed or was not made with this
/// workstation's key. The caller wipes it with wipe().
std::optional<std::string> decrypt_string(std::string_view encrypted);

/// Overwrites a clear text that is no longer needed.
void wipe(std::string& clear);

}  // namespace tarnd
