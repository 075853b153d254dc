#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "standalone/card/card_file.h"
#include "standalone/confd/validation_session.h"
#include "standalone/daemon/daemon.h"
#include "standalone/platform_calls.h"
#include "tests/support/configuration.h"
#include "tests/support/matchers.h"

namespace tarnd::test {

/// A card with a running configuration. A content is the inside of the top-level `config`.
class CardFixture : public ::testing::Test {
 protected:
  CardFixture();
  ~CardFixture() override;

  /// Puts another card in and initialises the plug-in anew.
  void insert(const CardDescription& card);
  /// Loads the running configuration.
  void running(const std::string& content);

  /// Commits a change; only the named requests are called, or all if none is named.
  CommitReport commit(const std::string& change, const std::vector<std::string>& only = {},
                      bool confirm = false);
  /// Commits a change with one request and returns its answer: the first that is not OK, or else an
  /// OK answer. Fails the test if the request is not called.
  Answer answer_of(const std::string& request, const std::string& change);
  /// The same without an edit: dispatches the request on a keypath after the change.
  Answer request(const std::string& name, const std::string& keypath,
                 const std::string& change = "",
                 const std::optional<std::string>& value = std::nullopt);

  /// Opens a transaction with the change for calls of single functions. Closes an earlier one.
  ValidationSession& open(const std::string& change = "");
  int sock() { return session_->maapi_socket(); }
  confd_trans_ctx* tctx() { return session_->context(); }

  /// Makes the n-th of the next calls of that kind fail (1 is the next one), until the test ends or
  /// `let_calls_pass`.
  static void fail_call(PlatformCall call, int nth = 1);
  static void let_calls_pass();
  /// How often the call was made since the test began.
  [[nodiscard]] std::uint64_t calls(PlatformCall call) const;

  /// The running configuration as XML text.
  [[nodiscard]] std::string running_text() const;

 private:
  store::Datastore datastore_;
  std::unique_ptr<Daemon> daemon_;
  std::unique_ptr<store::Transaction> transaction_;
  std::unique_ptr<ValidationSession> session_;
  CallCounts counts_at_start_;
};

}  // namespace tarnd::test
