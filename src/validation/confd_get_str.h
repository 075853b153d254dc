#pragma once

#include <string>

/// Reads the leaf of the transaction at the path prefix + suffix as the text that confd_pp_value
/// prints, cut to 8191 characters. If the leaf does not exist or cannot be read, `text` stays as it
/// was.
void GetStrFromConfd(int sock, int thandle, const std::string& prefix, const std::string& suffix,
                     std::string& text);
