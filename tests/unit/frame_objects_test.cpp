#include <cstdlib>
#include <string>
#include <vector>

#include "confd_get_objects_itf.h"
#include "tests/support/card_fixture.h"
#include "validation_texts.h"

namespace tarnd::test {
namespace {

constexpr const char* kPath = "/config/profile/gpon/bandwidth-profile";
constexpr unsigned int kValues = 15;
constexpr unsigned int kBatch = 64;
constexpr int kName = 0;
constexpr int kFixedOfType1 = 3;

/// "bw001" and so on; the number is the fixed bandwidth too.
std::string bandwidth_profiles(int count) {
  std::string text;
  for (int i = 1; i <= count; ++i) {
    std::string number = std::to_string(i);
    number.insert(0, 3 - number.size(), '0');
    text +=
        bandwidth_profile("bw" + number, element("type-1", element("fixed", std::to_string(i))));
  }
  return text;
}

class Objects : public CardFixture {
 protected:
  /// The sizes of the batches, up to and with the one that is 0 or -1.
  static std::vector<int> batches(ConfdGetObjsItf& reader) {
    std::vector<int> sizes;
    do {
      sizes.push_back(reader.getObjects());
      for (int i = 0; i < sizes.back(); ++i) {
        confd_free_value(&reader.object(i)[kName]);
      }
    } while (sizes.back() > 0);
    return sizes;
  }
};

TEST_F(Objects, AnEmptyListHasNone) {
  running("");
  open();
  ConfdGetObjsItf reader(kValues, kBatch, kPath, sock(), tctx(), true);
  EXPECT_EQ(reader.getObjects(), 0);
  EXPECT_EQ(reader.getObjects(), 0);
}

TEST_F(Objects, AListIsReadInBatches) {
  struct Row {
    int entries;
    std::vector<int> sizes;
  };
  const std::vector<Row> rows{
      {1, {1, 0}}, {63, {63, 0}}, {64, {64, 0}}, {65, {64, 1, 0}}, {129, {64, 64, 1, 0}}};
  for (const Row& row : rows) {
    running(bandwidth_profiles(row.entries));
    open();
    ConfdGetObjsItf reader(kValues, kBatch, kPath, sock(), tctx(), true);
    EXPECT_EQ(batches(reader), row.sizes) << row.entries;
  }
}

TEST_F(Objects, EachObjectHasItsValuesAtItsPlace) {
  running(bandwidth_profiles(5));
  open();
  ConfdGetObjsItf reader(kValues, 2, kPath, sock(), tctx(), true);
  std::vector<std::string> seen;
  for (int count = reader.getObjects(); count > 0; count = reader.getObjects()) {
    for (int i = 0; i < count; ++i) {
      confd_value_t* const values = reader.object(i);
      seen.push_back(valid::value_text(&values[kName]) + "=" +
                     std::to_string(CONFD_GET_UINT32(&values[kFixedOfType1])));
      confd_free_value(&values[kName]);
    }
  }
  EXPECT_EQ(seen,
            (std::vector<std::string>{"bw001=1", "bw002=2", "bw003=3", "bw004=4", "bw005=5"}));
}

TEST_F(Objects, ItReadsWhatTheTransactionWouldLeave) {
  running(bandwidth_profiles(3));
  open(bandwidth_profile("bw002", "", "delete"));
  ConfdGetObjsItf reader(kValues, kBatch, kPath, sock(), tctx(), true);
  EXPECT_EQ(batches(reader), (std::vector<int>{2, 0}));
}

TEST_F(Objects, AnExhaustedListIsNotAskedAgain) {
  running(bandwidth_profiles(3));
  open();
  ConfdGetObjsItf reader(kValues, kBatch, kPath, sock(), tctx(), true);
  EXPECT_EQ(batches(reader), (std::vector<int>{3, 0}));
  EXPECT_EQ(reader.getObjects(), 0);
  EXPECT_EQ(calls(PlatformCall::maapi_get_objects), 1U);
}

TEST_F(Objects, AFailedBatchIsMinusOne) {
  running(bandwidth_profiles(65));
  open();
  ConfdGetObjsItf reader(kValues, kBatch, kPath, sock(), tctx(), true);
  fail_call(PlatformCall::maapi_get_objects, 2);
  EXPECT_EQ(batches(reader), (std::vector<int>{64, -1}));
}

TEST_F(Objects, AFailedCursorShowsWithTheFirstBatch) {
  running(bandwidth_profiles(1));
  ValidationSession& session = open();
  fail_call(PlatformCall::maapi_init_cursor);
  {
    ConfdGetObjsItf reader(kValues, kBatch, kPath, sock(), tctx(), true);
    EXPECT_EQ(reader.getObjects(), -1);
  }
  EXPECT_EQ(session.open_resources().cursors, 0);
}

TEST_F(Objects, TheCursorIsClosedWithTheReader) {
  running(bandwidth_profiles(3));
  ValidationSession& session = open();
  {
    ConfdGetObjsItf reader(kValues, kBatch, kPath, sock(), tctx(), true);
    EXPECT_EQ(session.open_resources().cursors, 1);
  }
  EXPECT_EQ(session.open_resources().cursors, 0);
}

TEST_F(Objects, ThePathIsNoFormat) {
  running(line_profile("50%d", tcont(7, "bw")));
  open();
  ConfdGetObjsItf reader(2, kBatch, "/config/profile/gpon/line-profile{50%d}/tcont", sock(), tctx(),
                         true);
  ASSERT_EQ(reader.getObjects(), 1);
  EXPECT_EQ(CONFD_GET_UINT32(&reader.object(0)[0]), 7U);
  confd_free_value(&reader.object(0)[1]);
}

TEST_F(Objects, WithoutTheCheckAnotherSizeIsAccepted) {
  running(bandwidth_profiles(1));
  open();
  ConfdGetObjsItf reader(kValues + 1, kBatch, kPath, sock(), tctx(), false);
  EXPECT_EQ(batches(reader), (std::vector<int>{1, 0}));
  EXPECT_EQ(calls(PlatformCall::confd_max_object_size), 0U);
}

using ObjectsDeathTest = Objects;

TEST_F(ObjectsDeathTest, AnotherObjectSizeRaisesAFaultAndEndsTheProcess) {
  running("");
  open();
  const auto construct = [this](unsigned int values, const std::string& path) {
    ConfdGetObjsItf reader(values, kBatch, path, sock(), tctx(), true);
  };
  // The fault's text is bracketed by its source and its end.
  EXPECT_EXIT(construct(kValues - 1, kPath), testing::ExitedWithCode(1),
              "ConfdGetObjsItf at src/validation/confd_get_objects_itf.cpp:[0-9]+: "
              "\\[/config/profile/gpon/bandwidth-profile\\] object size \\(15\\) differs from "
              "expected \\(14\\)\\.");
  EXPECT_EXIT(construct(kValues + 1, kPath), testing::ExitedWithCode(1),
              "object size \\(15\\) differs from expected \\(16\\)\\.");
  EXPECT_EXIT(construct(kValues, "/config/no-such-list"), testing::ExitedWithCode(1),
              "object size \\(0\\) differs from expected \\(15\\)\\.");
}

TEST_F(ObjectsDeathTest, TheBacktraceComesBeforeTheFault) {
  running("");
  open();
  const auto construct = [this] {
    set_call_hook([printed = false](PlatformCall call) mutable {
      printed = printed || call == PlatformCall::qzmw_print_backtrace;
      if (call == PlatformCall::qzmw_gen_fault && !printed) std::_Exit(3);
      return true;
    });
    ConfdGetObjsItf reader(1, kBatch, kPath, sock(), tctx(), true);
  };
  EXPECT_EXIT(construct(), testing::ExitedWithCode(1), "Fault 1 raised by ConfdGetObjsItf");
}

TEST_F(ObjectsDeathTest, TheFaultTextIsCutTo349Characters) {
  running("");
  open();
  // Harmless slashes make the path long.
  const std::string path = kPath + std::string(400, '/');
  const auto construct = [&] { ConfdGetObjsItf reader(1, kBatch, path, sock(), tctx(), true); };
  EXPECT_EXIT(construct(), testing::ExitedWithCode(1), "bandwidth-profile/{310}\n");
}

}  // namespace
}  // namespace tarnd::test
