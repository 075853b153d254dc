#include "standalone/store/libyang_compat.h"

#include <algorithm>
#include <string_view>

namespace tarnd::store {
namespace {

std::string place_of(const ly_err_item& error) {
#if LY_VERSION_MAJOR >= 3
  if (error.data_path != nullptr) return error.data_path;
  if (error.schema_path != nullptr) return error.schema_path;
  return error.line != 0 ? "Line number " + std::to_string(error.line) + "." : "";
#else
  return error.path != nullptr ? error.path : "";
#endif
}

}  // namespace

std::string take_libyang_error(ly_ctx* context) {
  const ly_err_item* item = ly_err_first(context);
  // The first error is the cause, those behind it its consequences.
  while (item != nullptr && item->level != LY_LLERR) item = item->next;
  std::string text = item != nullptr && item->msg != nullptr ? item->msg : "unknown error";
  const std::string place = item != nullptr ? place_of(*item) : "";
  if (!place.empty()) text += " (" + place + ")";
  ly_err_clean(context, nullptr);
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text;
}

LY_ERR find_xpath(const lyd_node* context, const lyd_node* tree, const char* expression,
                  ly_set** set) {
#if LY_VERSION_MAJOR >= 3
  return lyd_find_xpath3(context, tree, expression, LY_VALUE_JSON, nullptr, nullptr, set);
#else
  return lyd_find_xpath3(context, tree, expression, nullptr, set);
#endif
}

std::vector<std::pair<std::string_view, std::string>> substatements(
    const lysp_ext_instance& extension) {
  const auto text = [](const char* argument) { return argument != nullptr ? argument : ""; };
  std::vector<std::pair<std::string_view, std::string>> result;
  for (const lysp_stmt* stmt = extension.child; stmt != nullptr; stmt = stmt->next) {
    result.emplace_back(stmt->stmt, text(stmt->arg));
  }
#if LY_VERSION_MAJOR >= 3
  // Extensions inside are instances of their own there.
  LY_ARRAY_COUNT_TYPE i = 0;
  LY_ARRAY_FOR(extension.exts, i) {
    result.emplace_back(extension.exts[i].name, text(extension.exts[i].argument));
  }
#endif
  return result;
}

bool is_internal(const lyd_meta* meta) {
  return std::string_view(meta->name) == "lyds_tree";
}

}  // namespace tarnd::store
