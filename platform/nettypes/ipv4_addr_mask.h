#pragma once

#include <algorithm>
#include <boost/asio/ip/network_v4.hpp>
#include <cstdint>
#include <string>

namespace nettypes {

/// An IPv4 address with a prefix length. The address keeps its host bits. A new one is 0.0.0.0/0.
class IPv4AddrMask {
 public:
  /// Host byte order.
  void set_addr(std::uint32_t addr) {
    network_ = Network(boost::asio::ip::address_v4(addr), network_.prefix_length());
  }

  /// 0..32; throws std::out_of_range otherwise.
  void set_prefix_len(unsigned int len) {
    network_ = Network(network_.address(), static_cast<unsigned short>(std::min(len, kNoLength)));
  }

  /// Host byte order.
  [[nodiscard]] std::uint32_t addr_to_uint32() const { return network_.address().to_uint(); }

  /// Whether the two prefixes have at least one address in common.
  [[nodiscard]] bool Overlap(const IPv4AddrMask& other) const {
    const unsigned short shorter =
        std::min(network_.prefix_length(), other.network_.prefix_length());
    return Network(network_.address(), shorter).network() ==
           Network(other.network_.address(), shorter).network();
  }

  /// Address and prefix length: "192.168.1.1/24".
  [[nodiscard]] std::string to_string() const { return network_.to_string(); }

  /// The address alone: "192.168.1.1".
  [[nodiscard]] std::string addr_to_string() const { return network_.address().to_string(); }

 private:
  using Network = boost::asio::ip::network_v4;
  static constexpr unsigned int kNoLength = 33;

  Network network_;
};

}  // namespace nettypes
