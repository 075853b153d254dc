#include "netconf/rpc_error.h"

#include <gtest/gtest.h>

#include "netconf/xml_text.h"

namespace tarnd::netconf {
namespace {

TEST(XmlTextTest, EscapesWhatXmlCannotHold) {
  EXPECT_EQ(escaped("plain \xC3\xA4 text\n\t"), "plain \xC3\xA4 text\n\t");
  EXPECT_EQ(escaped("<a b=\"c\">&\r"), "&lt;a b=&quot;c&quot;&gt;&amp;&#13;");
  EXPECT_EQ(escaped_value("a\tb\n\r\""), "a&#9;b&#10;&#13;&quot;");
  EXPECT_EQ(escaped(std::string_view("\x01\0", 2)), "\xEF\xBF\xBD\xEF\xBF\xBD");
  EXPECT_EQ(escaped("cut \xC3"), "cut \xEF\xBF\xBD");
  EXPECT_EQ(escaped("\xEF\xBF\xBF"), "\xEF\xBF\xBD");
}

TEST(RpcErrorTest, WritesWhatIsSetInTheOrderOfTheRfc) {
  RpcError error;
  error.app_tag = "sp_gem_check";
  error.path = "/base:config[base:a='<']";
  error.message = "a & b\n";
  error.info = "<bad-element>x</bad-element>";
  EXPECT_EQ(to_xml(error, {"base", "urn:x"}),
            "<rpc-error><error-type>application</error-type>"
            "<error-tag>operation-failed</error-tag><error-severity>error</error-severity>"
            "<error-app-tag>sp_gem_check</error-app-tag>"
            "<error-path xmlns:base=\"urn:x\">/base:config[base:a='&lt;']</error-path>"
            "<error-message xml:lang=\"en\">a &amp; b\n</error-message>"
            "<error-info><bad-element>x</bad-element></error-info></rpc-error>");
  EXPECT_EQ(to_xml(error_of("rpc", "missing-attribute", ""), {}),
            "<rpc-error><error-type>rpc</error-type><error-tag>missing-attribute</error-tag>"
            "<error-severity>error</error-severity></rpc-error>");
}

}  // namespace
}  // namespace tarnd::netconf
