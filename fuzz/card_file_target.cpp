// Any text as a card file. It is read or refused; what was read stands in the text, and can be
// written and read again.

#include <sys/mman.h>
#include <unistd.h>

#include <sstream>
#include <string>

#include "fuzz/property.h"
#include "fuzz/target.h"
#include "standalone/card/card_file.h"
#include "standalone/store/schema.h"

namespace tarnd::fuzz {
namespace {

/// A file that stands in memory only.
class MemoryFile {
 public:
  explicit MemoryFile(const std::string& text) : descriptor_(memfd_create("card", MFD_CLOEXEC)) {
    const ssize_t taken = write(descriptor_, text.data(), text.size());
    require(taken == static_cast<ssize_t>(text.size()), "memory takes the file");
  }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile() { close(descriptor_); }

  [[nodiscard]] std::string name() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
  int descriptor_;
};

void write_line(std::string& text, const std::string& key, const std::optional<bool>& value) {
  if (value.has_value()) text += key + " = " + (*value ? "true" : "false") + "\n";
}

void write_line(std::string& text, const std::string& key,
                const std::optional<std::uint32_t>& value) {
  if (value.has_value()) text += key + " = " + std::to_string(*value) + "\n";
}

std::string written(const CardDescription& card) {
  std::string text;
  write_line(text, "bw-check", card.bw_check);
  write_line(text, "onus-per-link", card.onus_per_link);
  write_line(text, "pon-links", card.pon_links);
  write_line(text, "manageable-links", card.manageable_links);
  write_line(text, "max-service-ports", card.max_service_ports);
  write_line(text, "xgspon", card.xgspon);
  return text;
}

// Word for word, unless characters are written as escapes. A key by itself is a flag that is set.
void require_stands_in(const std::string& written_card, const std::string& file) {
  if (file.find('\\') != std::string::npos) return;
  std::istringstream words(written_card);
  for (std::string word; words >> word;) {
    if (word == "=" || word == "true") continue;
    require(file.find(word) != std::string::npos, word + " of the card stands in its file");
  }
}

void try_card_file(const std::string& file) {
  std::string card;
  try {
    card = written(read_card_file(MemoryFile(file).name()));
  } catch (const InputError& error) {
    const std::string what = error.what();
    require(what.starts_with("card file '"), "a refusal names the file: " + what);
    return;
  }
  require_stands_in(card, file);
  const MemoryFile again(card);
  require(written(read_card_file(again.name())) == card, "a card is read back as it was:\n" + card);
}

}  // namespace
}  // namespace tarnd::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  tarnd::fuzz::try_card_file({reinterpret_cast<const char*>(data), size});
  return 0;
}
