#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "source_texts.h"
#include "tests/catalogue/dispatch_table.h"

namespace docs {
namespace {

using ::testing::IsEmpty;
using ::testing::UnorderedElementsAreArray;
constexpr const char* kSources = VALIDATION_SOURCES;
constexpr const char* kCatalogue = TEXT_CATALOGUE;
constexpr const char* kElsewhere = "Texts elsewhere";

using Places = std::set<std::size_t>;

std::string contents(const std::filesystem::path& file) {
  std::ostringstream text;
  text << std::ifstream(file).rdbuf();
  return text.str();
}

/// The texts of a source, and the requests whose validators are in it: none if it is shared.
struct Source {
  std::set<std::string> requests;
  CodeTexts texts;
};

/// The requests by the names of their validators.
std::map<std::string, std::string> requests_of_code() {
  std::map<std::string, std::string> requests;
  for (const auto& [validator, request] : tarnd::test::dispatch_table(kSources)) {
    requests.emplace(validator, request);
  }
  return requests;
}

std::vector<Source> sources() {
  const std::map<std::string, std::string> requests = requests_of_code();
  std::vector<Source> all;
  for (const auto& file : std::filesystem::directory_iterator(kSources)) {
    const std::string ending = file.path().extension().string();
    if (ending != ".cpp" && ending != ".h") continue;
    const std::string code = contents(file.path());
    Source& source = all.emplace_back();
    collect_texts(code, source.texts);
    for (const auto& [validator, request] : requests) {
      const bool defined = code.find("\nstd::int32_t " + validator + "(") != std::string::npos;
      if (ending == ".cpp" && defined) source.requests.insert(request);
    }
  }
  return all;
}

CodeTexts texts_of(const std::vector<Source>& all) {
  CodeTexts texts;
  for (const Source& source : all) {
    const CodeTexts& more = source.texts;
    texts.sentences.insert(texts.sentences.end(), more.sentences.begin(), more.sentences.end());
    texts.words.insert(more.words.begin(), more.words.end());
  }
  return texts;
}

using Lines = std::vector<std::string>;

/// The texts of the catalogue, line by line, by the request whose chapter they are in; those that
/// no user sees by kElsewhere. A text is indented by four blanks.
std::map<std::string, Lines> catalogue() {
  constexpr std::string_view kIndent = "    ";
  constexpr std::string_view kChapter = "# ";
  constexpr std::string_view kRequest = "## ";
  std::map<std::string, Lines> read;
  std::string chapter;
  std::istringstream file(contents(kCatalogue));
  for (std::string line; std::getline(file, line);) {
    if (line.rfind(kChapter, 0) == 0) chapter = line.substr(kChapter.size());
    if (line.rfind(kRequest, 0) == 0) chapter = line.substr(kRequest.size());
    if (line.rfind(kIndent, 0) == 0) read[chapter].push_back(line.substr(kIndent.size()));
  }
  return read;
}

/// Whether a text in the chapter may be one of the source's.
bool may_say(const Source& source, const std::string& chapter) {
  return source.requests.empty() || chapter == kElsewhere || source.requests.contains(chapter);
}

/// The lines of the chapters that may have a text of the source.
Lines lines_for(const Source& source, const std::map<std::string, Lines>& chapters) {
  Lines lines;
  for (const auto& [chapter, texts] : chapters) {
    if (may_say(source, chapter)) lines.insert(lines.end(), texts.begin(), texts.end());
  }
  return lines;
}

/// Finds texts of the code in lines of the catalogue. A variable part of the code's text is a
/// placeholder in the catalogue, or one of the code's constants, or a separate sentence.
class Matcher {
 public:
  explicit Matcher(const CodeTexts& code) : code_(code) {}

  [[nodiscard]] bool is_whole(const CodeText& text, std::string_view line) const {
    return has_parts(text, line) && ends(text, line, 0, true).contains(line.size());
  }

  [[nodiscard]] bool is_in(const CodeText& text, std::string_view line) const {
    for (std::size_t from = 0; has_parts(text, line) && from < line.size(); ++from) {
      if (!ends(text, line, from, true).empty()) return true;
    }
    return false;
  }

 private:
  /// Whether a closer look is worth while.
  static bool has_parts(const CodeText& text, std::string_view line) {
    return std::all_of(text.parts.begin(), text.parts.end(), [&](const std::string& part) {
      return line.find(part) != std::string_view::npos;
    });
  }

  /// The places at which the text may end if it begins there.
  [[nodiscard]] Places ends(const CodeText& text, std::string_view line, std::size_t from,
                            bool nested) const {
    Places places = {from};
    for (std::size_t i = 0; i < text.parts.size(); ++i) {
      if (i > 0) places = past_variable(places, line, nested);
      places = past_constant(places, line, text.parts[i]);
    }
    return places;
  }

  static Places past_constant(const Places& places, std::string_view line,
                              const std::string& constant) {
    Places behind;
    for (const std::size_t place : places) {
      if (line.substr(place, constant.size()) == constant) behind.insert(place + constant.size());
    }
    return behind;
  }

  [[nodiscard]] Places past_variable(const Places& places, std::string_view line,
                                     bool nested) const {
    Places behind;
    for (const std::string& word : code_.words) behind.merge(past_constant(places, line, word));
    for (const std::size_t place : places) {
      const std::size_t end = line.find('>', place);
      if (line.substr(place, 1) == "<" && end != std::string_view::npos) behind.insert(end + 1);
      if (!nested) continue;
      for (const CodeText& text : code_.sentences) behind.merge(ends(text, line, place, false));
    }
    return behind;
  }

  const CodeTexts& code_;
};

std::string shown(const CodeText& text) {
  std::string line = text.parts.front();
  for (std::size_t i = 1; i < text.parts.size(); ++i) line += "<...>" + text.parts[i];
  return line;
}

TEST(TextsPage, HasEveryTextOfTheCodeUnderItsRequest) {
  const std::vector<Source> all = sources();
  const CodeTexts code = texts_of(all);
  const Matcher matcher(code);
  const std::map<std::string, Lines> chapters = catalogue();
  std::set<std::string> missing;
  for (const Source& source : all) {
    const Lines lines = lines_for(source, chapters);
    for (const CodeText& text : source.texts.sentences) {
      const bool found = std::any_of(lines.begin(), lines.end(), [&](const std::string& line) {
        return matcher.is_in(text, line);
      });
      if (!found) missing.insert(shown(text));
    }
  }
  EXPECT_THAT(missing, IsEmpty());
}

TEST(TextsPage, HasNoTextThatTheRequestDoesNotHave) {
  const std::vector<Source> all = sources();
  const CodeTexts code = texts_of(all);
  const Matcher matcher(code);
  std::set<std::pair<std::string, std::string>> unknown;
  for (const auto& [chapter, lines] : catalogue()) {
    for (const std::string& line : lines) {
      bool found = false;
      for (const Source& source : all) {
        const auto& texts = source.texts.sentences;
        found = found || (may_say(source, chapter) &&
                          std::any_of(texts.begin(), texts.end(), [&](const CodeText& text) {
                            return matcher.is_whole(text, line);
                          }));
      }
      if (!found) unknown.emplace(chapter, line);
    }
  }
  EXPECT_THAT(unknown, IsEmpty());
}

TEST(TextsPage, HasAChapterForEachRequest) {
  std::set<std::string> chapters;
  for (const auto& [chapter, lines] : catalogue()) chapters.insert(chapter);
  std::set<std::string> expected = {kElsewhere};
  for (const auto& [validator, request] : requests_of_code()) expected.insert(request);
  EXPECT_THAT(chapters, UnorderedElementsAreArray(expected));
}

TEST(TextsPage, KnowsTheSourceOfEachRequest) {
  std::multiset<std::string> found;
  for (const Source& source : sources()) {
    found.insert(source.requests.begin(), source.requests.end());
  }
  std::multiset<std::string> expected;
  for (const auto& [validator, request] : requests_of_code()) expected.insert(request);
  EXPECT_EQ(found, expected);
}

// The tests above depend on finding all texts in the code.

std::vector<std::string> sentences(const std::string& code) {
  CodeTexts texts;
  collect_texts(code, texts);
  std::vector<std::string> lines;
  for (const CodeText& text : texts.sentences) lines.push_back(shown(text));
  return lines;
}

TEST(SourceTexts, AreFoundHoweverTheCodeWritesThem) {
  struct Case {
    std::string code;
    std::vector<std::string> found;
  };
  const std::vector<Case> cases = {
      {R"(k = "one text";)", {"one text"}},
      {R"(k = "one " "text of two";)", {"one text of two"}},
      {R"(k = "port %d of [%s]";)", {"port <...> of [<...>]"}},
      {R"(k = "the port " + std::to_string(n + 1) + " of " + link;)", {"the port <...> of <...>"}},
      {R"(k = link + " is in use";)", {"<...> is in use"}},
      {R"(s << "port " << port << " onu " << onu;)", {"port <...> onu <...>"}},
      {R"(k = "first line\n second line\n";)", {"first line", " second line"}},
      {R"(f("is the one", "is the other");)", {"is the one", "is the other"}},
      {R"(k = b ? "is the one" : "is the other";)", {"is the one", "is the other"}},
      {R"(// "no text here")", {}},
      {"#include \"no text.h\"\nk;", {}},
      {R"(VALID_TRACE(kTraceFlow, "for the trace of %s", f(x)); k = "one text";)", {"one text"}},
      {R"(VALID_TRACE_AS(kName, kTraceFlow, "for the trace");)", {}},
      {R"(k = "/config/interface/gpon[a=1 and b=" + b + " and c=]";)", {}},
      {R"(k = path + "{1 " + key + "}/onu";)", {}},
      {R"(k = "gpon";)", {}},
  };
  for (const Case& source : cases) EXPECT_EQ(sentences(source.code), source.found) << source.code;
}

TEST(SourceTexts, AreComparedToTheLetter) {
  CodeTexts code;
  collect_texts(R"(k = kind + " bandwidth of %s"; words = {"Total", "Fixed"};)", code);
  const Matcher matcher(code);
  const CodeText& text = code.sentences.front();
  EXPECT_TRUE(matcher.is_whole(text, "Total bandwidth of <link>"));
  EXPECT_TRUE(matcher.is_whole(text, "<kind> bandwidth of <link>"));
  EXPECT_FALSE(matcher.is_whole(text, "Other bandwidth of <link>"));
  EXPECT_FALSE(matcher.is_whole(text, "Total bandwidth of link"));
  EXPECT_FALSE(matcher.is_whole(text, "Total bandwidth of <link>."));
  EXPECT_FALSE(matcher.is_in(text, "Total Bandwidth of <link>"));
}

}  // namespace
}  // namespace docs
