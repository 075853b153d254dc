#include "standalone/descriptor.h"

#include <unistd.h>

#include <utility>

namespace tarnd {

Descriptor::Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
  std::swap(number_, other.number_);
  return *this;
}

Descriptor::~Descriptor() {
  if (is_open()) ::close(number_);
}

}  // namespace tarnd
