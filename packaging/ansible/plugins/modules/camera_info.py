#!/usr/bin/python3
from __future__ import absolute_import, division, print_function

__metaclass__ = type

DOCUMENTATION = r"""
module: camera_info
short_description: Finds the GigE Vision cameras behind a host
description:
  - Searches all adapters of the host with C(lanvanectl list) and returns adapters, cameras and findings.
  - Changes nothing.
author: Ostra Lanvane developers (!UNKNOWN)
options:
  adapters:
    description: Considers only these adapters.
    type: list
    elements: str
    default: []
  ask:
    description: Addresses at which cameras are asked, too, behind a router for instance.
    type: list
    elements: str
    default: []
extends_documentation_fragment: lanvane.cameras.lanvanectl
attributes:
  check_mode:
    description: Runs in check mode as well.
    support: full
notes:
  - The right to see raw packets is not needed. Cameras whose answers the host drops are found when the package
    C(lanvane-listen) is installed.
seealso:
  - module: lanvane.cameras.camera_plan
"""

EXAMPLES = r"""
- name: Find the cameras
  lanvane.cameras.camera_info:
  register: found

- name: No camera may be unreachable
  ansible.builtin.assert:
    that: found.cameras | rejectattr('status', 'in', ['ok', 'in-use']) | length == 0
"""

RETURN = r"""
adapters:
  description: Every link of the host.
  returned: success
  type: list
  elements: dict
cameras:
  description: Every camera found, sorted by MAC address.
  returned: success
  type: list
  elements: dict
  sample:
    - mac: 02:5A:E3:01:00:01
      model: OL-2040
      name: Conveyor left
      address: 192.168.10.20
      mask: 255.255.255.0
      gateway: null
      mode: static
      status: ok
findings:
  description: What is wrong, with a code, evidence and commands that help.
  returned: success
  type: list
  elements: dict
sysctls:
  description: The kernel settings that commands of the findings make, by name.
  returned: success
  type: dict
  sample:
    net.ipv4.conf.all.rp_filter: "0"
"""

import shlex

from ansible.module_utils.basic import AnsibleModule
from ansible_collections.lanvane.cameras.plugins.module_utils.lanvanectl import EXECUTABLE, problem_of, run


def sysctls_of(findings):
    settings = {}
    for finding in findings:
        for remedy in finding["remedies"]:
            words = shlex.split(remedy)
            if words[:1] == ["sudo"]:
                words = words[1:]
            if words[:2] == ["sysctl", "-w"]:
                settings.update(word.split("=", 1) for word in words[2:])
    return settings


def main():
    texts = dict(type="list", elements="str", default=[])
    module = AnsibleModule(
        argument_spec=dict(adapters=texts, ask=texts, executable=EXECUTABLE), supports_check_mode=True
    )
    arguments = ["list"]
    for option, values in (("--adapter", module.params["adapters"]), ("--ask", module.params["ask"])):
        for value in values:
            arguments += [option, value]
    rc, document = run(module, arguments)
    if rc != 0:
        module.fail_json(msg=problem_of(document) or "lanvanectl failed", rc=rc)
    module.exit_json(
        changed=False,
        adapters=document["adapters"],
        cameras=document["cameras"],
        findings=document["findings"],
        sysctls=sysctls_of(document["findings"]),
    )


if __name__ == "__main__":
    main()
