#include "standalone/confd/validation_session.h"

#include "standalone/confd/session_state.h"

namespace tarnd {

ValidationSession::ValidationSession(store::Transaction& transaction)
    : state_(std::make_unique<SessionState>(transaction)) {}

ValidationSession::~ValidationSession() = default;

confd_trans_ctx* ValidationSession::context() {
  return &state_->context;
}

int ValidationSession::maapi_socket() const {
  return state_->maapi_socket;
}

store::Transaction& ValidationSession::transaction() const {
  return state_->transaction;
}

void ValidationSession::begin_request(const std::string& name) {
  state_->request = name;
  state_->context.validate_opaque = state_->request.data();
  state_->error_text.reset();
}

std::optional<std::string> ValidationSession::error_text() const {
  return state_->error_text;
}

const std::vector<std::string>& ValidationSession::messages() const {
  return state_->messages;
}

ValidationSession::OpenResources ValidationSession::open_resources() const {
  return {static_cast<int>(state_->cursors.size()), static_cast<int>(state_->queries.size()),
          static_cast<int>(state_->cdb_sockets.size())};
}

}  // namespace tarnd
