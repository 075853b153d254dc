#pragma once

#include <string>

/// Reads the leaf of the transaction at the path prefix + suffix as text, as confd_pp_value prints
/// it, cut to 8191 characters. A leaf that does not exist or cannot be read leaves `text` as it
/// was.
void GetStrFromConfd(int sock, int thandle, const std::string& prefix, const std::string& suffix,
                     std::string& text);
