#pragma once

#include <vector>

#include "standalone/store/edit_log.h"
#include "standalone/store/reader.h"

namespace tarnd::store {

/// What takes the edits of a log back after another log has taken them over, which forgets what was
/// in between. It keeps copies of what the edits removed, so it costs what they touched. The lists
/// in what they removed must be in order.
class Reversal {
 public:
  explicit Reversal(const EditLog& edits);

  /// Takes the edits back, as edits of the log that took them over. The tree must be as it was
  /// then. To be called once.
  void apply(EditLog& log);

 private:
  struct Step {
    lyd_node* parent;   ///< null for the whole tree
    lyd_node* added;    ///< in the tree, or null
    TreeOwner removed;  ///< a copy, or null
  };

  void collect(const EditRecord& record, lyd_node* parent);

  std::vector<Step> steps_;
};

}  // namespace tarnd::store
