#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace gponval::test {

/// The result of a run of the command.
struct Outcome {
  int status = -1;  ///< exit status; 128 plus the signal's number if a signal ended it
  std::string out;
  std::string err;

  [[nodiscard]] nlohmann::json json() const { return nlohmann::json::parse(out); }
};

/// Runs the built gponval in the folder with these arguments, this text on standard input.
Outcome run_gponval(const std::filesystem::path& folder, const std::vector<std::string>& arguments,
                    const std::string& input = "");

/// The same for any program, the first argument being its file.
Outcome run_program(const std::filesystem::path& folder, const std::vector<std::string>& arguments,
                    const std::string& input = "");

/// Runs gponval at a terminal at which the text is typed; `out` is what the screen shows.
Outcome run_at_terminal(const std::filesystem::path& folder,
                        const std::vector<std::string>& arguments, const std::string& typed = "");

/// The file of the built command.
std::string gponval_command();

/// A test with its own folder, which has the card `card.xml`: ONUs 1 and 2 on the links 1/1/3 and
/// 1/1/4, the line profile "home" with the GEM ports 1 and 2, the service ports 1 and 2 on ONU 1 of
/// 1/1/3.
class CommandTest : public ::testing::Test {
 protected:
  CommandTest();
  ~CommandTest() override;

  /// Makes a file with this text; returns its name.
  std::string file(const std::string& name, const std::string& text) const;
  /// Makes a file with this content of the top-level `config`; returns its name.
  std::string config(const std::string& name, const std::string& content) const;
  [[nodiscard]] std::string text_of(const std::string& name) const;
  /// The names of all files in the folder, in order.
  [[nodiscard]] std::vector<std::string> files() const;

  [[nodiscard]] Outcome gponval(const std::vector<std::string>& arguments,
                                const std::string& input = "") const {
    return run_gponval(folder_, arguments, input);
  }
  /// Commits the change to card.xml.
  [[nodiscard]] Outcome commit(const std::string& change,
                               const std::vector<std::string>& arguments = {}) const;

  std::filesystem::path folder_;
};

/// The content inside a `config` element of the model.
std::string in_config(const std::string& content);
/// A service port of ONU 1 on 1/1/3 with a match VLAN.
std::string service_port(int id, int gem, int vlan);
/// The change of a FEC leaf of link 1/1/3, which warns.
std::string fec_change();

}  // namespace gponval::test
