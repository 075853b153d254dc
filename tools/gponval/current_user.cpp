#include "tools/gponval/current_user.h"

#include <pwd.h>
#include <unistd.h>

namespace gponval {

std::string current_user() {
  // There is one thread.
  // cppcheck-suppress getpwuidCalled
  const passwd* user = getpwuid(geteuid());
  return user != nullptr ? user->pw_name : std::to_string(geteuid());
}

}  // namespace gponval
