#include "python/native/plugged_card.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <new>
#include <sstream>
#include <string_view>

#include "python/native/process.h"
#include "standalone/nearest_name.h"
#include "standalone/report/answer_source.h"
#include "standalone/report/changes.h"
#include "standalone/report/verdict_text.h"
#include "standalone/store/path.h"
#include "standalone/store/transaction.h"

namespace gponval::python {
namespace {

using tarnd::InputError;
using tarnd::report::AppliedEdit;
using tarnd::report::Source;
using tarnd::store::Datastore;
using tarnd::store::Format;
using tarnd::store::NodeKind;
using tarnd::store::Operation;
using tarnd::store::Path;
using tarnd::store::PathStep;
using tarnd::store::SchemaNode;
using tarnd::store::Transaction;

/// The daemon of the card that was asked last.
struct InUse {
  const void* card = nullptr;
  std::optional<tarnd::Daemon> daemon;
};

InUse& in_use() {
  static auto& last = *new InUse;
  return last;
}

constexpr std::array<std::pair<std::string_view, Operation>, 5> kEditsOfANode = {{
    {"set", Operation::kMerge},
    {"create", Operation::kCreate},
    {"replace", Operation::kReplace},
    {"delete", Operation::kDelete},
    {"remove", Operation::kRemove},
}};

std::optional<Operation> operation_on_a_node(const Edit& edit) {
  for (const auto& [kind, operation] : kEditsOfANode) {
    if (edit.kind == kind) return operation;
  }
  return std::nullopt;
}

Format format_of(const Edit& edit) {
  return edit.kind.ends_with("json") ? Format::kJson : Format::kXml;
}

void apply(const Edit& edit, Transaction& transaction) {
  try {
    if (const auto operation = operation_on_a_node(edit)) {
      transaction.edit({*operation, edit.text});
    } else if (edit.kind.starts_with("candidate-")) {
      transaction.replace(edit.text, format_of(edit));
    } else {
      transaction.edit(edit.text, format_of(edit));
    }
  } catch (const InputError& error) {
    throw UnusableInput(error, edit);
  }
}

// If there is only one edit, an error in the result is its error.
void apply(const std::vector<Edit>& edits, Transaction& transaction) {
  for (const Edit& edit : edits) apply(edit, transaction);
  try {
    transaction.prepare();
  } catch (const InputError& error) {
    if (edits.size() == 1) throw UnusableInput(error, edits.front());
    throw UnusableInput(error);
  }
}

// A change that is no file has no name, and the places in it are not printed.
std::vector<AppliedEdit> applied(const std::vector<Edit>& edits) {
  std::vector<AppliedEdit> all;
  all.reserve(edits.size());
  for (const Edit& edit : edits) {
    all.push_back({edit.name, operation_on_a_node(edit), edit.text, format_of(edit)});
  }
  return all;
}

ReportWithText with_text(tarnd::CommitReport report,
                         const std::vector<std::optional<Source>>& sources,
                         const tarnd::report::TextOptions& options) {
  std::ostringstream text;
  tarnd::report::print_verdict(text, report, sources, options);
  return {std::move(report), text.str()};
}

bool is_one_of_several(const SchemaNode& node) {
  return node.kind == NodeKind::kList || node.kind == NodeKind::kLeafList;
}

// The entries of the list, or the values of the leaf-list, that the path names without keys.
std::vector<lyd_node*> all_instances(const Datastore& datastore, const Path& path) {
  const lyd_node* parent = datastore.find(path.parent());
  if (parent == nullptr) return {};
  const SchemaNode& node = *path.last().node;
  if (node.kind == NodeKind::kLeafList) return datastore.leaf_list(parent, node);
  const auto entries = datastore.entries(parent, node);
  return {entries.begin(), entries.end()};
}

// One node as RFC 7951 has it, in an object of its own.
std::string json_of(const lyd_node* node) {
  char* text = nullptr;
  const LY_ERR result =
      lyd_print_mem(&text, node, LYD_JSON, LYD_PRINT_WD_ALL | LYD_PRINT_KEEPEMPTYCONT);
  const std::unique_ptr<char, decltype(&std::free)> owner(text, &std::free);
  if (result != LY_SUCCESS || text == nullptr) throw std::bad_alloc();
  return text;
}

tarnd::CardDescription read_card(const std::optional<Edit>& file) {
  if (!file.has_value()) return tarnd::CardDescription::standard();
  try {
    return tarnd::parse_card(file->text);
  } catch (const InputError& error) {
    throw UnusableInput(error, *file);
  }
}

std::unique_ptr<Datastore> loaded(const Edit& configuration) {
  const Turn turn;
  auto datastore = std::make_unique<Datastore>(schema());
  try {
    datastore->load(configuration.text, format_of(configuration));
  } catch (const InputError& error) {
    throw UnusableInput(error, configuration);
  }
  return datastore;
}

Path parsed(const std::string& keypath) {
  std::string why;
  auto path = Path::parse(schema(), keypath, &why);
  if (!path.has_value()) throw InputError(why);
  return std::move(*path);
}

// The point on the node with this request. Throws InputError.
const tarnd::PointInModel& point_of(const std::vector<tarnd::PointInModel>& points,
                                    const std::string& name, const SchemaNode& node) {
  const tarnd::PointInModel* elsewhere = nullptr;
  for (const tarnd::PointInModel& point : points) {
    if (point.point->request != name) continue;
    if (point.node == &node) return point;
    elsewhere = &point;
  }
  if (elsewhere == nullptr) {
    throw InputError("the model has no request '" + name + "'" +
                     tarnd::did_you_mean(name, request_names(points)));
  }
  throw InputError("the request " + name + " is not one of " + node.path() + " but of " +
                   elsewhere->node->path());
}

// Throws InputError if a list above the node, or the node itself when each entry is validated, is
// named without its keys.
void check_keys(const Path& path, const tarnd::PointInModel& point) {
  for (const PathStep& step : path.steps()) {
    const bool is_last = &step == &path.last();
    if (step.node->kind != NodeKind::kList || step.keyed) continue;
    if (is_last && point.point->call_once) continue;
    throw InputError("the path needs the keys of " + step.node->name);
  }
}

void check_value(const Datastore& datastore, const Path& path,
                 const std::optional<std::string>& value) {
  if (path.last().node->kind != NodeKind::kLeaf) return;
  if (value.has_value() || datastore.find(path) != nullptr) return;
  throw InputError("the leaf has no value, and none is given");
}

}  // namespace

std::vector<tarnd::PointInModel> points() {
  const Turn turn;
  std::array<char, 256> name{};
  plugin().entry_points().get_validation_point(name.data(), static_cast<int>(name.size()));
  return tarnd::validation_points(schema(), name.data());
}

PluggedCard::PluggedCard(const Edit& configuration, const std::optional<Edit>& card_file)
    : card_(read_card(card_file)), datastore_(loaded(configuration)) {}

// A function that confirms warnings may let go of the last reference to another card. At the end of
// the process a thread may have the turn that gives it to nobody.
PluggedCard::~PluggedCard() {
  if (Turn::is_lost()) {
    static_cast<void>(datastore_.release());
    return;
  }
  std::optional<Turn> turn;
  if (!Turn::is_taken_here()) turn.emplace(Turn::Wait::kToTheEnd);
  if (in_use().card == this) {
    in_use().daemon.reset();
    in_use().card = nullptr;
  }
  datastore_.reset();
}

ReportWithText PluggedCard::commit(const std::vector<Edit>& edits, const CommitChoice& choice) {
  const Turn turn;
  const tarnd::Daemon& asked = daemon();
  for (const std::string& name : choice.options.only) {
    const auto known = request_names(asked.points());
    if (std::find(known.begin(), known.end(), name) != known.end()) continue;
    throw InputError("only: the model has no request '" + name + "'" +
                     tarnd::did_you_mean(name, known));
  }
  Transaction transaction(*datastore_);
  apply(edits, transaction);
  return validate(transaction, edits, choice);
}

Audit PluggedCard::audit(const std::vector<Edit>& edits) {
  const Turn turn;
  CommitChoice choice;
  choice.keep = false;
  choice.options.all = true;
  choice.options.confirm = [](const std::vector<tarnd::Answer>&) { return true; };
  Transaction transaction(*datastore_);
  apply(edits, transaction);
  ReportWithText verdict = validate(transaction, edits, choice);
  return {std::move(verdict), tarnd::card_load(daemon(), plugin(), transaction)};
}

ReportWithText PluggedCard::validate(Transaction& transaction, const std::vector<Edit>& edits,
                                     const CommitChoice& choice) {
  tarnd::Daemon& asked = daemon();
  const bool nothing_changed = transaction.changes() == nullptr;
  tarnd::CommitReport report = choice.keep ? asked.commit(transaction, choice.options)
                                           : asked.check(transaction, choice.options);
  std::vector<std::optional<Source>> sources(report.answers.size());
  if (report.result != tarnd::CommitResult::kAccepted) {
    sources = sources_of(transaction, applied(edits), report.answers);
  }
  return with_text(std::move(report), sources, {"Commit", false, nothing_changed, false});
}

ReportWithText PluggedCard::request(const std::string& name, const std::string& keypath,
                                    const std::optional<std::string>& value,
                                    const std::vector<Edit>& edits) {
  const Turn turn;
  tarnd::Daemon& asked = daemon();
  const Path path = parsed(keypath);
  check_keys(path, point_of(asked.points(), name, *path.last().node));
  Transaction transaction(*datastore_);
  apply(edits, transaction);
  check_value(*datastore_, path, value);
  tarnd::CommitReport report = asked.request(transaction, name, keypath, value, {});
  const auto sources = sources_of(transaction, applied(edits), report.answers);
  return with_text(std::move(report), sources, {"Request", true, false, false});
}

PrintedChanges PluggedCard::changes(const std::vector<Edit>& edits) {
  const Turn turn;
  Transaction transaction(*datastore_);
  apply(edits, transaction);
  std::ostringstream json;
  std::ostringstream text;
  tarnd::report::print_changes_json(json, transaction.changes());
  tarnd::report::print_changes_text(text, transaction.changes(), false);
  return {json.str(), text.str()};
}

tarnd::CardLoad PluggedCard::load() {
  const Turn turn;
  return tarnd::card_load(daemon(), plugin(), *datastore_);
}

std::string PluggedCard::print(Format format) {
  const Turn turn;
  return datastore_->print(format);
}

Found PluggedCard::get(const std::string& keypath) {
  const Turn turn;
  const Path path = parsed(keypath);
  datastore_->settle_order();
  Found found;
  found.one_of_several = is_one_of_several(*path.last().node);
  found.all = found.one_of_several && !path.last().keyed;
  if (found.all) {
    for (const lyd_node* node : all_instances(*datastore_, path)) {
      found.nodes.push_back(json_of(node));
    }
  } else if (const lyd_node* node = datastore_->find(path)) {
    found.nodes.push_back(json_of(node));
  }
  return found;
}

tarnd::Daemon& PluggedCard::daemon() {
  InUse& last = in_use();
  if (last.card == this && last.daemon.has_value()) return *last.daemon;
  last.daemon.reset();
  tarnd::insert_card(card_);
  last.card = this;
  return last.daemon.emplace(*datastore_, plugin().entry_points());
}

}  // namespace gponval::python
