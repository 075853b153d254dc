#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "confd_maapi.h"

/// Reads a long list of the transaction in batches, each entry as a flat array of values:
///   ConfdGetObjsItf reader(kValuesPerObject, kObjectsPerBatch, path, sock, tctx, true);
///   for (int count = reader.getObjects(); count > 0; count = reader.getObjects())
///     for (int i = 0; i < count; ++i) use(reader.object(i));
///
/// A C_BUF value belongs to the caller, who frees it with confd_free_value. Neither the next batch,
/// which overwrites the values, nor the destructor frees it.
class ConfdGetObjsItf {
 public:
  /// The path is that of the list; it is copied. If check_object_size is set and the model's
  /// entries do not have values_per_object values, a fault is raised and the process ends with
  /// status 1: the positions of the values are constants, so the wrong values would be read.
  ConfdGetObjsItf(unsigned int values_per_object, unsigned int objects_per_batch, std::string path,
                  int sock, confd_trans_ctx* tctx, bool check_object_size);
  ConfdGetObjsItf(const ConfdGetObjsItf&) = delete;
  ConfdGetObjsItf& operator=(const ConfdGetObjsItf&) = delete;
  ~ConfdGetObjsItf();

  /// Reads the next batch. Returns the number of objects read, 0 at the end of the list, -1 on
  /// failure.
  int getObjects();

  /// The values of one object of the current batch, values_per_object of them.
  confd_value_t* object(int index) {
    return values_.data() + static_cast<std::size_t>(index) * values_per_object_;
  }

 private:
  void require_object_size() const;

  std::uint32_t values_per_object_;
  std::uint32_t objects_per_batch_;
  std::string path_;
  int sock_;
  confd_trans_ctx* tctx_;
  maapi_cursor cursor_{};
  std::vector<confd_value_t> values_;
  bool cursor_open_;
};
