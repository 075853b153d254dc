"""python3 orchestrator.py PORT KEY: gives ONU 1 another service on the card that gponval serve
offers there. If the VLAN belongs to another service, it takes the next one."""

import getpass
import sys

from ncclient import manager
from ncclient.operations import RPCError

SERVICE = """<config xmlns="urn:ietf:params:xml:ns:netconf:base:1.0"><config xmlns="urn:tarnd:base">
  <service-port>
    <id>15</id>
    <gpon><id>1/1/1</id><onu><id>1</id><gem><gem-id>2</gem-id></gem></onu></gpon>
    <match><vlan><vlan-id>{vlan}</vlan-id></vlan></match>
    <admin-enabled>true</admin-enabled>
  </service-port></config></config>"""

with manager.connect(host="127.0.0.1", port=int(sys.argv[1]), username=getpass.getuser(), password="",
                     key_filename=sys.argv[2], hostkey_verify=False, look_for_keys=False,
                     allow_agent=False, timeout=60) as card, card.locked("candidate"):
    for vlan in range(100, 110):
        card.edit_config(target="candidate", config=SERVICE.format(vlan=vlan))
        try:
            card.commit()
            print(f"VLAN {vlan}: committed")
            break
        except RPCError as rejection:
            print(f"VLAN {vlan}: {rejection.message}")
            card.discard_changes()
            if rejection.app_tag != "service_port_global_validation":
                raise
