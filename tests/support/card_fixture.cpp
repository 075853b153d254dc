#include "tests/support/card_fixture.h"

#include "gpon_card_valid.h"
#include "tests/support/model.h"

namespace tarnd::test {
namespace {

PluginEntryPoints linked_plugin() {
  return {&lib_init, &get_validation_point, &validate, &lib_finish};
}

}  // namespace

CardFixture::CardFixture() : datastore_(model()), counts_at_start_(platform_call_counts()) {
  insert(CardDescription::standard());
}

CardFixture::~CardFixture() {
  let_calls_pass();
  session_.reset();
  transaction_.reset();
}

void CardFixture::insert(const CardDescription& card) {
  insert_card(card);
  daemon_.reset();
  daemon_ = std::make_unique<Daemon>(datastore_, linked_plugin());
}

void CardFixture::running(const std::string& content) {
  session_.reset();
  transaction_.reset();
  datastore_.load(config(""), store::Format::kXml);
  // A merge, so that a test may speak of one container several times.
  store::Transaction transaction(datastore_);
  transaction.edit(config(content), store::Format::kXml);
  transaction.prepare();
  transaction.commit();
}

CommitReport CardFixture::commit(const std::string& change, const std::vector<std::string>& only,
                                 bool confirm) {
  session_.reset();
  transaction_.reset();
  store::Transaction transaction(datastore_);
  transaction.edit(config(change), store::Format::kXml);
  transaction.prepare();
  CommitOptions options;
  options.only = only;
  options.confirm = [confirm](const std::vector<Answer>&) { return confirm; };
  return daemon_->commit(transaction, options);
}

Answer CardFixture::answer_of(const std::string& request, const std::string& change) {
  const CommitReport report = commit(change, {request});
  EXPECT_FALSE(report.answers.empty()) << request << " is not called for this change";
  for (const Answer& answer : report.answers) {
    if (answer.result != Verdict::kOk) return answer;
  }
  return report.answers.empty() ? Answer() : report.answers.front();
}

Answer CardFixture::request(const std::string& name, const std::string& keypath,
                            const std::string& change, const std::optional<std::string>& value) {
  session_.reset();
  transaction_.reset();
  store::Transaction transaction(datastore_);
  if (!change.empty()) transaction.edit(config(change), store::Format::kXml);
  transaction.prepare();
  return daemon_->request(transaction, name, keypath, value, {}).answers.front();
}

ValidationSession& CardFixture::open(const std::string& change) {
  session_.reset();
  transaction_.reset();
  transaction_ = std::make_unique<store::Transaction>(datastore_);
  if (!change.empty()) transaction_->edit(config(change), store::Format::kXml);
  transaction_->prepare();
  session_ = std::make_unique<ValidationSession>(*transaction_);
  session_->begin_request("");
  return *session_;
}

void CardFixture::fail_call(PlatformCall call, int nth) {
  set_call_hook(
      [call, nth, seen = 0](PlatformCall made) mutable { return made != call || ++seen != nth; });
}

void CardFixture::let_calls_pass() {
  set_call_hook({});
}

std::uint64_t CardFixture::calls(PlatformCall call) const {
  const auto index = static_cast<std::size_t>(call);
  return platform_call_counts().at(index) - counts_at_start_.at(index);
}

std::string CardFixture::running_text() const {
  return datastore_.print(store::Format::kXml);
}

}  // namespace tarnd::test
