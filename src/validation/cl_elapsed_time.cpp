#include "cl_elapsed_time.h"

#include <chrono>

namespace {

constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
constexpr std::int64_t kNanosecondsPerMillisecond = 1'000'000;
constexpr std::int64_t kNanosecondsPerMicrosecond = 1'000;

std::int64_t now() {
  const auto since_epoch = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::nanoseconds>(since_epoch).count();
}

}  // namespace

cl_ElapsedTime::cl_ElapsedTime() {
  start();
}

std::int64_t cl_ElapsedTime::start() {
  start_time_ = now();
  stop_time_ = start_time_;
  return start_time_;
}

std::int64_t cl_ElapsedTime::stop() {
  stop_time_ = now();
  return stop_time_;
}

std::int64_t cl_ElapsedTime::get_stop_time() const {
  return stop_time_ != start_time_ ? stop_time_ : now();
}

std::int64_t cl_ElapsedTime::get_elapsed_time_sec() const {
  return (get_stop_time() - start_time_) / kNanosecondsPerSecond;
}

std::int64_t cl_ElapsedTime::get_elapsed_time_msec() const {
  return (get_stop_time() - start_time_) / kNanosecondsPerMillisecond;
}

std::int64_t cl_ElapsedTime::get_elapsed_time_usec() const {
  return (get_stop_time() - start_time_) / kNanosecondsPerMicrosecond;
}
