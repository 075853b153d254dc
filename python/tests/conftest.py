"""What the tests share: the cards of the examples, and a small one."""

import os
from pathlib import Path

import pytest

import gponval

EXAMPLES = Path(os.environ["GPONVAL_EXAMPLES"])
COMMAND = os.environ["GPONVAL_COMMAND"]

SMALL = """
<config xmlns="urn:tarnd:base">
  <interface><gpon><chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>1</port-id>
    <onu><id>1</id><profile-references><line-profile>home</line-profile></profile-references></onu>
  </gpon></interface>
  <profile><gpon>
    <bandwidth-profile><name>up</name><traffic><type-2>
      <assured>1000</assured></type-2></traffic></bandwidth-profile>
    <line-profile><name>home</name>
      <tcont><id>1</id><bandwidth-profile>up</bandwidth-profile></tcont>
      <gem><gem-id>1</gem-id><tcont>1</tcont></gem></line-profile>
  </gpon></profile>
</config>
"""

ADDED_PORT = """
<config xmlns="urn:tarnd:base">
  <service-port><id>7</id>
    <gpon><id>1/1/1</id><onu><id>1</id><gem><gem-id>1</gem-id></gem></onu></gpon>
  </service-port>
</config>
"""

FEC_OFF = """
<config xmlns="urn:tarnd:base"><interface><gpon>
  <chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>1</port-id>
  <upstream-fec>false</upstream-fec></gpon></interface></config>
"""


@pytest.fixture
def town():
    return gponval.Card(EXAMPLES / "town.xml", card=EXAMPLES / "town.card")


@pytest.fixture
def small():
    return gponval.Card(SMALL)
