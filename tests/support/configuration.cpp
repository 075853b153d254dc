#include "tests/support/configuration.h"

namespace tarnd::test {
namespace {

std::string leaf(const std::string& name, const std::string& text) {
  return "<" + name + ">" + text + "</" + name + ">";
}

std::string link(const std::string& type, int port, const std::string& content,
                 const std::string& op) {
  return element("interface", element(type,
                                      leaf("chassis-id", "1") + leaf("slot-id", "1") +
                                          leaf("port-id", std::to_string(port)) + content,
                                      op));
}

std::string gpon_profile(const std::string& type, const std::string& name,
                         const std::string& content, const std::string& op) {
  return profiles(element(type, leaf("name", name) + content, op));
}

}  // namespace

std::string element(const std::string& name, const std::string& content, const std::string& op) {
  const std::string operation = op.empty() ? "" : " nc:operation=\"" + op + "\"";
  return "<" + name + operation + ">" + content + "</" + name + ">\n";
}

std::string gpon_link(int port, const std::string& content, const std::string& op) {
  return link("gpon", port, content, op);
}

std::string xgspon_link(int port, const std::string& content, const std::string& op) {
  return link("xgspon", port, content, op);
}

std::string onu(int id, const std::string& content, const std::string& op) {
  return element("onu", leaf("id", std::to_string(id)) + content, op);
}

std::string uses_line(const std::string& line_profile) {
  return element("profile-references", leaf("line-profile", line_profile));
}

std::string serial_number(const std::string& text) {
  return element("auth-method", leaf("serial-number", text));
}

std::string password(const std::string& text) {
  return element("auth-method", leaf("password", text));
}

std::string profiles(const std::string& content) {
  return element("profile", element("gpon", content));
}

std::string bandwidth_profile(const std::string& name, const std::string& traffic,
                              const std::string& op) {
  return gpon_profile("bandwidth-profile", name, element("traffic", traffic), op);
}

std::string line_profile(const std::string& name, const std::string& content,
                         const std::string& op) {
  return gpon_profile("line-profile", name, content, op);
}

std::string tcont(int id, const std::string& bandwidth_profile_name) {
  return element(
      "tcont", leaf("id", std::to_string(id)) + leaf("bandwidth-profile", bandwidth_profile_name));
}

std::string gem(int id, const std::string& op) {
  return element("gem", leaf("gem-id", std::to_string(id)), op);
}

std::string service_profile(const std::string& name, const std::string& content,
                            const std::string& op) {
  return gpon_profile("service-profile", name, content, op);
}

std::string rg_profile(const std::string& name, const std::string& content, const std::string& op) {
  return gpon_profile("rg-profile", name, content, op);
}

std::string service_port(int id, const std::string& link, const std::string& itf, int onu_id,
                         int gem_id, int vlan) {
  const std::string match =
      vlan == 0 ? "" : element("match", element("vlan", leaf("vlan-id", std::to_string(vlan))));
  return element(
      "service-port",
      leaf("id", std::to_string(id)) +
          element(link,
                  leaf("id", itf) +
                      element("onu", leaf("id", std::to_string(onu_id)) +
                                         element("gem", leaf("gem-id", std::to_string(gem_id))))) +
          match);
}

std::string deleted_service_port(int id) {
  return element("service-port", leaf("id", std::to_string(id)), "delete");
}

std::string vlan_mapping(const std::string& name, const std::string& content) {
  return element("vlan-mapping", element("name", name) + content);
}

std::string on_ethernet(std::initializer_list<int> ports) {
  std::string leaf_list;
  for (const int port : ports) {
    leaf_list += element("ethernet", std::to_string(port));
  }
  return element("uni", leaf_list);
}

std::string on_veip() {
  return element("veip", element("veip", ""));
}

std::string matching(const std::string& vlan, const std::string& cos) {
  return element("match", element("outer", (vlan.empty() ? "" : element("vlan-id", vlan)) +
                                               (cos.empty() ? "" : element("cos", cos))));
}

}  // namespace tarnd::test
