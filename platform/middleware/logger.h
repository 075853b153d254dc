#pragma once

#include <string>

/// The daemon's debug log.
class Logger {
 public:
  static void Debug(const std::string& text);
};
