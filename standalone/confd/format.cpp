#include "standalone/confd/format.h"

#include <string_view>

#include "confd_lib.h"
#include "standalone/confd/print.h"
#include "standalone/platform_calls.h"

namespace tarnd::confd {
namespace {

bool add_values(std::string& text, const confd_value_t* values, int count) {
  if (values == nullptr || count < 0) return false;
  for (int i = 0; i < count; ++i) text += (i > 0 ? " " : "") + key_text(values[i]);
  return true;
}

// A keypath must begin the path. Of its elements, the outermost `count` are taken.
bool add_keypath(std::string& text, const confd_hkeypath_t* keypath, int count) {
  if (!text.empty() || keypath == nullptr) return false;
  if (keypath->len > MAXDEPTH || count < 0 || count > keypath->len) return false;
  text = keypath_text(*keypath, keypath->len - count);
  return true;
}

bool add_keypath(std::string& text, const confd_hkeypath_t* keypath) {
  return keypath != nullptr && add_keypath(text, keypath, keypath->len);
}

// The arguments of one call. A va_list can be passed by reference only as a member of a structure.
struct Arguments {
  std::va_list list;
};

bool add_text(std::string& text, const char* argument) {
  if (argument != nullptr) text += argument;
  return argument != nullptr;
}

// Reads the conversion after a '%' and removes it from the format. Most are texts.
bool add_directive(std::string& text, std::string_view& format, Arguments& arguments) {
  if (format.starts_with('s')) {
    format.remove_prefix(1);
    return add_text(text, va_arg(arguments.list, const char*));
  }
  const bool counted = format.starts_with('*');
  const int count = counted ? va_arg(arguments.list, int) : 1;
  if (counted) format.remove_prefix(1);
  const char directive = format.empty() ? '\0' : format.front();
  if (!format.empty()) format.remove_prefix(1);
  switch (directive) {
    case 'x':
      return add_values(text, va_arg(arguments.list, const confd_value_t*), count);
    case 'h': {
      const auto* keypath = va_arg(arguments.list, const confd_hkeypath_t*);
      return counted ? add_keypath(text, keypath, count) : add_keypath(text, keypath);
    }
    default:
      break;
  }
  if (counted) return false;
  switch (directive) {
    case 'd':
      text += std::to_string(va_arg(arguments.list, int));
      return true;
    case 'u':
      text += std::to_string(va_arg(arguments.list, unsigned int));
      return true;
    case '%':
      text += '%';
      return true;
    default:
      return false;
  }
}

}  // namespace

bool format_path(std::string& text, const char* format, std::va_list arguments) {
  text.clear();
  if (format == nullptr) return false;
  Arguments own;
  va_copy(own.list, arguments);
  std::string_view rest(format);
  bool good = true;
  while (good && !rest.empty()) {
    if (rest.front() == '%') {
      rest.remove_prefix(1);
      good = add_directive(text, rest, own);
      continue;
    }
    const std::size_t plain = std::min(rest.find('%'), rest.size());
    text.append(rest.substr(0, plain));
    rest.remove_prefix(plain);
  }
  va_end(own.list);
  if (good) enter_platform_path(text);
  return good;
}

std::optional<std::string> format_path(const char* format, std::va_list arguments) {
  std::string text;
  if (!format_path(text, format, arguments)) return std::nullopt;
  return text;
}

}  // namespace tarnd::confd
