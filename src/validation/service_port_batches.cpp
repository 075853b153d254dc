#include "service_port_batches.h"

#include <algorithm>

#include "service_port_record.h"

namespace valid {
namespace {

constexpr unsigned int kObjectsPerBatch = 300;

}  // namespace

ServicePortBatches::ServicePortBatches(int sock, confd_trans_ctx* tctx)
    : reader_(SP_CONFD_VALUES_PER_OBJECT, kObjectsPerBatch, kServicePorts, sock, tctx, true) {}

ServicePortBatches::~ServicePortBatches() {
  free_names();
}

int ServicePortBatches::next() {
  free_names();
  const int result = reader_.getObjects();
  count_ = std::max(result, 0);
  return result;
}

void ServicePortBatches::free_names() {
  for (int i = 0; i < count_; ++i) {
    confd_value_t* const values = object(i);
    free_interface_name(&values[SP_CONFD_VAL_OFFSET_XGSPON_INTERFACE]);
    free_interface_name(&values[SP_CONFD_VAL_OFFSET_GPON_INTERFACE]);
  }
  count_ = 0;
}

}  // namespace valid
