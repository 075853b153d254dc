#include "tools/gponval/card_variation.h"

#include <array>
#include <string_view>

namespace gponval {
namespace {

constexpr std::array<std::string_view, 16> kWords = {
    "market", "harbour", "mill",  "station", "church", "school",  "castle", "bridge",
    "garden", "forest",  "river", "meadow",  "quarry", "orchard", "tower",  "valley"};
constexpr std::array<std::string_view, 4> kVendors = {"ZQRT", "ZQRA", "ZQLN", "ZQOP"};

constexpr std::array kVaried = {&CardSize::service_ports, &CardSize::bandwidth_profiles,
                                &CardSize::line_profiles, &CardSize::service_profiles,
                                &CardSize::rg_profiles,   &CardSize::tr069_profiles,
                                &CardSize::sip_profiles,  &CardSize::media_profiles};

// The finalizer of SplitMix64: each bit of the input changes about half of the output's.
std::uint64_t mixed(std::uint64_t bits) {
  bits += 0x9e3779b97f4a7c15U;
  bits = (bits ^ (bits >> 30U)) * 0xbf58476d1ce4e5b9U;
  bits = (bits ^ (bits >> 27U)) * 0x94d049bb133111ebU;
  return bits ^ (bits >> 31U);
}

}  // namespace

CardSize CardVariation::varied(CardSize size) const {
  if (!seed_.has_value()) return size;
  std::uint64_t index = 0;
  for (std::uint32_t CardSize::*const number : kVaried) {
    size.*number = half_or_more("size", index++, size.*number);
  }
  return size;
}

std::uint32_t CardVariation::onus_on(std::uint32_t link, std::uint32_t most) const {
  return seed_.has_value() ? half_or_more("onus", link, most) : most;
}

std::uint64_t CardVariation::pick(std::string_view purpose, std::uint64_t index,
                                  std::uint64_t of) const {
  return (seed_.has_value() ? random(purpose, index) : index) % of;
}

std::uint64_t CardVariation::offset(std::string_view purpose, std::uint64_t limit) const {
  return seed_.has_value() ? random(purpose, 0) % limit : 0;
}

std::string CardVariation::word() const {
  if (!seed_.has_value()) return "";
  return std::string(kWords[random("word", 0) % kWords.size()]) + '-';
}

std::string_view CardVariation::vendor() const {
  return kVendors[offset("vendor", kVendors.size())];
}

std::uint64_t CardVariation::random(std::string_view purpose, std::uint64_t index) const {
  std::uint64_t bits = mixed(seed_.value_or(0));
  for (const char letter : purpose) bits = mixed(bits ^ static_cast<unsigned char>(letter));
  return mixed(bits ^ index);
}

std::uint32_t CardVariation::half_or_more(std::string_view purpose, std::uint64_t index,
                                          std::uint32_t most) const {
  return most - static_cast<std::uint32_t>(random(purpose, index) % (most / 2U + 1U));
}

}  // namespace gponval
