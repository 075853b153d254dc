#include "netconf/framing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace tarnd::netconf {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

constexpr std::size_t kMost = 1000;

// The messages of a stream that comes in pieces of this size; "error" stands for a FramingError.
std::vector<std::string> messages(const std::string& stream, Framing framing, std::size_t piece,
                                  std::size_t most = kMost) {
  FrameReader reader(most);
  reader.use(framing);
  std::vector<std::string> found;
  try {
    for (std::size_t at = 0; at < stream.size(); at += piece) {
      reader.append(std::string_view(stream).substr(at, piece));
      do {
        while (auto message = reader.next()) found.push_back(*message);
      } while (reader.has_more());
    }
  } catch (const FramingError&) {
    found.emplace_back("error");
  }
  return found;
}

TEST(FramingTest, CutsAStreamHoweverItComes) {
  struct Row {
    const char* name;
    Framing framing;
    std::string stream;
    std::vector<std::string> messages;
  };
  const std::vector<Row> rows = {
      {"end of message", Framing::kEndOfMessage, "<a/>]]>]]><b/>]]>]]>", {"<a/>", "<b/>"}},
      {"nearly an end", Framing::kEndOfMessage, "]]>]]]]>]]>", {"]]>]]"}},
      {"no end yet", Framing::kEndOfMessage, "<a/>]]>]]", {}},
      {"one chunk", Framing::kChunked, "\n#4\n<a/>\n##\n", {"<a/>"}},
      {"chunks", Framing::kChunked, "\n#1\n<\n#3\na/>\n##\n\n#1\nb\n##\n", {"<a/>", "b"}},
      {"an end inside a chunk", Framing::kChunked, "\n#4\n\n##\n\n##\n", {"\n##\n"}},
      {"last chunk missing", Framing::kChunked, "\n#4\n<a/>", {}},
      {"no line end", Framing::kChunked, "#4\n<a/>\n##\n", {"error"}},
      {"length zero", Framing::kChunked, "\n#0\n\n##\n", {"error"}},
      {"leading zero", Framing::kChunked, "\n#04\n<a/>\n##\n", {"error"}},
      {"no length", Framing::kChunked, "\n#\n<a/>\n##\n", {"error"}},
      {"a letter in the length", Framing::kChunked, "\n#4x\n<a/>\n##\n", {"error"}},
      {"length too large", Framing::kChunked, "\n#4294967296\n", {"error"}},
      {"eleven digits", Framing::kChunked, "\n#11111111111\n", {"error"}},
      {"no chunk at all", Framing::kChunked, "\n##\n", {"error"}},
      {"wrong end", Framing::kChunked, "\n#1\na\n#\n", {"error"}},
      {"end of message for a chunk", Framing::kChunked, "]]>]]>", {"error"}},
      {"after a message", Framing::kChunked, "\n#1\na\n##\nx", {"a", "error"}},
  };
  for (const Row& row : rows) {
    for (std::size_t piece = 1; piece <= row.stream.size(); ++piece) {
      SCOPED_TRACE(std::string(row.name) + " in pieces of " + std::to_string(piece));
      EXPECT_THAT(messages(row.stream, row.framing, piece), ElementsAreArray(row.messages));
    }
  }
}

TEST(FramingTest, ReadsManyChunksInSeveralSteps) {
  FrameReader reader(kMost);
  reader.use(Framing::kChunked);
  for (int i = 0; i < 500; ++i) reader.append("\n#1\na");
  reader.append("\n##\n");
  EXPECT_EQ(reader.next(), std::nullopt);
  EXPECT_TRUE(reader.has_more());
  std::optional<std::string> message;
  while (reader.has_more()) message = reader.next();
  EXPECT_EQ(message, std::string(500, 'a'));
  EXPECT_EQ(reader.next(), std::nullopt);
  EXPECT_FALSE(reader.has_more());
}

TEST(FramingTest, RefusesMessagesThatAreTooLong) {
  EXPECT_THAT(messages("1234567890]]>]]>", Framing::kEndOfMessage, 1, 10),
              ElementsAre("1234567890"));
  EXPECT_THAT(messages("12345678901]]>]]>", Framing::kEndOfMessage, 100, 10), ElementsAre("error"));
  EXPECT_THAT(messages(std::string(100, 'x'), Framing::kEndOfMessage, 7, 10), ElementsAre("error"));
  EXPECT_THAT(messages("\n#5\n12345\n#5\n67890\n##\n", Framing::kChunked, 3, 10),
              ElementsAre("1234567890"));
  EXPECT_THAT(messages("\n#5\n12345\n#6\n", Framing::kChunked, 3, 10), ElementsAre("error"));
  EXPECT_THAT(messages("\n#11\n", Framing::kChunked, 3, 10), ElementsAre("error"));
}

TEST(FramingTest, ChangesTheFramingBetweenTwoMessages) {
  FrameReader reader(kMost);
  reader.append("<hello/>]]>]]>\n#4\n<a/>\n##\n");
  EXPECT_EQ(reader.next(), "<hello/>");
  reader.use(Framing::kChunked);
  EXPECT_EQ(reader.next(), "<a/>");
  EXPECT_EQ(reader.next(), std::nullopt);
}

TEST(FramingTest, ReadsWhatItWrites) {
  for (const Framing framing : {Framing::kEndOfMessage, Framing::kChunked}) {
    EXPECT_THAT(messages(framed("<a/>", framing) + framed("b", framing), framing, 3),
                ElementsAre("<a/>", "b"));
  }
}

}  // namespace
}  // namespace tarnd::netconf
