#include "netconf/state/keeping.h"

namespace tarnd::netconf::state {
namespace {

void begin_history_with(Connection& connection, Number number) {
  for (const char* statement :
       {"DELETE FROM snapshots WHERE number < ?", "DELETE FROM commits WHERE number < ?"}) {
    Statement(connection, statement).bind(1, number).run();
  }
}

}  // namespace

bool may_begin_with(const Keep& keep, Number number, std::time_t time, Number newest,
                    std::time_t now) {
  if (keep.commits.has_value()) return newest - number >= *keep.commits;
  if (keep.age.has_value()) return now - time >= keep.age->count();
  return false;
}

void drop_old_commits(Connection& connection, const Keep& keep, Number newest, std::time_t now) {
  Number first = 0;
  {
    Statement select(connection,
                     "SELECT number, time FROM snapshots JOIN commits USING (number)"
                     " ORDER BY number DESC");
    while (first == 0 && select.step()) {
      if (may_begin_with(keep, select.integer(0), select.integer(1), newest, now)) {
        first = select.integer(0);
      }
    }
  }
  if (first != 0) begin_history_with(connection, first);
}

}  // namespace tarnd::netconf::state
