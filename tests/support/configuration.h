#pragma once

#include <initializer_list>
#include <string>

namespace tarnd::test {

// Configuration in XML, a line for each object. `content` is inserted into the element as it is.
// `op` is an edit operation such as "delete", empty for none.
std::string element(const std::string& name, const std::string& content,
                    const std::string& op = "");
std::string gpon_link(int port, const std::string& content = "", const std::string& op = "");
std::string xgspon_link(int port, const std::string& content = "", const std::string& op = "");
std::string onu(int id, const std::string& content = "", const std::string& op = "");
/// The ONU's reference to a line profile.
std::string uses_line(const std::string& line_profile);
std::string serial_number(const std::string& text);
std::string password(const std::string& text);
/// Everything below `/config/profile/gpon`.
std::string profiles(const std::string& content);
/// `traffic` is such as "<type-1><fixed>1000</fixed></type-1>".
std::string bandwidth_profile(const std::string& name, const std::string& traffic,
                              const std::string& op = "");
std::string line_profile(const std::string& name, const std::string& content,
                         const std::string& op = "");
std::string tcont(int id, const std::string& bandwidth_profile_name);
std::string gem(int id, const std::string& op = "");
std::string service_profile(const std::string& name, const std::string& content,
                            const std::string& op = "");
std::string rg_profile(const std::string& name, const std::string& content,
                       const std::string& op = "");
/// `link` is "gpon" or "xgspon", `itf` such as "1/1/3"; `vlan` 0 leaves the match VLAN out.
std::string service_port(int id, const std::string& link, const std::string& itf, int onu_id,
                         int gem_id, int vlan = 0);
std::string deleted_service_port(int id);

// VLAN mappings of a service profile, and their contents.
std::string vlan_mapping(const std::string& name, const std::string& content);
std::string on_ethernet(std::initializer_list<int> ports);
std::string on_veip();
/// An empty text leaves the leaf to its default.
std::string matching(const std::string& vlan, const std::string& cos);

}  // namespace tarnd::test
