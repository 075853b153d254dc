#pragma once

#include <string_view>
#include <vector>

#include "netconf/message.h"

namespace tarnd::netconf {

/// What a parameter of an operation holds.
enum class Content {
  kWord,       ///< a text
  kNothing,    ///< its presence says all
  kDatastore,  ///< the element of a datastore, or a `config`
  kFilter,
  kConfiguration
};

struct Parameter {
  std::string_view name;
  Content content = Content::kWord;
  std::string_view name_space = kBaseNamespace;
};

/// Refuses what the operation does not have: other parameters than these, one of them twice,
/// attributes, texts and elements out of place. Parameters may be missing.
void check_parameters(const Element& operation, const std::vector<Parameter>& known);

/// Refuses text directly inside the element.
void check_no_text(const Element& element);

/// Refuses whatever the element has inside.
void check_nothing_in(const Element& element);

}  // namespace tarnd::netconf
