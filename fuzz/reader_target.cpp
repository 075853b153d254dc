// Any text as a configuration, for the store's reader and for libyang's strict parser with its
// validation. Each accepts what the other accepts, with the same tree, except for the known
// differences below.

#include <libyang/libyang.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <optional>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/property.h"
#include "fuzz/target.h"
#include "standalone/crypto.h"
#include "standalone/store/libyang_compat.h"
#include "standalone/store/reader.h"
#include "tests/support/model.h"

namespace tarnd::fuzz {
namespace {

using store::Format;
using store::schema_of;
using store::SchemaNode;

/// A text that one of the two refuses with this message, and the other accepts.
struct KnownDifference {
  std::string_view refusal;
  const char* in_text;  ///< a pattern that the text must contain
  std::string_view reason;
};

constexpr const char* kAnything = "";
constexpr const char* kEmptyElement = "(/>|<[^/<>]*>\\s*</)";
constexpr const char* kTextAfterComment = "(-->|[?]>)\\s*(<!\\[CDATA\\[|[^<\\s])";
constexpr std::string_view kAnyRefusal;

constexpr std::array kOnlyLibyangAccepts = {
    KnownDifference{"the text is not UTF-8", kAnything,
                    "libyang skips declarations and comments without a look at their bytes"},
    KnownDifference{"holds a NUL byte", kAnything, "libyang's text ends there"},
    KnownDifference{"the version of XML is ", "version", "libyang overlooks the declaration"},
    KnownDifference{"a configuration has none, a change may", "(operation|insert)",
                    "libyang keeps what an edit says of a node as metadata"},
    KnownDifference{"a configuration has none, a change may",
                    "\"@[^\"]*\"\\s*:\\s*(\\[|[{]\\s*[}])",
                    "libyang overlooks the metadata of entries, and empty metadata"},
    KnownDifference{"'config' in the namespace '@base'", "\"@base:config\"",
                    "libyang keeps metadata of the top-level node, too"},
    KnownDifference{"not XML: ", kAnything,
                    "libyang overlooks attributes given twice, hyphens in comments and the like"},
    KnownDifference{"not JSON: ", kAnything, "libyang reads up to the end of the object"},
    KnownDifference{"the encoding is ", "encoding", "libyang overlooks what the declaration says"},
    KnownDifference{" of another module", "\":", "libyang takes a module without a name for none"},
    KnownDifference{"a character that no text may hold", kAnything,
                    "libyang lets Unicode's noncharacters pass, which RFC 7950 excludes"},
    KnownDifference{"is not a number from ", "[0-9.][eE][+-]?[0-9]",
                    "libyang works exponents out; it reads 0.5e1 as a point"},
    KnownDifference{"is not a number from ", "0\\.0", "libyang takes 0.0 for 0"},
    KnownDifference{"holds the member '", kAnything, "libyang joins a list's members"},
    KnownDifference{"' twice", kEmptyElement,
                    "of two containers of one name, libyang removes an empty one"},
};
constexpr std::array kOnlyReaderAccepts = {
    KnownDifference{"not found in the \"ietf-netconf\" module", "(data|rpc-reply|config)",
                    "the reader takes off what NETCONF has around a configuration"},
    KnownDifference{"Unknown XML section", "<!\\[CDATA\\[", "libyang knows CDATA in values only"},
    KnownDifference{"expected element tag start", "(<!|<[?]|&)",
                    "libyang ends a value at a comment, and knows no references between elements"},
    KnownDifference{kAnyRefusal, kTextAfterComment, "libyang refuses the value before a comment"},
    KnownDifference{"inside an inner node", "[>\\s]&#(0*(9|10|13|32)|x0*([9aAdD]|20));",
                    "libyang takes white space for a value if it is written as a reference"},
    KnownDifference{"Invalid position of the key", "<", "the reader takes keys in any place"},
    KnownDifference{"Invalid character reference", "\\\\u[dD][89abAB]",
                    "libyang knows no pairs of surrogates"},
};
/// The same for texts that both accept, with different trees.
constexpr std::array kDifferentTrees = {
    KnownDifference{kAnyRefusal, "(-->|[?]>)\\s+</",
                    "libyang drops white space between a comment and the end of a value"},
};

bool is_known(const std::string& refusal, const std::string& text, const auto& differences) {
  return std::any_of(differences.begin(), differences.end(), [&](const KnownDifference& known) {
    return refusal.find(known.refusal) != std::string::npos &&
           std::regex_search(text, std::regex(known.in_text));
  });
}

/// A tree as lines in order, each node with its path, its value, and whether it is a default; or
/// the reason for a refusal.
struct Reading {
  std::vector<std::string> nodes;
  std::optional<std::string> refusal;
};

// libyang leaves the clear text of an encrypted leaf; the reader encrypts it.
std::string value_of(const lyd_node* leaf) {
  constexpr std::string_view kClearText = "$0$";
  const std::string value = lyd_get_value(leaf);
  const bool clear =
      schema_of(leaf).value == store::ValueKind::kEncrypted && value.starts_with(kClearText);
  return clear ? encrypt_string(value.substr(kClearText.size())) : value;
}

std::string line_of(const lyd_node* node) {
  const std::unique_ptr<char, decltype(&std::free)> path(lyd_path(node, LYD_PATH_STD, nullptr, 0),
                                                         &std::free);
  std::string line = path.get();
  if ((node->schema->nodetype & LYD_NODE_TERM) != 0) line += " = " + value_of(node);
  if ((node->flags & LYD_DEFAULT) != 0) line += " (default)";
  return line;
}

std::vector<std::string> nodes_of(const lyd_node* tree) {
  std::vector<std::string> lines;
  const lyd_node* node = nullptr;
  LYD_TREE_DFS_BEGIN(tree, node) {
    lines.push_back(line_of(node));
    LYD_TREE_DFS_END(tree, node);
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

Reading read_by_reader(const std::string& text, Format format) {
  try {
    const auto configuration = store::read_configuration(test::model(), text, format);
    return {nodes_of(configuration.root.get()), std::nullopt};
  } catch (const InputError& error) {
    return {{}, error.what()};
  }
}

// libyang does not know byte order marks, and leaves the ends of lines as they are, while XML has
// one kind.
std::string as_libyang_needs_it(std::string text, Format format) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (text.starts_with(kByteOrderMark)) text.erase(0, kByteOrderMark.size());
  if (format == Format::kJson) return text;
  return std::regex_replace(text, std::regex("\r\n?"), "\n");
}

Reading read_by_libyang(const std::string& text, Format format) {
  ly_ctx* context = test::model().context();
  lyd_node* parsed = nullptr;
  const LY_ERR result =
      lyd_parse_data_mem(context, text.c_str(), format == Format::kJson ? LYD_JSON : LYD_XML,
                         LYD_PARSE_STRICT, LYD_VALIDATE_PRESENT, &parsed);
  const std::unique_ptr<lyd_node, decltype(&lyd_free_all)> tree(parsed, &lyd_free_all);
  if (result != LY_SUCCESS) return {{}, store::take_libyang_error(context)};
  if (tree == nullptr || tree->schema != test::model().root().lysc || tree->next != nullptr) {
    return {{}, "no top-level node"};
  }
  return {nodes_of(tree.get()), std::nullopt};
}

// The first character decides: a text that does not begin with "<" is read as JSON.
Format format_of_text(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \t\r\n\xEF\xBB\xBF");
  return first != std::string::npos && text[first] == '<' ? Format::kXml : Format::kJson;
}

std::string difference(const std::vector<std::string>& left,
                       const std::vector<std::string>& right) {
  std::vector<std::string> only;
  std::set_symmetric_difference(left.begin(), left.end(), right.begin(), right.end(),
                                std::back_inserter(only));
  std::string text;
  for (const std::string& line : only) text += "\n  " + line;
  return text;
}

void try_text(const std::string& text) {
  const Format format = format_of_text(text);
  const Reading reader = read_by_reader(text, format);
  const Reading libyang = read_by_libyang(as_libyang_needs_it(text, format), format);
  if (reader.refusal.has_value() && libyang.refusal.has_value()) return;
  if (reader.refusal.has_value()) {
    return require(is_known(*reader.refusal, text, kOnlyLibyangAccepts),
                   "only libyang accepts it; the reader says: " + *reader.refusal);
  }
  if (libyang.refusal.has_value()) {
    return require(is_known(*libyang.refusal, text, kOnlyReaderAccepts),
                   "only the reader accepts it; libyang says: " + *libyang.refusal);
  }
  require(reader.nodes == libyang.nodes || is_known("", text, kDifferentTrees),
          "both read the same tree, but for" + difference(reader.nodes, libyang.nodes));
}

}  // namespace
}  // namespace tarnd::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  tarnd::fuzz::try_text({reinterpret_cast<const char*>(data), size});
  return 0;
}
