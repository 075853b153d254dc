#pragma once

#include <cstddef>
#include <memory>
#include <type_traits>
#include <vector>

#include "confd_maapi.h"
#include "standalone/confd/selector.h"

namespace tarnd::confd {

/// The source of one element of a chunk: a selector, and the result that it applies to.
struct Selected {
  const Model& model;
  const store::Datastore& datastore;
  const Selector& selector;
  const lyd_node* result;

  [[nodiscard]] const lyd_node* node() const { return selector.node(datastore, result); }
  [[nodiscard]] OwnedValue value() const { return selector.value(model, datastore, result); }
};

/// Some results of a query as the application gets them, with the memory of everything in them.
/// There is a derived type for each confd_query_result_type; make_chunk() chooses it.
class Chunk : public confd_query_result {
 public:
  using Row = std::remove_pointer_t<decltype(confd_query_result::results)>;

  Chunk(const Chunk&) = delete;
  Chunk& operator=(const Chunk&) = delete;
  virtual ~Chunk() = default;

  /// Fills the element with that index; the elements of all rows follow one another.
  virtual void fill(std::size_t element, const Selected& selected) = 0;

 protected:
  Chunk(confd_query_result_type form, std::size_t num_rows, std::size_t num_elements);

  /// The number of elements of all rows.
  [[nodiscard]] std::size_t size() const { return rows_.size() * num_elements_; }

  /// Points each row, through the member of the form, to its first element.
  template <typename Element>
  void set_rows(Element* Row::*member, std::vector<Element>& elements) {
    for (std::size_t row = 0; row < rows_.size(); ++row) {
      rows_[row].*member = elements.data() + row * num_elements_;
    }
  }

 private:
  std::vector<Row> rows_;
  std::size_t num_elements_;
};

/// An empty chunk for that number of results, each with that number of selected nodes; null if the
/// form is unknown.
std::unique_ptr<Chunk> make_chunk(confd_query_result_type form, std::size_t num_rows,
                                  std::size_t num_elements);

}  // namespace tarnd::confd
