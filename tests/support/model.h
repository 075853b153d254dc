#pragma once

#include <string>

#include "standalone/store/schema.h"

namespace tarnd::test {

/// The shipped model, read once because reading it costs more than most tests. Nothing changes it.
const store::Schema& model();

/// A whole XML document: the top-level `config` around the content, the prefix nc declared.
std::string config(const std::string& content);

}  // namespace tarnd::test
