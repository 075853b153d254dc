#include "tools/gponval/inputs.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <utility>

#include "standalone/input_error.h"
#include "tools/gponval/usage_error.h"

namespace gponval {
namespace {

namespace store = tarnd::store;
using tarnd::report::AppliedEdit;

constexpr std::string_view kStandardInput = "-";

// More than any card needs; a longer input, such as /dev/zero, is no configuration.
constexpr std::size_t kMegabyte = 1'000'000;
constexpr std::size_t kMostOfConfiguration = 250 * kMegabyte;
constexpr std::size_t kMostOfCardFile = kMegabyte;

std::string quoted(const std::string& name) {
  return name == kStandardInput ? "standard input" : "'" + name + "'";
}

[[noreturn]] void cannot_read(const std::string& name, const std::string& why) {
  throw UsageError("cannot read " + quoted(name) + ": " + why);
}

// An input's text while it is read.
class InputText : public store::TextSource {
 public:
  InputText(std::string name, std::size_t most) : name_(std::move(name)), most_(most) {
    if (name_ == kStandardInput) return;
    errno = 0;
    file_.open(name_, std::ios::binary);
    if (!file_) cannot_read(name_, std::strerror(errno));
    std::error_code unknown;
    if (std::filesystem::is_directory(name_, unknown)) cannot_read(name_, std::strerror(EISDIR));
  }

  std::string_view next() override {
    std::istream& in = name_ == kStandardInput ? std::cin : file_;
    errno = 0;
    in.read(piece_.data(), static_cast<std::streamsize>(piece_.size()));
    if (in.bad()) cannot_read(name_, std::strerror(errno));
    const auto size = static_cast<std::size_t>(in.gcount());
    size_ += size;
    if (size_ > most_) {
      cannot_read(name_, "longer than " + std::to_string(most_ / kMegabyte) + " MB");
    }
    return {piece_.data(), size};
  }

 private:
  std::string name_;
  std::size_t most_;
  std::ifstream file_;
  std::size_t size_ = 0;
  std::array<char, kPieceSize> piece_{};
};

std::string read_input(const std::string& name, std::size_t most) {
  InputText input(name, most);
  std::string text;
  for (std::string_view piece = input.next(); !piece.empty(); piece = input.next()) text += piece;
  return text;
}

// An error in an input, in the form that compilers use: "card.xml:12: ...".
[[noreturn]] void refuse(const std::string& name, const tarnd::InputError& error) {
  std::string place(name_in_message(name));
  if (error.line() > 0) place += ":" + std::to_string(error.line());
  throw UsageError(place + ": " + error.what());
}

store::Format format_of(const std::string& name, const InputOptions& inputs) {
  const store::Format otherwise =
      inputs.input_format == "json" ? store::Format::kJson : store::Format::kXml;
  return format_named_by(name).value_or(otherwise);
}

// Reads a configuration and calls the function with it; returns its text.
template <typename Take>
std::string take_file(const std::string& name, const InputOptions& inputs, Take take) {
  std::string text = read_input(name, kMostOfConfiguration);
  try {
    take(text, format_of(name, inputs));
  } catch (const tarnd::InputError& error) {
    refuse(name, error);
  }
  return text;
}

std::vector<std::string> inputs_of(const InputOptions& inputs) {
  std::vector<std::string> names = {inputs.running};
  for (const Edit& edit : inputs.edits) {
    if (!edit.by_path.has_value()) names.push_back(edit.argument);
  }
  if (inputs.candidate.has_value()) names.push_back(*inputs.candidate);
  if (inputs.card.has_value()) names.push_back(*inputs.card);
  return names;
}

[[noreturn]] void refuse(const Edit& edit, const tarnd::InputError& error) {
  if (!edit.by_path.has_value()) refuse(edit.argument, error);
  throw UsageError(edit.option + ": " + error.what());
}

AppliedEdit apply(store::Transaction& transaction, const Edit& edit, const InputOptions& inputs) {
  if (!edit.by_path.has_value()) {
    std::string text =
        take_file(edit.argument, inputs, [&](const std::string& content, store::Format format) {
          transaction.edit(content, format);
        });
    return {edit.argument, std::nullopt, std::move(text), format_of(edit.argument, inputs)};
  }
  try {
    transaction.edit({*edit.by_path, edit.argument});
  } catch (const tarnd::InputError& error) {
    refuse(edit, error);
  }
  return {{}, edit.by_path, edit.argument, {}};
}

AppliedEdit replace(store::Transaction& transaction, const InputOptions& inputs) {
  const std::string& file = *inputs.candidate;
  std::string text = take_file(file, inputs, [&](const std::string& content, store::Format format) {
    transaction.replace(content, format);
  });
  return {file, std::nullopt, std::move(text), format_of(file, inputs)};
}

// If there is only one edit, an error in the result is reported as its error.
void prepare(store::Transaction& transaction, const InputOptions& inputs) {
  try {
    transaction.prepare();
  } catch (const tarnd::InputError& error) {
    if (inputs.candidate.has_value()) refuse(*inputs.candidate, error);
    if (inputs.edits.size() != 1) throw;
    refuse(inputs.edits.front(), error);
  }
}

}  // namespace

std::optional<store::Format> format_named_by(std::string_view file_name) {
  const auto ends_in = [file_name](std::string_view ending) {
    if (file_name.size() < ending.size()) return false;
    return std::equal(ending.begin(), ending.end(), file_name.end() - ending.size(),
                      [](char wanted, unsigned char letter) {
                        return wanted == static_cast<char>(std::tolower(letter));
                      });
  };
  if (ends_in(".json")) return store::Format::kJson;
  if (ends_in(".xml")) return store::Format::kXml;
  return std::nullopt;
}

store::Format running_format(const InputOptions& inputs) {
  return format_of(inputs.running, inputs);
}

void check_standard_input(const InputOptions& inputs, const RunOptions& run) {
  const std::vector<std::string> names = inputs_of(inputs);
  const auto uses = std::count(names.begin(), names.end(), kStandardInput);
  if (uses > 1) throw UsageError("standard input (-) can be read only once");
  if (uses == 1 && run.confirm == "ask") {
    throw UsageError("--confirm ask needs standard input, which is read as a file (-)");
  }
}

tarnd::CardDescription read_card(const InputOptions& inputs) {
  if (!inputs.card.has_value()) return tarnd::CardDescription::standard();
  try {
    return tarnd::parse_card(read_input(*inputs.card, kMostOfCardFile));
  } catch (const tarnd::InputError& error) {
    refuse(*inputs.card, error);
  }
}

void load_running(store::Datastore& datastore, const InputOptions& inputs) {
  InputText text(inputs.running, kMostOfConfiguration);
  try {
    datastore.load(text, format_of(inputs.running, inputs));
  } catch (const tarnd::InputError& error) {
    refuse(inputs.running, error);
  }
}

std::string load_and_keep_running(store::Datastore& datastore, const InputOptions& inputs) {
  return take_file(inputs.running, inputs, [&](const std::string& text, store::Format format) {
    datastore.load(text, format);
  });
}

void replace_by_running(store::Transaction& transaction, const InputOptions& inputs) {
  take_file(inputs.running, inputs, [&](const std::string& content, store::Format format) {
    transaction.replace(content, format);
    transaction.prepare();
  });
}

std::vector<AppliedEdit> apply_changes(store::Transaction& transaction,
                                       const InputOptions& inputs) {
  std::vector<AppliedEdit> applied;
  for (const Edit& edit : inputs.edits) applied.push_back(apply(transaction, edit, inputs));
  if (inputs.candidate.has_value()) applied.push_back(replace(transaction, inputs));
  prepare(transaction, inputs);
  return applied;
}

std::string_view name_in_message(std::string_view file) {
  return file == kStandardInput ? "standard input" : file;
}

}  // namespace gponval
