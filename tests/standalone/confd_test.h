#pragma once

#include <gmock/gmock.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "confd_cdb.h"
#include "confd_maapi.h"
#include "tests/support/card_fixture.h"

namespace tarnd::test {

/// A card with two GPON links and some of everything else, for the calls that read it.
class ConfdTest : public CardFixture {
 protected:
  ConfdTest() { running(kConfiguration); }

  int th() { return tctx()->thandle; }

  /// The last call failed with this code, and there is a text for it.
  static void expect_error(int code) {
    EXPECT_EQ(confd_errno, code) << confd_lasterr();
    EXPECT_STRNE(confd_lasterr(), "");
  }

  static constexpr const char* kConfiguration = R"(
    <gpon><slot>1/1</slot><onu-auth-method>password</onu-auth-method><rg-one-shot-prov/></gpon>
    <interface>
      <gpon>
        <chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>3</port-id>
        <upstream-fec>false</upstream-fec>
        <onu>
          <id>10</id>
          <auth-method><serial-number>ZQRT0000ABCD</serial-number></auth-method>
          <profile-references><line-profile>fast</line-profile></profile-references>
          <rg-profile>home</rg-profile>
          <ip-host>
            <address>10.0.0.5/24</address><default-gateway>10.0.0.1</default-gateway>
          </ip-host>
        </onu>
        <onu>
          <id>9</id>
          <profile-references><line-profile>slow</line-profile></profile-references>
        </onu>
      </gpon>
      <gpon>
        <chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>12</port-id>
        <onu><id>1</id></onu>
      </gpon>
    </interface>
    <profile><gpon>
      <line-profile>
        <name>fast</name>
        <gem><gem-id>1</gem-id><tcont>7</tcont></gem>
      </line-profile>
      <line-profile><name>it's50%</name></line-profile>
      <service-profile>
        <name>triple</name>
        <vlan-mapping>
          <name>m1</name>
          <match><outer><vlan-id>100</vlan-id></outer></match>
          <uni><ethernet>3</ethernet><ethernet>1</ethernet></uni>
        </vlan-mapping>
        <vlan-mapping><name>m2</name><veip><veip/></veip></vlan-mapping>
      </service-profile>
      <rg-profile>
        <name>home</name>
        <wan-ip-connection>
          <name>internet</name>
          <itf-grouping>
            <ports><port>wl0</port></ports>
            <ports><port>eth2</port><vlan>7</vlan></ports>
          </itf-grouping>
        </wan-ip-connection>
      </rg-profile>
      <tr069-acs-profile><name>acs</name><password>$0$secret</password></tr069-acs-profile>
    </gpon></profile>
    <service-port>
      <id>7</id>
      <gpon><id>1/1/3</id><onu><id>10</id><gem><gem-id>1</gem-id></gem></onu></gpon>
      <match><vlan><vlan-id>100</vlan-id></vlan></match>
    </service-port>
    <service-port>
      <id>100</id>
      <xgspon><id>1/1/5</id><onu><id>2</id></onu></xgspon>
      <action><type>translate</type></action>
      <upstream-rate>5000</upstream-rate>
    </service-port>)";
};

}  // namespace tarnd::test
