// Any text as a path. What can be read is written and read again, names at most one node of a card,
// and reaches the plug-in as a keypath that names the same.

#include <algorithm>
#include <array>

#include "fuzz/property.h"
#include "fuzz/small_card.h"
#include "fuzz/target.h"
#include "standalone/confd/keypath.h"
#include "standalone/store/datastore.h"
#include "tests/support/model.h"

namespace tarnd::fuzz {
namespace {

using store::Path;
using store::PathStep;

const store::Datastore& card() {
  static const auto datastore = [] {
    auto loaded = std::make_unique<store::Datastore>(test::model());
    loaded->load(small_card(), store::Format::kXml);
    return loaded;
  }();
  return *datastore;
}

std::string written(const Path& path) {
  std::string text;
  for (const PathStep& step : path.steps()) {
    text += "/" + step.node->name;
    if (!step.keyed) continue;
    text += "{";
    for (std::size_t i = 0; i < step.keys.size(); ++i) {
      text += (i > 0 ? " " : "") + store::quote_key(step.keys[i]);
    }
    text += "}";
  }
  return text;
}

bool same(const PathStep& left, const PathStep& right) {
  return left.node == right.node && left.keyed == right.keyed && left.keys == right.keys;
}

Path read_back(const std::string& text) {
  std::string why;
  auto path = Path::parse(test::model(), text, &why);
  require(path.has_value(), "a written path can be read: " + why);
  return std::move(*path);
}

void require_same_when_read_back(const Path& path) {
  const Path again = read_back(written(path));
  require(std::equal(path.steps().begin(), path.steps().end(), again.steps().begin(),
                     again.steps().end(), same),
          written(path) + " is read back as it was");
}

void require_same_node_by_its_path(const Path& path) {
  const lyd_node* node = card().find(path);
  if (node == nullptr) return;
  require(card().find(read_back(store::path_of(node))) == node,
          store::path_of(node) + " names the node that " + written(path) + " names");
}

void try_keypath(const Path& path) {
  try {
    confd::OwnedKeypath keypath(confd::load_model(test::model()), path);
    std::array<char, 256> text{};
    confd_pp_kpath(text.data(), text.size(), keypath.get());
  } catch (const InputError&) {
    require(card().find(path) == nullptr, written(path) + " stands and makes a keypath");
  }
}

}  // namespace
}  // namespace tarnd::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  std::string why;
  const auto path = tarnd::store::Path::parse(tarnd::test::model(), text, &why);
  tarnd::fuzz::require(path.has_value() == why.empty(), "a refusal has a reason");
  if (!path.has_value()) return 0;
  tarnd::fuzz::require_same_when_read_back(*path);
  tarnd::fuzz::require_same_node_by_its_path(*path);
  tarnd::fuzz::try_keypath(*path);
  return 0;
}
