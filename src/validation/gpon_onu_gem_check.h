#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "confd_maapi.h"

/// What a transaction does to the ONUs of one kind of link. An ONU's key is the three numbers of
/// its interface and its id, with blanks between them, such as "1 1 2 3".
class validation_state {
 public:
  std::int32_t sock = -1;           ///< of the transaction, for iterate_detect_change_on_onu
  confd_trans_ctx* tctx = nullptr;  ///< for the same
  bool onu_deleted = false;
  bool line_profile_changed = false;
  std::string keypath;  ///< of the validated list of ONUs, at most 1023 characters

  void register_deleted_onu(const std::string& onu);
  void register_modified_onu(const std::string& onu);
  [[nodiscard]] bool is_deleted_onu(const std::string& onu) const;
  [[nodiscard]] bool is_modified_onu(const std::string& onu) const;

 private:
  std::vector<std::string> deleted_onus_;
  std::vector<std::string> modified_onus_;
};

/// "onu_gem_check": rejects the removal of an ONU that a service port uses, and a line profile
/// without a GEM port that one of its ONU's service ports uses. Reads the changes at and below the
/// keypath, which must be a list of ONUs: for another node a fault is raised and the process ends
/// with status 1. newval is not used. Returns 0, or -1 with a text; without a text if changes or
/// service ports cannot be read.
std::int32_t validate_onu_gem_check(std::int32_t sock, confd_trans_ctx* tctx,
                                    confd_hkeypath_t* keypath, confd_value_t* newval);

/// Records deleted ONUs and those with another line profile in state, a validation_state. Throws
/// what is_change_in_line_profile throws.
maapi_iter_ret iterate_detect_change_on_onu(confd_hkeypath_t* keypath, maapi_iter_op op,
                                            confd_value_t* oldv, confd_value_t* newv, void* state);

/// Whether the ONU has another line profile in the transaction than in the committed configuration.
/// A name of 49 characters or more counts as none. Throws std::runtime_error if the committed
/// configuration cannot be read.
bool is_change_in_line_profile(unsigned int sock, confd_trans_ctx* tctx, const char* onu_keypath);

/// Checks all service ports of the transaction against the recorded ONUs; the keypath is that of
/// the validated list of ONUs. Returns 0, or -1 with a text; without a text if a service port
/// cannot be read.
std::int32_t validate_onu_removal_and_modification(int sock, confd_trans_ctx* tctx,
                                                   validation_state& state, const char* keypath);
