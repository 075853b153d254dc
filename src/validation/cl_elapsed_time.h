#pragma once

#include <cstdint>

/// A stopwatch on the monotonic steady clock. Readings are in nanoseconds.
class cl_ElapsedTime {
 public:
  /// Starts the stopwatch.
  cl_ElapsedTime();

  /// Starts again and returns the reading.
  std::int64_t start();
  /// Stops and returns the reading; stopping again moves the stop time.
  std::int64_t stop();

  /// The stop time; the present time while the stopwatch runs.
  [[nodiscard]] std::int64_t get_stop_time() const;
  /// Elapsed time until get_stop_time(), truncated to whole units.
  [[nodiscard]] std::int64_t get_elapsed_time_sec() const;
  [[nodiscard]] std::int64_t get_elapsed_time_msec() const;
  [[nodiscard]] std::int64_t get_elapsed_time_usec() const;

 private:
  std::int64_t start_time_ = 0;
  std::int64_t stop_time_ = 0;  // equal to the start time while the stopwatch runs
};
