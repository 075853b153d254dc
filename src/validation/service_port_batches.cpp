#include "service_port_batches.h"

#include <algorithm>

#include "valid_service_port.h"

namespace valid {
namespace {

constexpr const char* kServicePorts = "/config/service-port";
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

void free_interface_name(confd_value_t* name) {
  if (name->type == C_BUF && CONFD_GET_BUFPTR(name) != nullptr) {
    confd_free_value(name);
    CONFD_SET_BUF(name, nullptr, 0);
  }
}

}  // namespace valid
