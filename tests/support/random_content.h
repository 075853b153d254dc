#pragma once

#include <random>
#include <string>

#include "standalone/store/datastore.h"

namespace tarnd::test {

/// What random content is like.
struct ContentKind {
  int values = 100;         ///< values are as many, so few of them meet again
  int mistakes = 64;        ///< one node in so many is missing, exists twice or is of another case
  bool operations = false;  ///< an edit: elements carry operations, and much is left out
};

/// Contents by a model of numbers, texts, booleans and empty leaves. The same seed makes the same
/// texts.
class RandomContent {
 public:
  RandomContent(unsigned seed, ContentKind kind) : random_(seed), kind_(kind) {}

  /// The XML elements below a container, a list or a case.
  std::string of(const lysc_node* parent);
  /// Loads the next configuration that is valid and returns it.
  std::string load_into(store::Datastore& datastore);

 private:
  int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(random_); }
  bool one_in(int n) { return below(n) == 0; }

  bool is_wanted(const lysc_node* node);
  std::string of_case(const lysc_node* choice);
  std::string instances(const lysc_node* node);
  std::string keys(const lysc_node* node);
  std::string element(const lysc_node* node, const std::string& keys);
  std::string operation(const lysc_node* node);
  std::string content(const lysc_node* node);

  std::mt19937 random_;
  ContentKind kind_;
};

/// The body of a module with every kind of rule that a store checks, in a list, in a container with
/// presence and in a case.
extern const std::string kModelOfRules;

}  // namespace tarnd::test
