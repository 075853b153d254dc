#pragma once

#include <filesystem>

#include "standalone/descriptor.h"

namespace gponval {

/// Opens a file, but no link, to lock it: for writing if that is allowed, since some network file
/// systems cannot lock a file that is open for reading only.
tarnd::Descriptor open_to_lock(const std::filesystem::path& name);

/// Locks the file for this descriptor alone, until it is closed or its process ends for any reason.
/// Returns 0, EWOULDBLOCK if another descriptor has the lock, or another errno if the file cannot
/// be locked.
[[nodiscard]] int try_lock(const tarnd::Descriptor& file);

/// Whether this is a regular file and still has this name, because nobody has removed or replaced
/// it.
bool is_regular_file_at(const tarnd::Descriptor& file, const std::filesystem::path& name);

}  // namespace gponval
