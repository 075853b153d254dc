#pragma once

#include <Python.h>

namespace gponval::python {

// When the interpreter ends, no daemon thread may run Python any more. A thread that waits for
// Python's lock then would use what is freed already, or be ended by unwinding its stack, which
// destroys the callers' Python objects without the lock. So such a thread waits until
// the process ends.

/// From now on only this thread gets Python's lock in an Unlocked or a Locked; waits a while until
/// those that wait for it have it. To be called in an Unlocked.
void keep_other_threads_out();

/// While a thread waits for Python's lock.
class Return {
 public:
  Return();
  Return(const Return&) = delete;
  Return& operator=(const Return&) = delete;
  ~Return();
};

/// Without Python's lock, so that other threads go on.
class Unlocked {
 public:
  Unlocked() : state_(PyEval_SaveThread()) {}
  Unlocked(const Unlocked&) = delete;
  Unlocked& operator=(const Unlocked&) = delete;
  ~Unlocked() {
    const Return here;
    PyEval_RestoreThread(state_);
  }

 private:
  PyThreadState* state_;
};

/// With Python's lock again, in an Unlocked.
class Locked {
 public:
  Locked() : state_(ensured()) {}
  Locked(const Locked&) = delete;
  Locked& operator=(const Locked&) = delete;
  ~Locked() { PyGILState_Release(state_); }

 private:
  static PyGILState_STATE ensured() {
    const Return here;
    return PyGILState_Ensure();
  }

  PyGILState_STATE state_;
};

/// A call of Python code, in which other threads get the lock now and then. It is left without
/// completed() only if the interpreter ends this thread; the thread then stays here.
class CallOfPython {
 public:
  CallOfPython() = default;
  CallOfPython(const CallOfPython&) = delete;
  CallOfPython& operator=(const CallOfPython&) = delete;
  ~CallOfPython();

  template <typename Result>
  Result completed(Result result) {
    is_completed_ = true;
    return result;
  }

 private:
  bool is_completed_ = false;
};

/// Lets Python handle the signals that arrived. To be called in an Unlocked. Throws what a handler
/// raises, such as KeyboardInterrupt.
void handle_signals();

}  // namespace gponval::python
