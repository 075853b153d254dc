#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "standalone/card/card_file.h"
#include "standalone/daemon/daemon.h"
#include "standalone/input_error.h"
#include "standalone/load/card_load.h"

namespace gponval::python {

/// The model's validation points that the plug-in serves.
std::vector<tarnd::PointInModel> points();

/// One part of a change: a text that is read as a file is, or the edit of one node.
struct Edit {
  std::string kind;  ///< "xml", "json", "candidate-xml", "candidate-json"; "set", "create",
                     ///< "replace", "delete" or "remove" of one node
  std::string text;
  std::string name;       ///< of the file, for messages; may be empty
  bool has_lines = true;  ///< false if no user wrote the text, so that its lines mean nothing
};

/// What was given cannot be used. The file's name and the path may be empty, the line 0.
class UnusableInput : public std::runtime_error {
 public:
  /// Of no edit in particular.
  explicit UnusableInput(const tarnd::InputError& error)
      : std::runtime_error(error.what()), path_(error.subject().path) {}

  UnusableInput(const tarnd::InputError& error, const Edit& edit) : UnusableInput(error) {
    file_ = edit.name;
    if (edit.has_lines) line_ = error.line();
  }

  [[nodiscard]] const std::string& file() const { return file_; }
  [[nodiscard]] std::size_t line() const { return line_; }
  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  std::string file_;
  std::size_t line_ = 0;
  std::string path_;
};

struct CommitChoice {
  tarnd::CommitOptions options;
  bool keep = true;  ///< false: only the verdict
};

/// A report, and the text that the command prints for it.
struct ReportWithText {
  tarnd::CommitReport report;
  std::string text;
};

/// What a change would lead to: its verdict, and what the card would carry.
struct Audit {
  ReportWithText verdict;
  tarnd::CardLoad load;
};

/// What a change changes, in both forms of `gponval diff`.
struct PrintedChanges {
  std::string json;
  std::string text;
};

/// What a keypath names, each node as JSON, an object with this one member.
struct Found {
  std::vector<std::string> nodes;
  bool one_of_several = false;  ///< an entry or one value of a leaf-list
  bool all = false;             ///< a list or leaf-list without keys
};

/// A card with its configuration. All cards of the process share one plug-in, which is initialised
/// again when another card is asked. Every function may be called from any thread, without Python's
/// lock. Throws UnusableInput for wrong input, PluginError.
class PluggedCard {
 public:
  PluggedCard(const Edit& configuration, const std::optional<Edit>& card_file);
  PluggedCard(const PluggedCard&) = delete;
  PluggedCard& operator=(const PluggedCard&) = delete;
  ~PluggedCard();

  ReportWithText commit(const std::vector<Edit>& edits, const CommitChoice& choice);
  /// Asks about a node that has this request in the model, with all its keys. On another node, or
  /// without the value that it reads, a validator may end the process.
  ReportWithText request(const std::string& name, const std::string& keypath,
                         const std::optional<std::string>& value, const std::vector<Edit>& edits);
  /// Asks every validator that the change concerns, and confirms warnings. Keeps nothing.
  Audit audit(const std::vector<Edit>& edits);
  PrintedChanges changes(const std::vector<Edit>& edits);
  tarnd::CardLoad load();
  std::string print(tarnd::store::Format format);
  Found get(const std::string& keypath);

 private:
  tarnd::Daemon& daemon();
  ReportWithText validate(tarnd::store::Transaction& transaction, const std::vector<Edit>& edits,
                          const CommitChoice& choice);

  tarnd::CardDescription card_;
  std::unique_ptr<tarnd::store::Datastore> datastore_;
};

}  // namespace gponval::python
