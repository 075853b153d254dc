#include "standalone/confd/place_finder.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "standalone/store/path_text.h"

namespace tarnd::confd {
namespace {

using store::NodeKind;
using store::SchemaNode;

std::size_t common_length(std::string_view left, std::string_view right) {
  constexpr std::size_t kWord = sizeof(std::uint64_t);
  const std::size_t limit = std::min(left.size(), right.size());
  std::size_t at = 0;
  while (at + kWord <= limit && std::memcmp(left.data() + at, right.data() + at, kWord) == 0) {
    at += kWord;
  }
  while (at < limit && left[at] == right[at]) ++at;
  return at;
}

// Whether a step that ends at this position in another text ends there in this one, too. A brace
// may follow after a slash.
bool step_ends(std::string_view text, std::size_t at) {
  return at == text.size() || (text[at] == '/' && text.substr(at + 1, 1) != "{");
}

void make_canonical(const SchemaNode& node, std::vector<std::string_view>& keys) {
  if (node.kind == NodeKind::kLeafList) {
    for (std::string_view& key : keys) key = store::canonical_key(node, key);
    return;
  }
  for (std::size_t i = 0; i < keys.size() && i < node.num_keys; ++i) {
    keys[i] = store::canonical_key(*node.children[i], keys[i]);
  }
}

}  // namespace

std::size_t PlaceFinder::known_steps(std::string_view text) const {
  const std::size_t common = common_length(text_, text);
  std::size_t known = 0;
  while (known < steps_.size() && steps_[known].end <= common &&
         step_ends(text, steps_[known].end)) {
    ++known;
  }
  return known;
}

// Mostly the name at this depth is that of the path before.
const SchemaNode* PlaceFinder::node_named(const store::Schema& schema, std::size_t depth,
                                          std::string_view name) const {
  if (depth == 0) return store::root_named(schema, name);
  const SchemaNode* around = steps_[depth - 1].place.schema;
  if (depth < steps_.size()) {
    const SchemaNode* before = steps_[depth].place.schema;
    if (before->parent == around && before->name == name) return before;
  }
  return around->child(name);
}

// Whether the rest of a text is that of the path before, which begins there after `old_end` and
// with the step at this depth, and names no keys.
bool PlaceFinder::rest_is_known(std::string_view rest, std::size_t depth,
                                std::size_t old_end) const {
  if (std::string_view(text_).substr(old_end) != rest) return false;
  return std::none_of(steps_.begin() + static_cast<std::ptrdiff_t>(depth), steps_.end(),
                      [](const Step& step) { return step.place.keyed; });
}

// Goes the way of the path before from this depth on, which began there after `old_end`. Returns
// the depth at its end.
std::size_t PlaceFinder::follow_known_rest(const store::Datastore& datastore, std::size_t depth,
                                           std::size_t old_end) {
  const std::size_t new_end = steps_[depth - 1].end;
  for (; depth < steps_.size(); ++depth) {
    Step& step = steps_[depth];
    step.end = step.end - old_end + new_end;
    step.place = step_down(datastore, steps_[depth - 1].place, *step.place.schema, false, {});
  }
  return depth;
}

// The place below the step before this depth. Mostly it is the entry after that of the path before.
Place PlaceFinder::place_of(const store::Datastore& datastore, std::size_t depth,
                            const SchemaNode& node, bool keyed) const {
  const Place& around = steps_[depth - 1].place;
  const lyd_node* before = depth < steps_.size() ? steps_[depth].place.node : nullptr;
  if (keyed && before != nullptr && before->schema == node.lysc &&
      steps_[depth].place.parent == around.node && keys_.size() == node.num_keys) {
    lyd_node* const next = before->next;
    if (next != nullptr && next->schema == node.lysc && store::has_key(next, keys_)) {
      return {&node, next, around.node, keyed, true};
    }
  }
  return step_down(datastore, around, node, keyed, keys_);
}

// Reads the steps from this depth on.
bool PlaceFinder::follow(const store::Datastore& datastore, std::string_view text,
                         std::size_t& depth) {
  store::PathText reader(text);
  if (depth > 0) reader.skip(steps_[depth - 1].end);
  while (reader.take('/')) {
    if (reader.at_end()) break;
    const std::string_view name = reader.until([](char c) { return c == '/' || c == '{'; });
    const SchemaNode* node = node_named(datastore.schema(), depth, name);
    if (node == nullptr || (depth > 0 && names_many(steps_[depth - 1].place))) return false;
    const bool keyed = reader.take('{') || reader.take("/{");
    keys_.clear();
    if (keyed) {
      if (node->kind != NodeKind::kList && node->kind != NodeKind::kLeafList) return false;
      if (!reader.keys(keys_)) return false;
      make_canonical(*node, keys_);
    }
    const Place place =
        depth == 0 ? root_place(datastore) : place_of(datastore, depth, *node, keyed);
    const Step step{reader.position(), place};
    if (depth == steps_.size()) {
      steps_.push_back(step);
      ++depth;
      continue;
    }
    const Step before = std::exchange(steps_[depth], step);
    ++depth;
    if (before.place.schema == node && rest_is_known(reader.rest(), depth, before.end)) {
      if (depth < steps_.size() && names_many(place)) return false;
      depth = follow_known_rest(datastore, depth, before.end);
      return true;
    }
  }
  return reader.at_end() && depth > 0;
}

const Place* PlaceFinder::find(const store::Datastore& datastore, std::string_view text) {
  if (version_ != datastore.version() ||
      (!steps_.empty() && steps_.front().place.node != datastore.root())) {
    steps_.clear();
  }
  const std::size_t known = known_steps(text);
  const std::size_t kept = known > 0 ? steps_[known - 1].end : 0;
  std::size_t depth = known;
  if (!follow(datastore, text, depth)) {
    steps_.resize(known);
    text_.resize(kept);
    return nullptr;
  }
  steps_.resize(depth);
  text_.erase(kept).append(text.substr(kept));
  version_ = datastore.version();
  return &steps_.back().place;
}

}  // namespace tarnd::confd
