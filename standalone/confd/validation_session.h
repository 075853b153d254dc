#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "confd_maapi.h"
#include "standalone/store/transaction.h"

namespace tarnd {

struct SessionState;

/// One user's transaction as the plug-in sees it: the MAAPI socket and handle, the transaction
/// context of the callbacks, and the configuration sessions on the committed configuration.
///
/// While it lives, `maapi_*` calls with its socket and handle read the transaction, and
/// `qzconfd_*` accept its context's `vcb_opaque`. Its end releases what the calls left open
/// (cursors, queries, configuration sessions).
class ValidationSession {
 public:
  explicit ValidationSession(store::Transaction& transaction);
  ValidationSession(const ValidationSession&) = delete;
  ValidationSession& operator=(const ValidationSession&) = delete;
  ~ValidationSession();

  [[nodiscard]] confd_trans_ctx* context();
  [[nodiscard]] int maapi_socket() const;
  [[nodiscard]] store::Transaction& transaction() const;

  /// The request name that the next call of the plug-in finds in `validate_opaque`; also forgets
  /// the error text of the call before. The text is copied.
  void begin_request(const std::string& name);
  /// The text that confd_trans_seterr set since begin_request; nothing if it was not called.
  [[nodiscard]] std::optional<std::string> error_text() const;

  /// What maapi_prio_message sent to this user's session, in order.
  [[nodiscard]] const std::vector<std::string>& messages() const;

  /// What is open at this moment, for checking that a validator has closed everything.
  struct OpenResources {
    int cursors = 0;
    int queries = 0;
    int configuration_sessions = 0;
  };
  [[nodiscard]] OpenResources open_resources() const;

 private:
  std::unique_ptr<SessionState> state_;
};

}  // namespace tarnd
