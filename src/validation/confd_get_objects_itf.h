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
/// A C_BUF value belongs to the caller: it stays allocated until the caller gives it to
/// confd_free_value. The next batch overwrites the values without freeing them, so does the end.
class ConfdGetObjsItf {
 public:
  /// The path is that of the list, copied. With the check of the object size, a list whose entries
  /// have another number of values than values_per_object in the model raises a fault and ends the
  /// process with status 1: fixed positions would then read the wrong values.
  ConfdGetObjsItf(unsigned int values_per_object, unsigned int objects_per_batch, std::string path,
                  int sock, confd_trans_ctx* tctx, bool check_object_size);
  ConfdGetObjsItf(const ConfdGetObjsItf&) = delete;
  ConfdGetObjsItf& operator=(const ConfdGetObjsItf&) = delete;
  ~ConfdGetObjsItf();

  /// Reads the next batch. The number of objects read, 0 at the end of the list, -1 on failure.
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
