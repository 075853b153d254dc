#pragma once

#include <string>

#include "confd_lib.h"
#include "standalone/confd/validation_session.h"
#include "tests/catalogue/requests.h"

namespace tarnd::test {

/// Calls the plug-in with the keypath in the session's transaction, and with a leaf's new value.
Outcome dispatch(ValidationSession& session, const std::string& request,
                 const std::string& keypath);
/// The same with a keypath and a new value that the test made.
Outcome dispatch(ValidationSession& session, const std::string& request, confd_hkeypath_t* keypath,
                 confd_value_t* new_value);
/// The same for a scenario; the session must have its change.
Outcome dispatch(ValidationSession& session, const Scenario& scenario);

}  // namespace tarnd::test
