#include "standalone/report/answer_source.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

#include "standalone/input_error.h"
#include "standalone/store/edit_places.h"
#include "standalone/store/keypath_edit.h"
#include "standalone/store/path.h"

namespace tarnd::report {
namespace {

struct ReadEdit {
  std::string file;
  store::EditPlaces places;
};

store::ReadChange read(const store::Schema& schema, const AppliedEdit& edit) {
  if (edit.by_path.has_value()) {
    return store::read_keypath_edit(schema, {*edit.by_path, edit.text});
  }
  return store::read_change(schema, edit.text, edit.format);
}

std::vector<ReadEdit> read_all(const store::Schema& schema, const std::vector<AppliedEdit>& edits) {
  std::vector<ReadEdit> all;
  all.reserve(edits.size());
  for (const AppliedEdit& edit : edits) {
    all.push_back({edit.file, store::EditPlaces(read(schema, edit))});
  }
  return all;
}

std::optional<Source> source_of(const std::vector<ReadEdit>& edits, const store::Path& path) {
  std::optional<Source> source;
  bool touched = false;
  for (const ReadEdit& edit : edits) {
    const store::EditPlace place = edit.places.of(path);
    if (!place.touched) continue;
    if (touched || edit.file.empty() || !place.line.has_value()) return std::nullopt;
    touched = true;
    source = {edit.file, *place.line};
  }
  return source;
}

const lyd_node* entry_of(const store::Change& change) {
  return change.after != nullptr ? change.after : change.before;
}

bool is_at(const store::Change& change, const store::PathStep& step) {
  if (change.schema != step.node) return false;
  const lyd_node* key = lyd_child(entry_of(change));
  return std::all_of(step.keys.begin(), step.keys.end(), [&key](const std::string& wanted) {
    return wanted == lyd_get_value(std::exchange(key, key->next));
  });
}

// The changes below the parent of the node at the path; null if they are not listed, because the
// parent is new or something around it is.
const std::vector<store::Change>* changes_beside(const store::Transaction& transaction,
                                                 const store::Path& path) {
  const store::Change* change = transaction.changes();
  for (std::size_t i = 1; change != nullptr && i + 1 < path.steps().size(); ++i) {
    const store::PathStep& step = path.steps()[i];
    const auto next =
        std::find_if(change->children.begin(), change->children.end(),
                     [&step](const store::Change& child) { return is_at(child, step); });
    change = next != change->children.end() ? &*next : nullptr;
  }
  return change != nullptr ? &change->children : nullptr;
}

// Many lists are validated as a whole, while only one entry changed. Returns the path of that
// entry, the path itself if it is no such list, and none if several entries changed.
std::optional<store::Path> node_to_find(const store::Transaction& transaction,
                                        const std::string& text) {
  const store::Schema& schema = transaction.datastore().schema();
  auto path = store::Path::parse(schema, text, nullptr);
  if (!path.has_value()) return path;
  const store::PathStep& last = path->last();
  if (last.node->kind != store::NodeKind::kList || last.keyed) return path;
  const std::vector<store::Change>* changes = changes_beside(transaction, *path);
  if (changes == nullptr) return path;
  const auto of_list = [&last](const store::Change& change) { return change.schema == last.node; };
  const auto first = std::find_if(changes->begin(), changes->end(), of_list);
  if (first == changes->end()) return path;
  if (std::any_of(std::next(first), changes->end(), of_list)) return std::nullopt;
  // An entry that is gone has no parent any more.
  const std::string keys = store::step_of(entry_of(*first)).substr(1 + last.node->name.size());
  return store::Path::parse(schema, text + keys, nullptr);
}

// The nodes whose places are looked for; none for an answer without a place.
std::vector<std::optional<store::Path>> nodes_to_find(const store::Transaction& transaction,
                                                      const std::vector<Answer>& answers) {
  std::vector<std::optional<store::Path>> nodes;
  for (const Answer& answer : answers) {
    nodes.emplace_back();
    if (answer.result == Verdict::kOk) continue;
    nodes.back() = node_to_find(transaction, answer.path);
  }
  return nodes;
}

}  // namespace

std::vector<std::optional<Source>> sources_of(const store::Transaction& transaction,
                                              const std::vector<AppliedEdit>& edits,
                                              const std::vector<Answer>& answers) {
  std::vector<std::optional<Source>> sources(answers.size());
  const auto nodes = nodes_to_find(transaction, answers);
  const auto is_wanted = [](const auto& node) { return node.has_value(); };
  if (std::none_of(nodes.begin(), nodes.end(), is_wanted)) return sources;
  try {
    const std::vector<ReadEdit> read = read_all(transaction.datastore().schema(), edits);
    for (std::size_t i = 0; i < answers.size(); ++i) {
      if (nodes[i].has_value()) sources[i] = source_of(read, *nodes[i]);
    }
  } catch (const InputError&) {
    // A candidate inside NETCONF's <data> is no edit.
  }
  return sources;
}

}  // namespace tarnd::report
