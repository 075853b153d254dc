#pragma once

#include <gtest/gtest.h>
#include <libyang/libyang.h>

#include <cstring>

#include "standalone/confd/validation_session.h"

namespace tarnd::test {

/// Puts the other branch into a port's entry, past the model's choice.
inline void add_xgspon_branch(const ValidationSession& session, const char* id) {
  lyd_node* entry = nullptr;
  LYD_TREE_DFS_BEGIN(session.transaction().datastore().root(), entry) {
    if (std::strcmp(entry->schema->name, "service-port") == 0 &&
        std::strcmp(lyd_get_value(lyd_child(entry)), id) == 0) {
      break;
    }
    LYD_TREE_DFS_END(session.transaction().datastore().root(), entry);
  }
  ASSERT_NE(entry, nullptr);
  lyd_node* branch = nullptr;
  if (lyd_find_path(entry, "xgspon", 0, &branch) != LY_SUCCESS) {
    ASSERT_EQ(lyd_new_inner(entry, nullptr, "xgspon", 0, &branch), LY_SUCCESS);
  }
  lyd_node* name = nullptr;
  ASSERT_EQ(lyd_new_term(branch, nullptr, "id", "1/1/9", 0, &name), LY_SUCCESS);
}

}  // namespace tarnd::test
