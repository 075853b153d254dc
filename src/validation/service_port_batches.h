#pragma once

#include "confd_get_objects_itf.h"

namespace valid {

/// Walks all service ports of the transaction in batches:
///   ServicePortBatches batches(sock, tctx);
///   for (int count = batches.next(); count > 0; count = batches.next())
///     for (int i = 0; i < count; ++i) use(batches.object(i));
///
/// The interface names that the walk reads belong to it until service_port_get_leafs takes one.
/// Those that nobody took are freed with the next batch and at the end, so a walk may skip objects
/// and stop anywhere.
class ServicePortBatches {
 public:
  /// Ends the process where the model's service port has another shape, see ConfdGetObjsItf.
  ServicePortBatches(int sock, confd_trans_ctx* tctx);
  ServicePortBatches(const ServicePortBatches&) = delete;
  ServicePortBatches& operator=(const ServicePortBatches&) = delete;
  ~ServicePortBatches();

  /// Reads the next batch. The number of objects read, 0 at the end of the list, -1 on failure.
  int next();

  /// The values of one object of the current batch, at the positions SP_CONFD_VAL_OFFSET_*.
  confd_value_t* object(int index) { return reader_.object(index); }

 private:
  void free_names();

  ConfdGetObjsItf reader_;
  int count_ = 0;  // objects of the current batch
};

}  // namespace valid
