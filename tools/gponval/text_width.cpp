#include "tools/gponval/text_width.h"

#include <clocale>
#include <cwchar>

namespace gponval {
namespace {

// Read once: it comes from several files, and a table has thousands of texts.
locale_t utf8() {
  static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  return locale;
}

// The thread's locale while the object lives. The command's own is "C", so that its numbers have no
// digits of a language.
class Utf8Locale {
 public:
  Utf8Locale() : before_(uselocale(utf8())) {}
  Utf8Locale(const Utf8Locale&) = delete;
  Utf8Locale& operator=(const Utf8Locale&) = delete;
  ~Utf8Locale() { uselocale(before_); }

 private:
  locale_t before_;
};

}  // namespace

std::size_t text_width(const std::string& text) {
  const Utf8Locale locale;
  std::size_t width = 0;
  std::mbstate_t state{};
  for (std::size_t at = 0; at < text.size();) {
    wchar_t letter = 0;
    const std::size_t bytes = std::mbrtowc(&letter, text.data() + at, text.size() - at, &state);
    if (bytes == 0 || bytes > text.size() - at) {  // a NUL, or no letter
      state = {};
      ++at;
      ++width;
      continue;
    }
    const int columns = wcwidth(letter);
    width += columns < 0 ? 1 : static_cast<std::size_t>(columns);
    at += bytes;
  }
  return width;
}

}  // namespace gponval
