#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "bench/yang_forms.h"

namespace bench {

/// Processor times in ms on one size of card, taken in one run.
struct Figures {
  int cards = 1;

  // libyang by itself, without any rule
  double parse_and_validate = 0;
  double validate = 0;
  double copy = 0;
  double diff = 0;

  // Rules in YANG, above a validation without them
  std::vector<std::optional<double>> forms;  ///< in the order of yang_forms()
  double list_forms = 0;                     ///< the three of the service-port list together
  double all_forms = 0;

  // The store and the plug-in
  double load = 0;
  double leaf_steps = 0;       ///< a leaf that no rule of a whole list reads: the FEC of a link
  double leaf_commit = 0;      ///< the same with all requests
  double onu_leaf_commit = 0;  ///< the description of an ONU, with every rule of ONUs
  double port_steps = 0;
  double port_commit = 0;                  ///< one service port, all requests answered
  double all_rules_commit = 0;             ///< a change that calls the requests of all rules
  std::map<std::string, double> rules;     ///< one commit a rule, only its request answered
  std::map<std::string, double> requests;  ///< the answer alone
  double whole_list_check = 0;             ///< the answer of the check of all service ports
  double bare_loop = 0;                    ///< the same values into the same table
};

/// The forms that take tens of seconds are measured only if `slow` is set.
Figures measure(int cards, bool slow_forms);

/// The rules of the service-port list.
std::vector<Rule> list_rules();

}  // namespace bench
