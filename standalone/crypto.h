#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tarnd {

/// The encrypted form of a clear text, "$8$" and base64 of a 16-byte IV and the AES-CFB-128
/// ciphertext. A text always has the same form, so setting a leaf to its own value is no change.
std::string encrypt_string(std::string_view clear);

/// The clear text of an encrypted form, or nothing if that is malformed or was made with a key
/// other than this workstation's. The caller overwrites it with wipe().
std::optional<std::string> decrypt_string(std::string_view encrypted);

/// Overwrites a clear text that is no longer needed.
void wipe(std::string& clear);

}  // namespace tarnd
