// Compares the plug-in with the same rules in YANG, on the same cards, in one run, and checks the
// project's bars.
//
//   compare [--slow] [--no-instructions] [--csv FILE]
//   compare --agree     compares every YANG form with the plug-in on small cards; prints nothing
//                       unless a form is exact but not called so, or called exact but is not

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/agreement.h"
#include "bench/figures.h"
#include "bench/full_card.h"

namespace {

using bench::Figures;
using bench::Form;

struct Options {
  bool slow = false;
  bool instructions = true;
  bool agree = false;
  std::string csv;
};

// Memory

class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name = std::filesystem::temp_directory_path() / "compare-XXXXXX";
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
    path_ = name;
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() { std::filesystem::remove_all(path_); }

  [[nodiscard]] std::string write(const std::string& name, const std::string& text) const {
    std::string file = path_ / name;
    std::ofstream(file) << text;
    return file;
  }

 private:
  std::filesystem::path path_;
};

// Runs a command without its output and returns the most memory that it had, in MB.
double peak_of(std::vector<std::string> command) {
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (std::string& argument : command) arguments.push_back(argument.data());
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t child = 0;
  const int spawned =
      posix_spawn(&child, arguments.front(), &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  int status = 0;
  rusage usage{};
  if (spawned != 0 || wait4(child, &status, 0, &usage) != child || status != 0) {
    throw std::runtime_error(command.front() + " has failed");
  }
  return static_cast<double>(usage.ru_maxrss) / 1024;
}

struct Memory {
  double libyang = 0;
  double commit = 0;
};

Memory measure_memory(const std::string& self, int cards) {
  const TemporaryFolder folder;
  const std::string text = bench::card_text(bench::full_cards(static_cast<std::uint32_t>(cards)));
  const std::string running = folder.write("running.xml", text);
  const std::string change = folder.write("change.xml", bench::added_ports(1));
  const std::string card =
      folder.write("card", "max-service-ports = " + std::to_string(bench::kMostServicePorts) +
                               "\nbw-check = true\nonus-per-link = 128\n");
  return {peak_of({self, "--hold", running}),
          peak_of({GPONVAL_COMMAND, "commit", "--running", running, "--change", change, "--card",
                   card})};
}

// Parses and validates a file with libyang and does nothing else.
int hold(const std::string& file) {
  ly_ctx* context = nullptr;
  if (ly_ctx_new(TARND_MODEL_DIR, LY_CTX_NO_YANGLIBRARY, &context) != LY_SUCCESS) return 1;
  ly_ctx_load_module(context, "base", nullptr, nullptr);
  lyd_node* tree = nullptr;
  const LY_ERR result = lyd_parse_data_path(context, file.c_str(), LYD_XML, LYD_PARSE_STRICT,
                                            LYD_VALIDATE_PRESENT, &tree);
  lyd_free_all(tree);
  ly_ctx_destroy(context);
  return result == LY_SUCCESS ? 0 : 1;
}

// Tables

void print_row(const std::string& name, double one, double four, const char* unit = "ms") {
  std::printf("  %-58s %10.3f %10.3f %s\n", name.c_str(), one, four, unit);
}

std::string kind(const Form& form) {
  return form.exact ? "exact" : "nearly";
}

void print_forms(const Figures& one, const Figures& four) {
  std::printf("Rules in YANG, ms above a validation without them %20s %10s\n", "one card",
              "four cards");
  for (std::size_t i = 0; i < bench::yang_forms().size(); ++i) {
    const Form& form = bench::yang_forms().at(i);
    if (!one.forms.at(i).has_value()) continue;
    print_row(std::string(form.rule) + ", " + kind(form), *one.forms.at(i), *four.forms.at(i));
    std::printf("    %s%s%s\n", form.how, *form.note != '\0' ? "; " : "", form.note);
  }
  print_row("the rules of the service-port list together", one.list_forms, four.list_forms);
  print_row("all rules together", one.all_forms, four.all_forms);
}

void print_commits(const Figures& one, const Figures& four) {
  std::puts("\nThe same through the plug-in: a whole commit, edit to committed");
  for (const bench::Rule& rule : bench::rules()) {
    print_row(rule.name, one.rules.at(rule.name), four.rules.at(rule.name));
  }
  print_row("one service port, every request answered", one.port_commit, four.port_commit);
  print_row("every rule at once, every request answered", one.all_rules_commit,
            four.all_rules_commit);
  print_row("FEC of a link, every request answered", one.leaf_commit, four.leaf_commit);
  print_row("description of an ONU, every request answered", one.onu_leaf_commit,
            four.onu_leaf_commit);

  std::puts("\nWithout any rule");
  print_row("libyang: copy of the tree", one.copy, four.copy);
  print_row("libyang: validation of the tree", one.validate, four.validate);
  print_row("libyang: difference of two trees", one.diff, four.diff);
  print_row("a commit's own steps, FEC of a link", one.leaf_steps, four.leaf_steps);
  print_row("a commit's own steps, one service port", one.port_steps, four.port_steps);
  print_row("libyang: reading and validating the text", one.parse_and_validate,
            four.parse_and_validate);
  print_row("loading the text", one.load, four.load);

  std::puts("\nAnswers, one changed entry");
  for (const auto& [name, time] : one.requests) print_row(name, time, four.requests.at(name));
}

// The rule's exact form that was fastest in this run.
double best_figure(const Figures& figures, const std::string& rule) {
  double best = std::numeric_limits<double>::max();
  for (std::size_t i = 0; i < bench::yang_forms().size(); ++i) {
    const Form& form = bench::yang_forms().at(i);
    if (form.rule == rule && form.exact) best = std::min(best, figures.forms.at(i).value_or(best));
  }
  return best;
}

void write_csv(const std::string& file, const Figures& one, const Figures& four) {
  std::ofstream out(file);
  out << "rule,plug-in one card,YANG one card,plug-in four cards,YANG four cards\n";
  const auto row = [&](const std::string& name, double own1, double yang1, double own4,
                       double yang4) {
    out << name << ',' << own1 << ',' << yang1 << ',' << own4 << ',' << yang4 << '\n';
  };
  for (const bench::Rule& rule : bench::rules()) {
    row(rule.name, one.rules.at(rule.name), best_figure(one, rule.name), four.rules.at(rule.name),
        best_figure(four, rule.name));
  }
  row("one service port with all its checks", one.port_commit, one.list_forms, four.port_commit,
      four.list_forms);
  row("all rules at once", one.all_rules_commit, one.all_forms, four.all_rules_commit,
      four.all_forms);
}

// Bars

const char* verdict(bool holds) {
  return holds ? "holds" : "does not hold";
}

void print_bar(const std::string& what, double figure, const char* bound, double limit,
               bool holds) {
  std::printf("  %-14s %-66s %9.2f  %s %g\n", verdict(holds), what.c_str(), figure, bound, limit);
}

void at_most(const std::string& what, double figure, double limit) {
  print_bar(what, figure, "at most", limit, figure <= limit);
}

void at_least(const std::string& what, double figure, double limit) {
  print_bar(what, figure, "at least", limit, figure >= limit);
}

// One request checks two rules, which need two forms.
double port_list_gain(const Figures& figures) {
  double forms = 0;
  double commit = 0;
  for (const bench::Rule& rule : bench::rules()) {
    if (rule.request != "service_port_global_validation") continue;
    forms += best_figure(figures, rule.name);
    commit = figures.rules.at(rule.name);
  }
  return forms / commit;
}

void rule_bars(const Figures& one, const Figures& four) {
  const auto rule = [&](const std::string& name, double limit, double limit_four) {
    at_least(name + ": YANG / commit", best_figure(one, name) / one.rules.at(name), limit);
    at_least(name + ", four cards", best_figure(four, name) / four.rules.at(name), limit_four);
  };
  at_least("both rules over all service ports: YANG / commit", port_list_gain(one), 1);
  at_least("both rules over all service ports, four cards", port_list_gain(four), 1);
  at_least("one service port, all its requests: YANG / commit", one.list_forms / one.port_commit,
           20);
  at_least("one service port, four cards", four.list_forms / four.port_commit, 30);
  rule("serial numbers unique on the card", 40, 200);
  rule("bandwidth of all links", 20, 20);
  rule("VLAN mappings per port", 1, 1);
  at_least("all rules at once: YANG / commit", one.all_forms / one.all_rules_commit, 50);
  at_least("all rules at once, four cards", four.all_forms / four.all_rules_commit, 150);
}

// The requests that count the nodes of a path over all ONUs.
void count_bars(const Figures& one, const Figures& four) {
  for (const char* const request :
       {"line_confirmation_warning", "rg_profile_confirmation_warning",
        "tr069_profile_confirmation_warning", "sip_agent_profile_confirmation_warning",
        "voip_media_profile_confirmation_warning", "onu_snmp_rt_warn"}) {
    at_most(request + std::string(", ms"), one.requests.at(request), 0.15);
    at_most(request + std::string(", four cards, ms"), four.requests.at(request), 0.7);
  }
}

// Growth has a bar in instructions only: memory is slower on four cards, by how much depends on
// what else the machine does.
void print_growth(const Figures& one, const Figures& four) {
  std::puts("\nGrowth of the answers' times from one card to four");
  for (const auto& [name, time] : one.requests) {
    std::printf("  %-58s %10.2f\n", name.c_str(), four.requests.at(name) / time);
  }
}

void print_bars(const Figures& one, const Figures& four, const Memory& memory,
                const Memory& memory_four) {
  std::puts("\nBars");
  at_most("one leaf: commit on four cards / on one", four.leaf_commit / one.leaf_commit, 1.2);
  rule_bars(one, four);
  at_most("whole commit of one service port, ms", one.port_commit, 10);
  std::printf("  %-14s libyang's copy, validation and difference: %.1f (%.1f) ms\n", "",
              one.copy + one.validate + one.diff, four.copy + four.validate + four.diff);
  at_most("check of all service ports / bare loop", one.whole_list_check / one.bare_loop, 3.2);
  count_bars(one, four);
  at_most("own steps of a one-leaf commit, ms", one.leaf_steps, 1);
  at_most("own steps of a one-leaf commit, four cards, ms", four.leaf_steps, 1);
  at_most("peak memory of gponval commit / libyang's of the same data",
          memory.commit / memory.libyang, 1.0);
  at_most("peak memory, four cards", memory_four.commit / memory_four.libyang, 1.0);
  at_most("loading / libyang's reading and validating", one.load / one.parse_and_validate, 0.55);
  at_most("loading, four cards", four.load / four.parse_and_validate, 0.55);
}

// Profiles

// Runs a script of this folder with a program as its argument; returns true if it succeeds.
bool run_script(const std::string& script, const std::string& program) {
  const std::string command = "'" + std::string(SCRIPTS_DIR) + "/" + script + "' '" + program + "'";
  std::fflush(stdout);
  return std::system(command.c_str()) == 0;
}

void print_profiles() {
  std::puts("\nInstructions of the check of all service ports");
  const bool holds = run_script("service_port_instructions", SERVICE_PORT_BENCH);
  std::printf("  %-14s both\n", verdict(holds));
  const bool walks_alike = run_script("candidate_instructions", GPONVAL_COMMAND);
  std::printf("  %-14s the differences of a whole new card\n", verdict(walks_alike));
  std::puts("\nInstructions of the answers, and misses of a 32 MB cache");
  if (!run_script("growth_profile", REQUEST_INSTRUCTIONS)) {
    throw std::runtime_error("a profile has failed");
  }
}

// Options

Options read_options(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument == "--slow") {
      options.slow = true;
    } else if (argument == "--agree") {
      options.agree = true;
    } else if (argument == "--no-instructions") {
      options.instructions = false;
    } else if (argument == "--csv" && i + 1 < argc) {
      options.csv = argv[++i];
    } else {
      throw std::invalid_argument(
          "usage: compare [--slow] [--no-instructions] [--csv FILE] | "
          "--agree");
    }
  }
  return options;
}

void compare(const Options& options, const std::string& self) {
  const Memory memory = measure_memory(self, 1);
  const Memory memory_four = measure_memory(self, 4);
  const Figures one = bench::measure(1, options.slow);
  const Figures four = bench::measure(4, options.slow);
  print_forms(one, four);
  print_commits(one, four);
  std::puts("\nPeak memory");
  print_row("libyang holding the data", memory.libyang, memory_four.libyang, "MB");
  print_row("gponval commit", memory.commit, memory_four.commit, "MB");
  print_bars(one, four, memory, memory_four);
  print_growth(one, four);
  if (!options.csv.empty()) write_csv(options.csv, one, four);
  if (options.instructions) print_profiles();
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (argc == 3 && std::strcmp(argv[1], "--hold") == 0) return hold(argv[2]);
    const Options options = read_options(argc, argv);
    if (options.agree) return bench::check_agreement() == 0 ? 0 : 1;
    compare(options, std::filesystem::canonical("/proc/self/exe"));
  } catch (const std::invalid_argument& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 2;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
    return 1;
  }
  return 0;
}
