#include "gpon_vald_trace_itf.h"

#include <string>

#include "confd_lib.h"
#include "middleware/qzmw.h"

namespace {

constexpr const char* kCategoryName = "gpon-valid";

zlog_category_t* trace_category = nullptr;

std::string result_name(int result) {
  switch (result) {
    case CONFD_ERR:
      return "ERROR";
    case CONFD_OK:
      return "OK";
    case CONFD_VALIDATION_WARN:
      return "WARNING";
    default:
      return "UNKNOWN";
  }
}

}  // namespace

zlog_category_t* get_trace_cat() {
  if (trace_category == nullptr) {
    trace_category = qzmw_trace_register_category(kCategoryName);
  }
  return trace_category;
}

void clear_trace_cat() {
  trace_category = nullptr;
}

void trace_validation_begin(const char* name) {
  VALID_TRACE(kTraceFlow, "%s begin", name);
}

void trace_validation_end(const char* name, int result, unsigned int msecs) {
  const std::string word = result_name(result);
  VALID_TRACE(kTraceFlow, "%s end - %s - elapsed time %d msecs.", name, word.c_str(), msecs);
}

bool valid::trace_enabled(int level) {
  return enabled_trace_cat(level) != nullptr;
}

zlog_category_t* valid::enabled_trace_cat(int level) {
  zlog_category_t* const category = get_trace_cat();
  return category != nullptr && zlog_level_enabled(category, level) != 0 ? category : nullptr;
}
