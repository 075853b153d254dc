#include "netconf/editing.h"

#include <array>
#include <string_view>
#include <utility>
#include <vector>

#include "netconf/committing.h"
#include "netconf/configuration_text.h"
#include "netconf/locks.h"
#include "netconf/verdicts.h"
#include "netconf/words.h"
#include "netconf/xml_text.h"

namespace tarnd::netconf {
namespace {

using store::Format;

enum class Test { kSet, kTestThenSet, kTestOnly };

constexpr std::array kTestOptions{Word<Test>{"set", Test::kSet},
                                  Word<Test>{"test-then-set", Test::kTestThenSet},
                                  Word<Test>{"test-only", Test::kTestOnly}};

// An edit is done as a whole or not at all, but if it goes on.
enum class OnError { kUndo, kGoOn };

constexpr std::array kErrorOptions{Word<OnError>{"stop-on-error", OnError::kUndo},
                                   Word<OnError>{"rollback-on-error", OnError::kUndo},
                                   Word<OnError>{"continue-on-error", OnError::kGoOn}};

struct EditOptions {
  Test test = Test::kSet;
  bool continues_on_error = false;
};

// Without a test-option an edit may leave the candidate incomplete, for the next one to complete.
Test test_option(const Run& run) {
  return meaning_of(run, "test-option", kTestOptions).value_or(Test::kSet);
}

bool continues_on_error(const Run& run) {
  return meaning_of(run, "error-option", kErrorOptions).value_or(OnError::kUndo) == OnError::kGoOn;
}

EditOptions edit_options(const Run& run) {
  const EditOptions options{test_option(run), continues_on_error(run)};
  if (!options.continues_on_error || options.test == Test::kSet) return options;
  refuse(error_of("protocol", "operation-not-supported",
                  "continue-on-error goes with the test-option set only"));
}

// Applies what can be applied, and returns the errors of the rest.
std::vector<RpcError> edit_what_fits(const Run& run, const std::string& text) {
  std::vector<RpcError> errors;
  for (const InputError& error : run.card.candidate.edit_what_fits(text, Format::kXml)) {
    errors.push_back(rpc_error(run.card.datastore.schema(), error));
  }
  return errors;
}

void edit_if_valid(const Run& run, const std::string& text, Test test) {
  run.card.candidate.edit_if(text, Format::kXml, [&run, test] {
    check_candidate(run);
    return test == Test::kTestThenSet;
  });
}

std::vector<RpcError> edit_candidate(const Run& run, const std::string& text,
                                     const EditOptions& options) {
  try {
    if (options.continues_on_error) return edit_what_fits(run, text);
    if (options.test != Test::kSet) {
      edit_if_valid(run, text, options.test);
    } else {
      run.card.candidate.edit(text, Format::kXml);
    }
  } catch (const InputError& error) {
    refuse(rpc_error(run.card.datastore.schema(), error));
  }
  return {};
}

std::vector<RpcError> edit_running(const Run& run, const std::string& text, EditOptions options) {
  if (options.test == Test::kTestOnly) return edit_candidate(run, text, options);
  options.test = Test::kSet;  // the commit is the test
  std::vector<RpcError> errors;
  commit_at_once(run, [&] { errors = edit_candidate(run, text, options); });
  return errors;
}

[[noreturn]] void refuse_copy_to_itself(Target target) {
  refuse(invalid_value("the source and the target are both the " + std::string(to_string(target)) +
                       " configuration"));
}

std::string copy_to_running(const Run& run, const Element* config) {
  if (config != nullptr) {
    return commit_at_once(run, [&] { replace_candidate(run, *config); });
  }
  if (datastore_in(run, "source") == Target::kRunning) refuse_copy_to_itself(Target::kRunning);
  return copy_candidate_to_running(run);
}

std::string copy_to_candidate(const Run& run, const Element* config) {
  check_not_locked_by_another(run, Target::kCandidate);
  if (config != nullptr) {
    replace_candidate(run, *config);
    return kOk;
  }
  if (datastore_in(run, "source") == Target::kCandidate) refuse_copy_to_itself(Target::kCandidate);
  run.card.candidate.discard();
  return kOk;
}

}  // namespace

const Element* given_configuration(const Run& run) {
  const Element& source = parameter(run, "source");
  if (source.children.size() != 1) return nullptr;
  const Element& only = source.children.front();
  return only.is(kBaseNamespace, "config") ? &only : nullptr;
}

void replace_candidate(const Run& run, const Element& config) {
  const store::Schema& schema = run.card.datastore.schema();
  const std::string empty =
      "<" + schema.root().name + " xmlns=\"" + escaped(schema.namespace_uri()) + "\"/>";
  try {
    run.card.candidate.replace(config.unread.empty() ? empty : configuration_text(run, config),
                               Format::kXml);
  } catch (const InputError& error) {
    refuse(rpc_error(run.card.datastore.schema(), error));
  }
}

std::string edit_config(const Run& run) {
  const bool of_running = datastore_in(run, "target") == Target::kRunning;
  const Element& config = parameter(run, "config");
  const EditOptions options = edit_options(run);
  if (of_running) {
    check_running_may_be_edited(run);
  } else {
    check_not_locked_by_another(run, Target::kCandidate);
  }
  if (config.unread.empty()) return kOk;
  const std::string text = edit_text(run, config);
  std::vector<RpcError> errors =
      of_running ? edit_running(run, text, options) : edit_candidate(run, text, options);
  if (!errors.empty()) throw RpcFailure(std::move(errors));
  return kOk;
}

std::string copy_config(const Run& run) {
  const Target target = datastore_in(run, "target");
  const Element* config = given_configuration(run);
  return target == Target::kRunning ? copy_to_running(run, config) : copy_to_candidate(run, config);
}

std::string discard_changes(const Run& run) {
  check_not_locked_by_another(run, Target::kCandidate);
  run.card.candidate.discard();
  return kOk;
}

}  // namespace tarnd::netconf
