#include "tests/support/model.h"

namespace tarnd::test {

const store::Schema& model() {
  static const store::Schema schema(TARND_MODEL_DIR);
  return schema;
}

std::string config(const std::string& content) {
  return "<config xmlns=\"urn:tarnd:base\" "
         "xmlns:nc=\"urn:ietf:params:xml:ns:netconf:base:1.0\">" +
         content + "</config>";
}

}  // namespace tarnd::test
