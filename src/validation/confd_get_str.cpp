#include "confd_get_str.h"

#include "confd_maapi.h"
#include "validation_texts.h"

void GetStrFromConfd(int sock, int thandle, const std::string& prefix, const std::string& suffix,
                     std::string& text) {
  const std::string path = prefix + suffix;
  confd_value_t value;
  if (maapi_exists(sock, thandle, "%s", path.c_str()) == 0 ||
      maapi_get_elem(sock, thandle, &value, "%s", path.c_str()) != CONFD_OK) {
    return;
  }
  text = valid::value_text(&value);
  confd_free_value(&value);
}
