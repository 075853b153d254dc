#include "netconf/state/schema_version.h"

#include <array>
#include <cstddef>
#include <string>

#include "netconf/state/failure.h"

namespace tarnd::netconf::state {
namespace {

// In the header of the file. Other programs' databases have another number there.
constexpr int kApplication = 0x67706f6e;  // "gpon"

// 1. Commits are numbered without gaps. `changes` and `answers` are JSON, in the form that
// commits.cpp has. There is a snapshot of the oldest commit that is kept, a late one, from which
// all others are near, and one between them if old commits go. `since` is the commit to which an
// unconfirmed one goes back.
constexpr const char* kFirst = R"(
  CREATE TABLE commits (
    number INTEGER PRIMARY KEY,
    time INTEGER NOT NULL,
    kind TEXT NOT NULL,
    user TEXT NOT NULL,
    session INTEGER NOT NULL,
    label TEXT,
    comment TEXT,
    changes TEXT NOT NULL,
    answers TEXT NOT NULL,
    notices TEXT NOT NULL
  ) STRICT;
  CREATE TABLE snapshots (
    number INTEGER PRIMARY KEY REFERENCES commits (number),
    configuration TEXT NOT NULL
  ) STRICT;
  CREATE TABLE pending (
    one INTEGER PRIMARY KEY CHECK (one = 1),
    since INTEGER NOT NULL REFERENCES commits (number),
    persist TEXT NOT NULL,
    deadline INTEGER NOT NULL,
    boot TEXT NOT NULL
  ) STRICT;
)";

// 2. Where the server listens that has the state.
constexpr const char* kSecond = R"(
  CREATE TABLE server (
    one INTEGER PRIMARY KEY CHECK (one = 1),
    socket TEXT NOT NULL
  ) STRICT;
)";

constexpr std::array kSteps{kFirst, kSecond};

}  // namespace

std::span<const char* const> schema_steps() {
  return kSteps;
}

bool is_new(Connection& connection) {
  return connection.number("PRAGMA application_id") == 0 &&
         connection.number("SELECT count(*) FROM sqlite_schema") == 0;
}

void check_version(Connection& connection, std::span<const char* const> steps) {
  if (connection.number("PRAGMA application_id") != kApplication) {
    throw Failure("state '" + connection.name() + "': it is no state of gponval");
  }
  const auto version = static_cast<std::size_t>(connection.number("PRAGMA user_version"));
  if (version <= steps.size()) return;
  throw Failure("state '" + connection.name() + "': it is of a newer gponval (version " +
                std::to_string(version) + " of the tables, this one knows " +
                std::to_string(steps.size()) + ")");
}

void migrate(Connection& connection, std::span<const char* const> steps) {
  const auto version = static_cast<std::size_t>(connection.number("PRAGMA user_version"));
  if (version >= steps.size()) return;
  for (const char* step : steps.subspan(version)) connection.run(step);
  connection.run("PRAGMA application_id = " + std::to_string(kApplication));
  connection.run("PRAGMA user_version = " + std::to_string(steps.size()));
}

}  // namespace tarnd::netconf::state
