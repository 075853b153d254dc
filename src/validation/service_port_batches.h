#pragma once

#include "confd_get_objects_itf.h"

namespace valid {

/// Walks all service ports of the transaction in batches:
///   ServicePortBatches batches(sock, tctx);
///   for (int count = batches.next(); count > 0; count = batches.next())
///     for (int i = 0; i < count; ++i) use(batches.object(i));
///
/// The walk owns the interface names that it reads until service_port_get_leafs takes them. Names
/// that were not taken are freed with the next batch and at the end, so a caller may skip objects
/// and stop anywhere.
class ServicePortBatches {
 public:
  /// Ends the process if a service port of the model has another number of values, see
  /// ConfdGetObjsItf.
  ServicePortBatches(int sock, confd_trans_ctx* tctx);
  ServicePortBatches(const ServicePortBatches&) = delete;
  ServicePortBatches& operator=(const ServicePortBatches&) = delete;
  ~ServicePortBatches();

  /// Reads the next batch. Returns the number of objects read, 0 at the end of the list, -1 on
  /// failure.
  int next();

  /// The values of one object of the current batch, at the positions SP_CONFD_VAL_OFFSET_*.
  confd_value_t* object(int index) { return reader_.object(index); }

 private:
  void free_names();

  ConfdGetObjsItf reader_;
  int count_ = 0;  // objects of the current batch
};

}  // namespace valid
