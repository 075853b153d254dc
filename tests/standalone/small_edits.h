#pragma once

#include <string>

// A configuration of two service ports and two ONUs, and the pieces of edits of it.
namespace tarnd::store {

inline std::string port(const std::string& id, const std::string& operation,
                        const std::string& rate) {
  return "<service-port nc:operation=\"" + operation + "\"><id>" + id + "</id><upstream-rate>" +
         rate + "</upstream-rate></service-port>";
}

inline std::string link(const std::string& content) {
  return "<interface><gpon><chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>3</port-id>" +
         content + "</gpon></interface>";
}

inline const std::string kLoaded =
    "<service-port><id>1</id><upstream-rate>1</upstream-rate></service-port>"
    "<service-port><id>2</id><upstream-rate>1</upstream-rate></service-port>" +
    link("<onu><id>1</id><description>a</description></onu><onu><id>2</id></onu>");

}  // namespace tarnd::store
