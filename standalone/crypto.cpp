#include "standalone/crypto.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/sha.h>

#include <algorithm>
#include <array>
#include <cassert>
#include <memory>
#include <vector>

namespace tarnd {
namespace {

constexpr std::string_view kPrefix = "$8$";
// The key is no secret. It differs from those of the cards, which never leave their card, so that a
// value of a card is not taken for one of a workstation.
constexpr std::string_view kKeyLabel = "tarnd stand-alone workstation, encrypted strings";
constexpr std::size_t kKeySize = 16;
constexpr std::size_t kIvSize = 16;
constexpr std::size_t kBase64Group = 4;
constexpr std::size_t kBytesOfGroup = 3;

using Bytes = std::vector<unsigned char>;
using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)>;

const unsigned char* bytes_of(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

// The first half is the cipher's key, the second one the key of the IVs.
std::array<unsigned char, SHA256_DIGEST_LENGTH> make_keys() {
  std::array<unsigned char, SHA256_DIGEST_LENGTH> digest = {};
  SHA256(bytes_of(kKeyLabel), kKeyLabel.size(), digest.data());
  return digest;
}

const std::array<unsigned char, SHA256_DIGEST_LENGTH>& keys() {
  static const auto made = make_keys();
  return made;
}

// The IV is computed from the clear text: equal texts have equal forms, and a wrong key is noticed.
std::array<unsigned char, kIvSize> iv_of(std::string_view clear) {
  std::array<unsigned char, SHA256_DIGEST_LENGTH> digest = {};
  HMAC(EVP_sha256(), keys().data() + kKeySize, kKeySize, bytes_of(clear), clear.size(),
       digest.data(), nullptr);
  std::array<unsigned char, kIvSize> iv = {};
  std::copy_n(digest.begin(), iv.size(), iv.begin());
  return iv;
}

// Encrypts or decrypts; in CFB mode clear and encrypted text have the same length.
void run_cipher(bool encrypting, const unsigned char* iv, const unsigned char* in, std::size_t size,
                unsigned char* out) {
  const CipherContext context(EVP_CIPHER_CTX_new(), EVP_CIPHER_CTX_free);
  int written = 0;
  const int ready = EVP_CipherInit_ex(context.get(), EVP_aes_128_cfb128(), nullptr, keys().data(),
                                      iv, encrypting ? 1 : 0);
  const int done = EVP_CipherUpdate(context.get(), out, &written, in, static_cast<int>(size));
  assert(ready == 1 && done == 1 && written == static_cast<int>(size));
}

std::string base64(const Bytes& bytes) {
  std::string text((bytes.size() + kBytesOfGroup - 1) / kBytesOfGroup * kBase64Group + 1, '\0');
  const int size = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), bytes.data(),
                                   static_cast<int>(bytes.size()));
  text.resize(static_cast<std::size_t>(size));
  return text;
}

std::optional<Bytes> from_base64(std::string_view text) {
  if (text.empty() || text.size() % kBase64Group != 0) return std::nullopt;
  Bytes bytes(text.size() / kBase64Group * kBytesOfGroup);
  if (EVP_DecodeBlock(bytes.data(), bytes_of(text), static_cast<int>(text.size())) < 0) {
    return std::nullopt;
  }
  // The decoder counts the padding as bytes and is lenient about blanks.
  const std::size_t last = text.find_last_not_of('=');
  bytes.resize(bytes.size() - std::min(text.size() - last - 1, bytes.size()));
  if (base64(bytes) != text) return std::nullopt;
  return bytes;
}

bool decrypt(std::string_view encrypted, std::string& clear) {
  if (!encrypted.starts_with(kPrefix)) return false;
  const std::optional<Bytes> bytes = from_base64(encrypted.substr(kPrefix.size()));
  if (!bytes.has_value() || bytes->size() < kIvSize) return false;
  clear.resize(bytes->size() - kIvSize);
  if (!clear.empty()) {
    run_cipher(false, bytes->data(), bytes->data() + kIvSize, clear.size(),
               reinterpret_cast<unsigned char*>(clear.data()));
  }
  const auto iv = iv_of(clear);
  if (std::equal(iv.begin(), iv.end(), bytes->begin())) return true;
  wipe(clear);
  return false;
}

}  // namespace

std::string encrypt_string(std::string_view clear) {
  const auto iv = iv_of(clear);
  Bytes bytes(iv.size() + clear.size());
  std::copy(iv.begin(), iv.end(), bytes.begin());
  if (!clear.empty()) {
    run_cipher(true, iv.data(), bytes_of(clear), clear.size(), bytes.data() + iv.size());
  }
  return std::string(kPrefix) + base64(bytes);
}

std::optional<std::string> decrypt_string(std::string_view encrypted) {
  // Decrypted into the returned object, because moving a short text would leave a copy of it in
  // memory.
  std::optional<std::string> clear;
  if (!decrypt(encrypted, clear.emplace())) clear.reset();
  return clear;
}

void wipe(std::string& clear) {
  OPENSSL_cleanse(clear.data(), clear.size());
  clear.clear();
}

}  // namespace tarnd
