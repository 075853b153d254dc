#include "standalone/confd/call.h"

#include <algorithm>
#include <string>
#include <utility>

#include "standalone/confd/errors.h"
#include "standalone/confd/format.h"

namespace tarnd::confd {
namespace {

using store::NodeKind;
using store::PathStep;

bool names_many(const PathStep& step) {
  return !step.keyed &&
         (step.node->kind == NodeKind::kList || step.node->kind == NodeKind::kLeafList);
}

int fail_format() {
  return fail(CONFD_ERR_BADPATH, "the path's format does not go with its arguments");
}

std::optional<store::Path> parse_path(const Model& model, const std::string& text) {
  std::string why;
  std::optional<store::Path> path = store::Path::parse(model.schema(), text, &why);
  if (!path.has_value()) {
    fail(CONFD_ERR_BADPATH, why);
    return std::nullopt;
  }
  if (std::any_of(path->steps().begin(), path->steps().end() - 1, names_many)) {
    fail(CONFD_ERR_BADPATH, "a list without keys stands inside the path " + text);
    return std::nullopt;
  }
  return path;
}

}  // namespace

bool enter(PlatformCall call) {
  if (enter_platform_call(call)) return true;
  fail(CONFD_ERR_UNAVAILABLE, std::string(to_string(call)) + " is not answered");
  return false;
}

SessionState* enter_session(PlatformCall call, int sock, int thandle) {
  if (!enter(call)) return nullptr;
  SessionState* session = find_session(sock, thandle);
  if (session == nullptr) fail(CONFD_ERR_NOSESSION, "no transaction has this socket and handle");
  return session;
}

SessionState* enter_session(PlatformCall call, int sock) {
  if (!enter(call)) return nullptr;
  SessionState* session = find_session_by_socket(sock);
  if (session == nullptr) fail(CONFD_ERR_NOSESSION, "no transaction has this socket");
  return session;
}

std::optional<store::Path> read_path(const Model& model, const char* format,
                                     std::va_list arguments) {
  const std::optional<std::string> text = format_path(format, arguments);
  if (text.has_value()) return parse_path(model, *text);
  fail_format();
  return std::nullopt;
}

std::optional<PlaceInSession> enter_place(PlatformCall call, int sock, int thandle,
                                          const char* format, std::va_list arguments) {
  SessionState* session = enter_session(call, sock, thandle);
  if (session == nullptr) return std::nullopt;
  std::string& text = session->path_text;
  if (!format_path(text, format, arguments)) {
    fail_format();
    return std::nullopt;
  }
  const store::Datastore& datastore = session->transaction.datastore();
  if (const Place* place = session->places.find(datastore, text)) {
    return PlaceInSession{session, *place};
  }
  const std::optional<store::Path> path = parse_path(session->model, text);
  if (!path.has_value()) return std::nullopt;
  return PlaceInSession{session, find_place(datastore, *path)};
}

std::optional<PathInSession> enter_committed(PlatformCall call, int sock, const char* format,
                                             std::va_list arguments) {
  if (!enter(call)) return std::nullopt;
  const SessionState* session = find_session_by_cdb_socket(sock);
  if (session == nullptr) {
    fail(CONFD_ERR_NOSESSION, "no read session has this socket");
    return std::nullopt;
  }
  std::optional<store::Path> path = read_path(session->model, format, arguments);
  if (!path.has_value()) return std::nullopt;
  return PathInSession{session, std::move(*path)};
}

}  // namespace tarnd::confd
