#include "tools/gponval/remarks.h"

#include "tools/gponval/current_user.h"
#include "tools/gponval/inputs.h"

namespace gponval {

void add_remark_options(CLI::App& app, Remarks& remarks) {
  constexpr const char* kGroup = "History";
  app.add_option("--label", remarks.label, "A short name of the commit, such as a ticket's number")
      ->type_name("TEXT")
      ->group(kGroup);
  app.add_option("--comment", remarks.comment, "What the commit is for")
      ->type_name("TEXT")
      ->group(kGroup);
}

tarnd::netconf::state::Author author_with(const Remarks& remarks) {
  return {current_user(), 0, remarks.label, remarks.comment};
}

tarnd::netconf::state::Author importer_of(const std::string& file) {
  return author_with({std::nullopt, std::string(name_in_message(file))});
}

}  // namespace gponval
