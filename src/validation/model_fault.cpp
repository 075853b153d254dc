#include "model_fault.h"

#include <cstdlib>

#include "middleware/qzmw.h"

namespace valid {

void end_on_model_fault(const TraceSource& source, const char* text) {
  constexpr int kFaultKind = 1;
  qzmw_print_backtrace();
  qzmw_gen_fault(kFaultKind, source.function, source.file, source.line, text);
  std::exit(EXIT_FAILURE);
}

}  // namespace valid
