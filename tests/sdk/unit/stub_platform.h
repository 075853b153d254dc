#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "confd_maapi.h"

/// The part of the platform that the tests need, for the headers of ../include.
namespace sdk {

struct Platform {
  /// The transaction: the numbers of leaves and the counts of lists, by path. A path without a
  /// number does not exist.
  std::map<std::string, int> numbers;
  /// The single keys of a list's entries by the list's path.
  std::map<std::string, std::vector<confd_value_t>> lists;
  /// What a query selects, a value a result.
  std::vector<confd_value_t> selected;
  /// confd_errno of the reads that fail.
  int failure = CONFD_ERR_NOEXISTS;

  std::string user_text;              ///< as set by confd_trans_seterr
  std::vector<std::string> messages;  ///< as sent, with the session's number before them
  int freed = 0;                      ///< freed values
};

/// The platform of the running test.
Platform& platform();

confd_value_t number(std::uint32_t value);
confd_value_t enumeration(std::int32_t value);
confd_value_t name_tag(std::uint32_t tag);
/// A text on the heap, which the caller frees.
confd_value_t text(const std::string& value);
confd_value_t nothing();

}  // namespace sdk
