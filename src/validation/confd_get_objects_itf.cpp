#include "confd_get_objects_itf.h"

#include <array>
#include <cstdio>
#include <utility>

#include "model_fault.h"

namespace {

constexpr const char* kModuleName = "ConfdGetObjsItf";
constexpr std::size_t kFaultTextSize = 350;

}  // namespace

ConfdGetObjsItf::ConfdGetObjsItf(unsigned int values_per_object, unsigned int objects_per_batch,
                                 std::string path, int sock, confd_trans_ctx* tctx,
                                 bool check_object_size)
    : values_per_object_(values_per_object),
      objects_per_batch_(objects_per_batch),
      path_(std::move(path)),
      sock_(sock),
      tctx_(tctx),
      values_(std::size_t{objects_per_batch} * values_per_object),
      cursor_open_(maapi_init_cursor(sock_, tctx_->thandle, &cursor_, "%s", path_.c_str()) ==
                   CONFD_OK) {
  if (check_object_size) {
    require_object_size();
  }
}

ConfdGetObjsItf::~ConfdGetObjsItf() {
  if (cursor_open_) {
    maapi_destroy_cursor(&cursor_);
  }
}

int ConfdGetObjsItf::getObjects() {
  if (!cursor_open_) {
    return -1;
  }
  if (cursor_.n == 0) {
    return 0;
  }
  int count = static_cast<int>(objects_per_batch_);
  const int result =
      maapi_get_objects(&cursor_, values_.data(), static_cast<int>(values_per_object_), &count);
  return result < 0 ? -1 : count;
}

void ConfdGetObjsItf::require_object_size() const {
  confd_cs_node* const list = confd_cs_node_cd(nullptr, "%s", path_.c_str());
  const int size = list == nullptr ? 0 : confd_max_object_size(list);
  if (size == static_cast<int>(values_per_object_)) {
    return;
  }
  std::array<char, kFaultTextSize> text;
  std::snprintf(text.data(), text.size(), "[%s] object size (%d) differs from expected (%d).",
                path_.c_str(), size, static_cast<int>(values_per_object_));
  valid::end_on_model_fault({__FILE__, kModuleName, __LINE__}, text.data());
}
