#include "validation_guards.h"

#include <array>

#include "gpon_vald_trace_itf.h"
#include "session/qzconfd_session.h"

namespace valid {

ValidationTrace::ValidationTrace(const char* name) : name_(name) {
  trace_validation_begin(name);
}

std::int32_t ValidationTrace::end(std::int32_t result) const {
  trace_validation_end(name_, result, static_cast<unsigned int>(timer_.get_elapsed_time_msec()));
  return result;
}

Cursor::~Cursor() {
  if (open_) {
    maapi_destroy_cursor(&cursor_);
  }
}

bool Cursor::next() {
  return open_ && maapi_get_next(&cursor_) == CONFD_OK && cursor_.n != 0;
}

Query::Query(int sock, const confd_trans_ctx* tctx, const char* xpath, int chunk_size,
             const char* selection)
    : sock_(sock) {
  constexpr int kFirstResult = 1;
  std::array<const char*, 1> selections{selection};
  handle_ = maapi_query_start(sock, tctx->thandle, xpath, nullptr, chunk_size, kFirstResult,
                              CONFD_QUERY_TAG_VALUE, static_cast<int>(selections.size()),
                              selections.data(), 0, nullptr);
}

Query::~Query() {
  free_chunk();
  if (started()) {
    maapi_query_stop(sock_, handle_);
  }
}

const confd_query_result* Query::next_chunk() {
  free_chunk();
  failed_ = !started() || maapi_query_result(sock_, handle_, &chunk_) != CONFD_OK;
  if (failed_) {
    return nullptr;
  }
  return chunk_->nresults > 0 ? chunk_ : nullptr;
}

void Query::free_chunk() {
  if (chunk_ != nullptr) {
    maapi_query_free_result(chunk_);
    chunk_ = nullptr;
  }
}

ConfigSession::ConfigSession(const confd_trans_ctx* tctx, AfterFailedStart after_failed_start)
    : handle_(tctx->vcb_opaque), socket_(qzconfd_config_session_start(handle_)) {
  if (!open() && after_failed_start == AfterFailedStart::kEnd) {
    qzconfd_config_session_end(handle_);
  }
}

ConfigSession::~ConfigSession() {
  end();
}

void ConfigSession::end() {
  if (open()) {
    qzconfd_config_session_end(handle_);
    socket_ = 0;
  }
}

}  // namespace valid
