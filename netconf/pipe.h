#pragma once

#include "standalone/descriptor.h"

namespace tarnd::netconf {

struct Pipe {
  Descriptor read;
  Descriptor write;
};

/// A pipe that programs started later do not inherit. Throws std::system_error.
Pipe new_pipe();

}  // namespace tarnd::netconf
