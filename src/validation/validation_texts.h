#pragma once

#include <cstddef>
#include <string>

#include "confd_lib.h"

namespace valid {

/// The size of a buffer for a text; what is longer is cut. It has room for a sentence about the
/// longest name. Texts that the daemon sets in place of the plug-in's own may have any length.
constexpr std::size_t kTextSize = 8192;
constexpr std::size_t kKeypathTextSize = 1024;

/// The text that printf would write, cut to kTextSize - 1 characters.
[[gnu::format(printf, 1, 2)]] std::string formatted(const char* format, ...);

/// The keypath as text, such as "/config/interface/gpon{1 1 3}/onu", cut to size - 1 characters.
/// The size is at most kTextSize.
std::string keypath_text(const confd_hkeypath_t* keypath, std::size_t size = kKeypathTextSize);

/// The value as confd_pp_value prints it, cut to size - 1 characters. The size is at most
/// kTextSize.
std::string value_text(const confd_value_t* value, std::size_t size = kTextSize);

}  // namespace valid
