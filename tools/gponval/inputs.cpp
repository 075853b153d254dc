#include "tools/gponval/inputs.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "tools/gponval/usage_error.h"

namespace gponval {
namespace {

namespace store = tarnd::store;

constexpr std::string_view kStandardInput = "-";
constexpr std::size_t kReadSize = std::size_t{1} << 16;

std::string shown(const std::string& name) {
  return name == kStandardInput ? "standard input" : "'" + name + "'";
}

[[noreturn]] void cannot_read(const std::string& name, const std::string& why) {
  throw UsageError("cannot read " + shown(name) + ": " + why);
}

std::string read_all(std::istream& in, const std::string& name) {
  std::string text;
  std::array<char, kReadSize> buffer{};
  errno = 0;
  do {
    in.read(buffer.data(), buffer.size());
    text.append(buffer.data(), static_cast<std::size_t>(in.gcount()));
  } while (in);
  if (in.bad()) cannot_read(name, std::strerror(errno));
  return text;
}

std::string read_input(const std::string& name) {
  if (name == kStandardInput) return read_all(std::cin, name);
  errno = 0;
  std::ifstream in(name, std::ios::binary);
  if (!in) cannot_read(name, std::strerror(errno));
  std::error_code unknown;
  if (std::filesystem::is_directory(name, unknown)) cannot_read(name, std::strerror(EISDIR));
  return read_all(in, name);
}

// Reads the file and hands its text on; what is wrong with the text is told with the file's name.
template <typename Take>
void take_file(const std::string& name, Take take) {
  const std::string text = read_input(name);
  try {
    take(text, store::format_of(name));
  } catch (const tarnd::InputError& error) {
    throw tarnd::InputError(shown(name) + ": " + error.what());
  }
}

}  // namespace

void check_standard_input(const InputOptions& inputs, const RunOptions& run) {
  auto uses = std::count(inputs.changes.begin(), inputs.changes.end(), kStandardInput);
  if (inputs.running == kStandardInput) ++uses;
  if (inputs.candidate == kStandardInput) ++uses;
  if (uses > 1) throw UsageError("standard input (-) can be read only once");
  if (uses == 1 && run.confirm == "ask") {
    throw UsageError("--confirm ask needs standard input, which is read as a configuration (-)");
  }
}

void load_running(store::Datastore& datastore, const InputOptions& inputs) {
  take_file(inputs.running,
            [&](const std::string& text, store::Format format) { datastore.load(text, format); });
}

void apply_changes(store::Transaction& transaction, const InputOptions& inputs) {
  for (const std::string& change : inputs.changes) {
    take_file(change, [&](const std::string& text, store::Format format) {
      transaction.edit(text, format);
    });
  }
  if (inputs.candidate.has_value()) {
    take_file(*inputs.candidate, [&](const std::string& text, store::Format format) {
      transaction.replace(text, format);
    });
  }
  transaction.prepare();
}

}  // namespace gponval
