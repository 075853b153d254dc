#include "python/native/process.h"

#include <dlfcn.h>

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>

#include "python/native/interpreter.h"

namespace gponval::python {
namespace {

constexpr const char* kPlatform = "libtarnd_standalone.so";

struct Places {
  std::string plugin;
  std::string model;
};

Places& places() {
  static Places known;
  return known;
}

// Python loads modules, and with them the platform, so that only they see it; the plug-in finds the
// platform's functions among the names that the whole process sees.
tarnd::Plugin& load_plugin() {
  static void* const platform = dlopen(kPlatform, RTLD_NOW | RTLD_NOLOAD | RTLD_GLOBAL);
  if (platform == nullptr) {
    throw tarnd::PluginError(std::string(kPlatform) + " is not loaded");
  }
  return *new tarnd::Plugin(places().plugin);
}

constexpr std::chrono::seconds kPatienceAtEnd{10};
constexpr std::chrono::milliseconds kBetweenSignals{100};

std::timed_mutex& process_lock() {
  static auto& lock = *new std::timed_mutex;
  return lock;
}

std::atomic<std::thread::id>& owner() {
  static std::atomic<std::thread::id> thread;
  return thread;
}

std::atomic<bool>& lost() {
  static std::atomic<bool> is_lost;
  return is_lost;
}

}  // namespace

void set_places(const std::string& plugin, const std::string& model) {
  places() = {plugin, model};
}

const tarnd::store::Schema& schema() {
  static const auto& loaded = *new tarnd::store::Schema(places().model);
  return loaded;
}

const tarnd::Plugin& plugin() {
  static const tarnd::Plugin& loaded = load_plugin();
  return loaded;
}

Turn::Turn(Wait wait) : lock_(process_lock(), std::defer_lock) {
  if (is_taken_here()) {
    throw std::logic_error("a function that confirms warnings cannot use a card");
  }
  if (wait == Wait::kToTheEnd) {
    lock_.lock();
  } else {
    while (!lock_.try_lock_for(kBetweenSignals)) handle_signals();
  }
  owner() = std::this_thread::get_id();
}

Turn::~Turn() {
  owner() = std::thread::id();
}

void Turn::take_for_good() {
  if (process_lock().try_lock_for(kPatienceAtEnd)) {
    owner() = std::this_thread::get_id();
  } else {
    lost() = true;
  }
}

bool Turn::is_lost() {
  return lost();
}

bool Turn::is_taken_here() {
  return owner() == std::this_thread::get_id();
}

}  // namespace gponval::python
