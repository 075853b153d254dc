#include "bench/full_card.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "gpon_card_valid.h"
#include "standalone/card/card_file.h"

namespace bench {
namespace {

using tarnd::CallCounts;
using tarnd::CommitResult;
using tarnd::store::Format;
using tarnd::store::Transaction;

constexpr int kFirstAddedPort = 1'000'000;
constexpr int kFirstAddedVlan = 3000;

tarnd::CardDescription roomy_card() {
  tarnd::CardDescription card = tarnd::CardDescription::standard();
  card.max_service_ports = kMostServicePorts;
  return card;
}

}  // namespace

gponval::CardSize full_cards(std::uint32_t cards) {
  gponval::CardSize size;
  for (std::uint32_t* count : {&size.links, &size.service_ports, &size.bandwidth_profiles,
                               &size.line_profiles, &size.service_profiles, &size.rg_profiles,
                               &size.tr069_profiles, &size.sip_profiles, &size.media_profiles}) {
    *count *= cards;
  }
  return size;
}

std::string card_text(const gponval::CardSize& size) {
  constexpr std::string_view kByPassword = "<onu-auth-method>password<";
  constexpr std::string_view kBySerialNumber = "<onu-auth-method>serial-number<";
  std::ostringstream out;
  gponval::write_card(out, size);
  std::string text = out.str();
  const std::size_t method = text.find(kByPassword);
  if (method != std::string::npos) text.replace(method, kByPassword.size(), kBySerialNumber);
  return text;
}

std::string change(std::string_view content) {
  return "<config xmlns=\"urn:tarnd:base\" "
         "xmlns:nc=\"urn:ietf:params:xml:ns:netconf:base:1.0\">" +
         std::string(content) + "</config>";
}

std::string added_ports(int count, std::string_view operation) {
  const std::string attribute =
      operation.empty() ? "" : " nc:operation=\"" + std::string(operation) + "\"";
  std::string ports;
  for (int i = 0; i < count; ++i) {
    ports += "<service-port" + attribute + "><id>" + std::to_string(kFirstAddedPort + i) + "</id>" +
             "<gpon><id>1/1/1</id><onu><id>1</id><gem><gem-id>1</gem-id></gem></onu></gpon>"
             "<match><vlan><vlan-id>" +
             std::to_string(kFirstAddedVlan + i) + "</vlan-id></vlan></match></service-port>";
  }
  return change(ports);
}

Edit joined(const std::vector<Edit>& edits) {
  const auto content = [](const std::string& config) {
    const std::size_t begin = config.find('>') + 1;
    return config.substr(begin, config.rfind('<') - begin);
  };
  std::string changes;
  std::string back;
  for (const Edit& edit : edits) {
    changes += content(edit.change);
    back += content(edit.back);
  }
  return {change(changes), change(back)};
}

double milliseconds(const std::function<void()>& work) {
  const auto now = [] {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
  };
  const double start = now();
  work();
  return now() - start;
}

double fastest(int runs, const std::function<double()>& once) {
  double least = once();
  for (int i = 1; i < runs; ++i) least = std::min(least, once());
  return least;
}

double peak_megabytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024;
}

void in_own_process(const std::function<void()>& work) {
  std::fflush(stdout);
  const pid_t child = fork();
  if (child == 0) {
    work();
    std::fflush(stdout);
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  if (status != 0) throw std::runtime_error("a measurement has failed");
}

Card::Card(const std::string& text)
    : Card(text, {&lib_init, &get_validation_point, &validate, &lib_finish}) {}

Card::Card(const std::string& text, const tarnd::PluginEntryPoints& plugin)
    : schema_(TARND_MODEL_DIR), datastore_(schema_) {
  insert_card(roomy_card());
  load_ = milliseconds([&] { datastore_.load(text, Format::kXml); });
  daemon_ = std::make_unique<tarnd::Daemon>(datastore_, plugin);
}

tarnd::CommitReport Card::decide(Transaction& transaction, const std::vector<std::string>& only) {
  tarnd::CommitOptions options;
  options.only = only;
  options.confirm = [](const auto&) { return true; };
  tarnd::CommitReport report = daemon_->commit(transaction, options);
  if (report.result != CommitResult::kAccepted || report.answers.empty()) {
    throw std::runtime_error("the commit was not accepted: " +
                             (report.answers.empty() ? "" : report.answers.back().text));
  }
  return report;
}

double Card::steps(const Edit& edit) {
  return milliseconds([&] {
    Transaction transaction(datastore_);
    transaction.edit(edit.change, Format::kXml);
    transaction.prepare();
    affected_calls(daemon_->points(), transaction);
  });
}

double Card::commit(const Edit& edit, const std::vector<std::string>& only) {
  const double time = milliseconds([&] {
    Transaction transaction(datastore_);
    transaction.edit(edit.change, Format::kXml);
    transaction.prepare();
    decide(transaction, only);
  });
  apply(edit.back);
  return time;
}

double Card::answers(const Edit& edit, const std::vector<std::string>& only) {
  double time = 0;
  {
    Transaction transaction(datastore_);
    transaction.edit(edit.change, Format::kXml);
    transaction.prepare();
    time = milliseconds([&] { decide(transaction, only); });
  }
  apply(edit.back);
  return time;
}

double Card::replace_for_good(const std::string& text) {
  return milliseconds([&] {
    Transaction transaction(datastore_);
    transaction.replace(text, Format::kXml);
    transaction.prepare();
    decide(transaction, {});
  });
}

double Card::merge_for_good(const std::string& text) {
  return milliseconds([&] {
    Transaction transaction(datastore_);
    transaction.edit(text, Format::kXml);
    transaction.prepare();
    decide(transaction, {});
  });
}

CommitResult Card::verdict(const std::string& edit, const std::string& request) {
  Transaction transaction(datastore_);
  transaction.edit(edit, Format::kXml);
  transaction.prepare();
  tarnd::CommitOptions options;
  options.only = {request};
  return daemon_->commit(transaction, options).result;
}

std::string Card::text() const {
  return datastore_.print(Format::kXml);
}

CallCounts Card::calls(const Edit& edit, const std::string& request) {
  const CallCounts before = tarnd::platform_call_counts();
  answers(edit, {request});
  CallCounts made = tarnd::platform_call_counts();
  std::transform(made.begin(), made.end(), before.begin(), made.begin(), std::minus<>());
  return made;
}

void Card::apply(const std::string& edit) {
  Transaction transaction(datastore_);
  transaction.edit(edit, Format::kXml);
  transaction.prepare();
  transaction.commit();
}

}  // namespace bench
