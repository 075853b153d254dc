#include <pthread.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "gpon_tr069_profile_validation.h"
#include "standalone/crypto.h"
#include "tests/support/card_fixture.h"
#include "tests/support/platform_in_place.h"
#include "tests/support/recorded_calls.h"
#include "tests/support/trace_capture.h"

namespace tarnd::test {
namespace {

constexpr const char* kRequest = "tr069_profile_password_length_check";
constexpr const char* kInvalid = "Invalid password length/size";
constexpr const char* kMarker = "correct-horse-battery-st";

class Tr069ProfilePasswordLengthCheck : public CardFixture {
 protected:
  /// `stored` is the leaf's text: "$0$" and a clear text, or an encrypted one.
  Answer answer_for(const std::string& stored) {
    return answer_of(kRequest,
                     profiles(element("tr069-acs-profile",
                                      element("name", "acs") + element("password", stored))));
  }

  /// Calls the check alone with the encrypted text as the new value.
  std::int32_t check(const std::string& encrypted) {
    confd_hkeypath_t keypath{};
    confd_value_t value{};
    CONFD_SET_BUF(&value, reinterpret_cast<unsigned char*>(const_cast<char*>(encrypted.data())),
                  static_cast<unsigned int>(encrypted.size()));
    return tr069_profile_password_length_check_func(sock(), tctx(), &keypath, &value);
  }
};

TEST_F(Tr069ProfilePasswordLengthCheck, TwentyFiveCharactersAreTheMost) {
  struct Row {
    std::string clear_text;
    Verdict verdict;
    const char* text;
  };
  const std::array<Row, 5> rows{{
      {"", Verdict::kOk, ""},
      {"a", Verdict::kOk, ""},
      {std::string(25, 'a'), Verdict::kOk, ""},
      {std::string(26, 'a'), Verdict::kError, kInvalid},
      {std::string(1000, 'a'), Verdict::kError, kInvalid},
  }};
  for (const Row& row : rows) {
    const Answer answer = answer_for("$0$" + row.clear_text);
    EXPECT_EQ(answer.result, row.verdict) << row.clear_text;
    EXPECT_EQ(answer.text, row.text) << row.clear_text;
  }
}

TEST_F(Tr069ProfilePasswordLengthCheck, TheLengthIsThatOfTheBytes) {
  std::string thirteen_wide_letters;
  for (int i = 0; i < 13; ++i) thirteen_wide_letters += "\u00e9";
  EXPECT_EQ(answer_for("$0$" + thirteen_wide_letters).text, kInvalid);
}

TEST_F(Tr069ProfilePasswordLengthCheck, TheClearTextEndsAtItsFirstNul) {
  open();
  std::string with_nul(40, 'a');
  with_nul[25] = '\0';
  EXPECT_EQ(check(encrypt_string(with_nul)), CONFD_OK);
  with_nul[25] = 'a';
  with_nul[26] = '\0';
  EXPECT_EQ(check(encrypt_string(with_nul)), CONFD_ERR);
}

TEST_F(Tr069ProfilePasswordLengthCheck, WithoutTheKeysItIsRejectedWithTheSameText) {
  fail_call(PlatformCall::maapi_install_crypto_keys);
  const Answer answer = answer_for("$0$secret");
  EXPECT_EQ(answer.result, Verdict::kError);
  EXPECT_EQ(answer.text, kInvalid);
  EXPECT_EQ(calls(PlatformCall::confd_decrypt), 0U);
}

TEST_F(Tr069ProfilePasswordLengthCheck, WhatDoesNotDecryptIsRejectedWithTheSameText) {
  EXPECT_EQ(answer_for("$8$AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA").text, kInvalid);
  EXPECT_EQ(calls(PlatformCall::maapi_install_crypto_keys), 1U);
  EXPECT_EQ(calls(PlatformCall::confd_decrypt), 1U);

  fail_call(PlatformCall::confd_decrypt);
  EXPECT_EQ(answer_for("$0$secret").text, kInvalid);
}

TEST_F(Tr069ProfilePasswordLengthCheck, ThePlatformIsCalledInOrder) {
  const RecordedCalls recorded;
  answer_for("$0$" + std::string(26, 'a'));
  EXPECT_EQ(recorded.names(),
            (std::vector<std::string>{"qzconfd_maapi_socket_get", "maapi_install_crypto_keys",
                                      "confd_decrypt", "confd_trans_seterr"}));
}

TEST_F(Tr069ProfilePasswordLengthCheck, OnlyTheResult0MeansThatItDecrypted) {
  const InPlace in_place;
  open();
  const std::string encrypted = encrypt_string("secret");
  for (const int result : {CONFD_ERR, 1, 6}) {
    InPlace::decrypted = result;
    EXPECT_EQ(check(encrypted), CONFD_ERR) << result;
  }
  InPlace::decrypted = CONFD_OK;
  EXPECT_EQ(check(encrypted), CONFD_OK);
}

TEST_F(Tr069ProfilePasswordLengthCheck, TheBufferHasRoomForABlockMoreInWholeBlocks) {
  const InPlace in_place;
  open();
  for (const auto& [encrypted, buffer] :
       {std::pair(0, 16), std::pair(1, 32), std::pair(15, 32), std::pair(16, 32), std::pair(17, 48),
        std::pair(8192, 8208), std::pair(65536, 65552)}) {
    check(std::string(static_cast<std::size_t>(encrypted), 'x'));
    EXPECT_EQ(InPlace::wiped, static_cast<std::size_t>(buffer)) << encrypted;
  }
}

TEST_F(Tr069ProfilePasswordLengthCheck, TheBufferIsEmptyBeforeTheDecryption) {
  const InPlace in_place;
  open();
  check("no encrypted text, and long enough to leave something behind on the stack");
  check("no encrypted text, and long enough to leave something behind on the stack");
  EXPECT_EQ(InPlace::clear_text_before, "");
  // If the decryption writes nothing, the password is empty.
  InPlace::decrypted = CONFD_OK;
  EXPECT_EQ(check("x"), CONFD_OK);
}

TEST_F(Tr069ProfilePasswordLengthCheck, A64KTextIsTheLongestThatIsDecrypted) {
  open();
  check(std::string(65536, 'x'));
  EXPECT_EQ(calls(PlatformCall::confd_decrypt), 1U);
  check(std::string(65537, 'x'));
  EXPECT_EQ(calls(PlatformCall::confd_decrypt), 1U);
}

TEST_F(Tr069ProfilePasswordLengthCheck, AnEnormousTextIsRejectedBeforeItFillsTheStack) {
  open();
  EXPECT_EQ(check("$8$" + std::string(std::size_t{64} << 20, 'A')), CONFD_ERR);
  EXPECT_EQ(calls(PlatformCall::confd_decrypt), 0U);
}

TEST_F(Tr069ProfilePasswordLengthCheck, TheTraceHasBeginAndEndAlone) {
  TraceCapture trace(TraceLevel::kDetail);
  answer_for(std::string("$0$") + kMarker);
  const auto of_the_check = [](const std::string& record) {
    return record.find("src/validation/") != std::string::npos;
  };
  EXPECT_EQ(std::count_if(trace.records().begin(), trace.records().end(), of_the_check), 2);
  EXPECT_TRUE(trace.has(" tr069_profile_password_length_check_func begin"));
  EXPECT_TRUE(trace.has(" tr069_profile_password_length_check_func end - OK"));
  EXPECT_FALSE(trace.has(kMarker));
}

using Tr069ProfilePasswordLengthCheckDeathTest = Tr069ProfilePasswordLengthCheck;

TEST_F(Tr069ProfilePasswordLengthCheckDeathTest, AValueThatIsNoTextIsImpossible) {
  open();
  confd_hkeypath_t keypath{};
  confd_value_t value{};
  CONFD_SET_UINT32(&value, 1);
  EXPECT_DEATH(tr069_profile_password_length_check_func(sock(), tctx(), &keypath, &value),
               R"(Assertion `\(newval\)->type == C_BUF' failed)");
}

/// Runs the job on a stack that is still there afterwards.
class KeptStack {
 public:
  template <typename Job>
  explicit KeptStack(Job job) : memory_(kSize, 0) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    const std::size_t lost =
        kAlignment - reinterpret_cast<std::size_t>(memory_.data()) % kAlignment;
    EXPECT_EQ(pthread_attr_setstack(&attributes, memory_.data() + lost, kSize - kAlignment), 0);
    pthread_t thread{};
    const int created = pthread_create(
        &thread, &attributes,
        [](void* pending) -> void* {
          (*static_cast<Job*>(pending))();
          return nullptr;
        },
        &job);
    pthread_attr_destroy(&attributes);
    EXPECT_EQ(created, 0);
    if (created == 0) pthread_join(thread, nullptr);
  }

  /// Whether the text is in the memory at `from` and the bytes after it.
  [[nodiscard]] bool holds(const std::string& text, const char* from, std::size_t size) const {
    const char* const end = std::min(from + size, memory_.data() + memory_.size());
    EXPECT_GE(from, memory_.data());
    EXPECT_LT(from, end);
    return std::search(from, end, text.begin(), text.end()) != end;
  }

 private:
  static constexpr std::size_t kSize = std::size_t{1} << 20;
  static constexpr std::size_t kAlignment = 4096;
  std::vector<char> memory_;
};

// The clear texts are long, so later calls do not overwrite all of them on the stack. Only the
// check's own buffer is examined; what the cipher leaves is the platform's responsibility.
TEST_F(Tr069ProfilePasswordLengthCheck, NoClearTextIsLeftOnTheStack) {
  const InPlace in_place;
  open();
  std::string too_long;
  for (int i = 0; i < 1000; ++i) too_long += kMarker;
  const std::string accepted = std::string("short") + '\0' + too_long;
  for (const std::string& clear_text : {accepted, too_long}) {
    const std::string encrypted = encrypt_string(clear_text);
    std::optional<std::int32_t> result;
    const KeptStack stack([&] { result = check(encrypted); });
    EXPECT_EQ(result, clear_text == accepted ? CONFD_OK : CONFD_ERR);
    EXPECT_FALSE(stack.holds(kMarker, InPlace::clear_text, clear_text.size()));
  }
}

}  // namespace
}  // namespace tarnd::test
