#pragma once

#include <libyang/libyang.h>

#include <memory>
#include <string>
#include <vector>

namespace bench {

/// A rule of the plug-in written in YANG.
struct Form {
  const char* rule;
  const char* request;  ///< the plug-in's, which judges the same
  const char* how;
  std::vector<const char*> modules;  ///< beside base.yang, those it builds on first
  bool exact = false;                ///< accepts and refuses what the plug-in does
  bool slow = false;                 ///< takes tens of seconds on a full card
  const char* note = "";             ///< what is to be known about it
  bool of_profiles = false;          ///< looks at service profiles only
};

/// The rules that YANG can express, the fastest exact form of each rule before its other forms.
const std::vector<Form>& yang_forms();

/// A rule and the plug-in's request that judges it.
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

/// A configuration in a libyang context with the model and, beside it, such modules.
class YangCard {
 public:
  /// Throws std::runtime_error where a module or the configuration cannot be read.
  YangCard(const std::vector<const char*>& modules, const std::string& text);
  YangCard(const YangCard&) = delete;
  YangCard& operator=(const YangCard&) = delete;
  ~YangCard();

  /// Validates everything; true where no rule is broken.
  bool validate();
  /// The tree's `config`.
  [[nodiscard]] lyd_node* tree() const { return tree_; }
  [[nodiscard]] ly_ctx* context() const { return context_.get(); }

 private:
  std::unique_ptr<ly_ctx, void (*)(ly_ctx*)> context_;
  lyd_node* tree_ = nullptr;
};

/// How long libyang validates the card with those modules above what it takes without, in ms.
double milliseconds_above(const std::vector<const char*>& modules, const std::string& text);

}  // namespace bench
