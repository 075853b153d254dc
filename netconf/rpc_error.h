#pragma once

#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include "standalone/input_error.h"

namespace tarnd::netconf {

/// One rpc-error of a reply (RFC 6241, section 4.3).
struct RpcError {
  std::string type = "application";  ///< transport, rpc, protocol or application
  std::string tag = "operation-failed";
  std::string severity = "error";
  std::string app_tag;  ///< optional, as what follows
  std::string path;     ///< an instance-identifier with the model's prefix
  std::string message;
  std::string info;  ///< the content of error-info, as XML
};

/// Refuses an operation.
class RpcFailure : public std::exception {
 public:
  explicit RpcFailure(RpcError error) : errors_{std::move(error)} {}
  explicit RpcFailure(std::vector<RpcError> errors) : errors_(std::move(errors)) {}
  [[nodiscard]] const std::vector<RpcError>& errors() const { return errors_; }
  [[nodiscard]] const char* what() const noexcept override { return "the operation is refused"; }

 private:
  std::vector<RpcError> errors_;
};

/// The prefix and namespace that the paths of errors use.
struct PathPrefix {
  std::string_view prefix;
  std::string_view name_space;
};

std::string to_xml(const RpcError& error, const PathPrefix& prefix);

RpcError error_of(std::string_view type, std::string_view tag, std::string_view message);
/// An error of a kind that has its tags and its error-info in RFC 6241, Appendix A, or in RFC 7950.
/// Of the subject it takes all but the path.
RpcError error_of(std::string_view type, InputFault fault, const InputSubject& subject,
                  const std::string& message);
// What clients do wrong with the elements of the protocol itself.
RpcError missing_element(const std::string& element);
RpcError unknown_element(const std::string& element);
RpcError bad_element(const std::string& element, const std::string& message);
RpcError unknown_namespace(const std::string& element, const std::string& name_space);
RpcError missing_attribute(const std::string& attribute, const std::string& element);
RpcError unknown_attribute(const std::string& attribute, const std::string& element);
RpcError bad_attribute(const std::string& attribute, const std::string& element,
                       const std::string& message);
RpcError invalid_value(const std::string& message);

}  // namespace tarnd::netconf
