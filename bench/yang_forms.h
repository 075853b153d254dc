#pragma once

#include <libyang/libyang.h>

#include <memory>
#include <string>
#include <vector>

namespace bench {

/// A rule of the plug-in written in YANG.
struct Form {
  const char* rule;
  const char* request;  ///< the plug-in's request that checks the same
  const char* how;
  std::vector<const char*> modules;  ///< in addition to base.yang, those that it imports first
  bool exact = false;                ///< has the same verdicts as the plug-in
  bool slow = false;                 ///< takes tens of seconds on a full card
  const char* note = "";             ///< a remark for the table
  bool of_profiles = false;          ///< reads service profiles only
};

/// The rules that YANG can express, the fastest exact form of each rule before its other forms.
const std::vector<Form>& yang_forms();

/// A rule and the plug-in's request that checks it.
struct Rule {
  std::string name;
  std::string request;
};

/// The rules in the order of the forms.
std::vector<Rule> rules();

/// The modules of the rules' fastest exact forms, each once, ready to be loaded together.
std::vector<const char*> best_modules(const std::vector<Rule>& of);

/// The fastest exact form of the rule.
const Form& best_form(const std::string& rule);

/// A configuration in a libyang context with the model and such modules.
class YangCard {
 public:
  /// Throws std::runtime_error if a module or the configuration cannot be read.
  YangCard(const std::vector<const char*>& modules, const std::string& text);
  YangCard(const YangCard&) = delete;
  YangCard& operator=(const YangCard&) = delete;
  ~YangCard();

  /// Validates everything; returns true if no rule is broken.
  bool validate();
  /// The tree's `config`.
  [[nodiscard]] lyd_node* tree() const { return tree_; }
  [[nodiscard]] ly_ctx* context() const { return context_.get(); }

 private:
  std::unique_ptr<ly_ctx, void (*)(ly_ctx*)> context_;
  lyd_node* tree_ = nullptr;
};

/// How much longer libyang validates the card with those modules than without, in ms.
double milliseconds_above(const std::vector<const char*>& modules, const std::string& text);

}  // namespace bench
