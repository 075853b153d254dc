// Encrypted strings, and their decryption for the plug-in.

#include "standalone/crypto.h"
#include "tests/standalone/confd_test.h"

namespace tarnd::test {
namespace {

using testing::StartsWith;

TEST(Crypto, EveryTextComesBack) {
  for (const std::string& clear :
       {std::string(), std::string("a"), std::string("secret"), std::string("äöü"),
        std::string(16, 'x'), std::string(1000, 'y')}) {
    const std::string encrypted = encrypt_string(clear);
    EXPECT_THAT(encrypted, StartsWith("$8$"));
    EXPECT_EQ(decrypt_string(encrypted), clear);
  }
}

TEST(Crypto, EqualTextsLookEqualAndOthersDoNot) {
  EXPECT_EQ(encrypt_string("secret"), encrypt_string("secret"));
  EXPECT_NE(encrypt_string("secret"), encrypt_string("secreT"));
}

TEST(Crypto, TheClearTextDoesNotShow) {
  EXPECT_THAT(encrypt_string("secret"), testing::Not(testing::HasSubstr("secret")));
}

TEST(Crypto, WhatWasNotEncryptedHereDoesNotDecrypt) {
  std::string tampered = encrypt_string("secret");
  tampered[10] = tampered[10] == 'A' ? 'B' : 'A';
  for (const std::string& text :
       {tampered, std::string(), std::string("secret"), std::string("$8$"),
        std::string("$0$secret"), std::string("$8$AAAA"), std::string("$8$not base64 at all!!!"),
        std::string("$8$AAAAAAAAAAAAAAAAAAAAAAAAAAAA"), "$4$" + encrypt_string("x").substr(3),
        encrypt_string("secret") + "=", " " + encrypt_string("secret"),
        encrypt_string("secret").substr(0, 20)}) {
    EXPECT_EQ(decrypt_string(text), std::nullopt) << text;
  }
}

TEST(Crypto, WipingLeavesNothing) {
  std::string clear = "secret";
  wipe(clear);
  EXPECT_EQ(clear, "");
}

class ConfdCrypto : public ConfdTest {
 protected:
  std::string password() {
    confd_value_t value;
    EXPECT_EQ(maapi_get_elem(sock(), th(), &value,
                             "/config/profile/gpon/tr069-acs-profile{acs}/password"),
              CONFD_OK);
    std::string text = CONFD_GET_CBUFPTR(&value);
    confd_free_value(&value);
    return text;
  }

  static int decrypt(const std::string& text, std::string& clear) {
    std::vector<char> output(text.size() + 1, '?');
    output.back() = '!';
    const int result = confd_decrypt(text.data(), static_cast<int>(text.size()), output.data());
    EXPECT_EQ(output.back(), '!') << "written behind the length";
    if (result == CONFD_OK) {
      clear = output.data();
    } else {
      EXPECT_EQ(output.front(), text.empty() ? '!' : '?');
    }
    return result;
  }
};

TEST_F(ConfdCrypto, APasswordDecryptsOnceTheKeysAreInstalled) {
  open();
  std::string clear = "unset";
  EXPECT_EQ(decrypt(password(), clear), CONFD_ERR);
  expect_error(CONFD_ERR_NOSESSION);
  EXPECT_EQ(clear, "unset");
  EXPECT_EQ(maapi_install_crypto_keys(sock()), CONFD_OK);
  EXPECT_EQ(decrypt(password(), clear), CONFD_OK);
  EXPECT_EQ(clear, "secret");
  EXPECT_EQ(decrypt(encrypt_string(""), clear), CONFD_OK);
  EXPECT_EQ(clear, "");
}

TEST_F(ConfdCrypto, TheKeysGoWithTheirTransaction) {
  open();
  ASSERT_EQ(maapi_install_crypto_keys(sock()), CONFD_OK);
  open();
  std::string clear;
  EXPECT_EQ(decrypt(password(), clear), CONFD_ERR);
  expect_error(CONFD_ERR_NOSESSION);
}

TEST_F(ConfdCrypto, OnlyTheGivenLengthIsRead) {
  open();
  ASSERT_EQ(maapi_install_crypto_keys(sock()), CONFD_OK);
  const std::string text = encrypt_string("secret");
  const std::string longer = text + "trailing";
  std::vector<char> output(longer.size());
  EXPECT_EQ(confd_decrypt(longer.data(), static_cast<int>(text.size()), output.data()), CONFD_OK);
  EXPECT_STREQ(output.data(), "secret");
}

TEST_F(ConfdCrypto, WhatDoesNotDecryptFails) {
  open();
  ASSERT_EQ(maapi_install_crypto_keys(sock()), CONFD_OK);
  std::string clear;
  EXPECT_EQ(decrypt("$8$AAAAAAAAAAAAAAAAAAAAAAAAAAAA", clear), CONFD_ERR);
  expect_error(CONFD_ERR_BADTYPE);
  EXPECT_EQ(decrypt("", clear), CONFD_ERR);
  char output = '?';
  EXPECT_EQ(confd_decrypt("$8$", -1, &output), CONFD_ERR);
  expect_error(CONFD_ERR_PROTOUSAGE);
}

TEST_F(ConfdCrypto, WithoutAnAnswerNothingIsDecrypted) {
  open();
  fail_call(PlatformCall::maapi_install_crypto_keys);
  EXPECT_EQ(maapi_install_crypto_keys(sock()), CONFD_ERR);
  expect_error(CONFD_ERR_UNAVAILABLE);
  EXPECT_EQ(maapi_install_crypto_keys(sock() + 1000), CONFD_ERR);
  expect_error(CONFD_ERR_NOSESSION);
  ASSERT_EQ(maapi_install_crypto_keys(sock()), CONFD_OK);
  fail_call(PlatformCall::confd_decrypt);
  std::string clear;
  EXPECT_EQ(decrypt(password(), clear), CONFD_ERR);
  expect_error(CONFD_ERR_UNAVAILABLE);
}

}  // namespace
}  // namespace tarnd::test
