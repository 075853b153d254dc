#include "standalone/confd/query_chunk.h"

#include <string>

#include "standalone/confd/keypath.h"
#include "standalone/confd/print.h"

namespace tarnd::confd {
namespace {

class StringChunk final : public Chunk {
 public:
  StringChunk(std::size_t num_rows, std::size_t num_elements)
      : Chunk(CONFD_QUERY_STRING, num_rows, num_elements), texts_(size()), pointers_(size()) {
    set_rows(&Row::str, pointers_);
  }

  // An enumeration or a union prints by the name that the model has for its value.
  void fill(std::size_t element, const Selected& selected) override {
    const OwnedValue value = selected.value();
    std::string& text = texts_[element];
    text = value_text(selected.selector.target(), value.get()).value_or(value_text(value.get()));
    pointers_[element] = text.data();
  }

 private:
  std::vector<std::string> texts_;
  std::vector<char*> pointers_;
};

class KeypathChunk final : public Chunk {
 public:
  KeypathChunk(std::size_t num_rows, std::size_t num_elements)
      : Chunk(CONFD_QUERY_HKEYPATH, num_rows, num_elements), keypaths_(size()) {
    set_rows(&Row::hkp, keypaths_);
  }

  // The keypath of a node that does not exist is empty.
  void fill(std::size_t element, const Selected& selected) override {
    set_keypath(selected.model, selected.node(), keypaths_[element]);
  }

 private:
  std::vector<confd_hkeypath_t> keypaths_;
};

class KeypathValueChunk final : public Chunk {
 public:
  KeypathValueChunk(std::size_t num_rows, std::size_t num_elements)
      : Chunk(CONFD_QUERY_HKEYPATH_VALUE, num_rows, num_elements), pairs_(size()) {
    set_rows(&Row::kv, pairs_);
  }
  ~KeypathValueChunk() override {
    for (Pair& pair : pairs_) release(pair.val);
  }

  void fill(std::size_t element, const Selected& selected) override {
    set_keypath(selected.model, selected.node(), pairs_[element].hkp);
    pairs_[element].val = selected.value().take();
  }

 private:
  using Pair = std::remove_pointer_t<decltype(Row::kv)>;
  std::vector<Pair> pairs_;
};

class TagValueChunk final : public Chunk {
 public:
  TagValueChunk(std::size_t num_rows, std::size_t num_elements)
      : Chunk(CONFD_QUERY_TAG_VALUE, num_rows, num_elements), values_(size()) {
    set_rows(&Row::tv, values_);
  }
  ~TagValueChunk() override {
    for (confd_tag_value_t& tagged : values_) release(tagged.v);
  }

  void fill(std::size_t element, const Selected& selected) override {
    const Model& model = selected.model;
    values_[element].tag = {model.node(selected.selector.target()).number,
                            model.namespace_number()};
    values_[element].v = selected.value().take();
  }

 private:
  std::vector<confd_tag_value_t> values_;
};

}  // namespace

Chunk::Chunk(confd_query_result_type form, std::size_t num_rows, std::size_t num_elements)
    : confd_query_result(), rows_(num_rows), num_elements_(num_elements) {
  type = form;
  offset = 0;
  nresults = static_cast<int>(num_rows);
  nelements = static_cast<int>(num_elements);
  results = rows_.data();
}

std::unique_ptr<Chunk> make_chunk(confd_query_result_type form, std::size_t num_rows,
                                  std::size_t num_elements) {
  switch (form) {
    case CONFD_QUERY_STRING:
      return std::make_unique<StringChunk>(num_rows, num_elements);
    case CONFD_QUERY_HKEYPATH:
      return std::make_unique<KeypathChunk>(num_rows, num_elements);
    case CONFD_QUERY_HKEYPATH_VALUE:
      return std::make_unique<KeypathValueChunk>(num_rows, num_elements);
    case CONFD_QUERY_TAG_VALUE:
      return std::make_unique<TagValueChunk>(num_rows, num_elements);
  }
  return nullptr;
}

}  // namespace tarnd::confd
