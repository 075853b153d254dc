#pragma once

#include <mutex>
#include <string>

#include "standalone/daemon/plugin.h"
#include "standalone/store/schema.h"

namespace gponval::python {

/// Where the plug-in and the model are. To be called once, before the first card.
void set_places(const std::string& plugin, const std::string& model);

// What all cards of the process share. Loaded at the first use, which needs a Turn, and never
// destroyed: Python ends without destroying all its objects, so a card may outlive whatever is
// destroyed at the end of the process.
const tarnd::store::Schema& schema();
const tarnd::Plugin& plugin();

/// Held while a card works, without Python's lock: the plug-in, the inserted card and libyang's
/// context belong to the process, so one card works at a time. Throws std::logic_error if this
/// thread has the turn already, in a function that confirms warnings: it would wait for itself.
class Turn {
 public:
  /// How to wait for the thread that has the turn. A wait with signals throws what their handlers
  /// raise in Python, such as KeyboardInterrupt.
  enum class Wait { kWithSignals, kToTheEnd };

  explicit Turn(Wait wait = Wait::kWithSignals);
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;
  ~Turn();

  /// Takes the turn for good, since the process ends: a thread that works while what it uses is
  /// destroyed would crash. Gives up after some seconds, such as when a function that confirms
  /// warnings does not return.
  static void take_for_good();

  /// Whether that was given up.
  static bool is_lost();

  /// Whether this thread has the turn.
  static bool is_taken_here();

 private:
  std::unique_lock<std::timed_mutex> lock_;
};

}  // namespace gponval::python
