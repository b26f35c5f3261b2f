#!/usr/bin/python3
from __future__ import absolute_import, division, print_function

__metaclass__ = type

DOCUMENTATION = r"""
module: camera_plan
short_description: Gives the GigE Vision cameras behind a host the settings of a plan
description:
  - Checks a plan with C(lanvanectl plan check) and applies it with C(lanvanectl plan apply).
  - A camera that has its settings already is left alone. What a plan leaves out or empty stays as it is.
  - The plan is refused as a whole, and nothing is sent, when one of its cameras is missing, is in use or could not be
    reached afterwards.
  - Changes are written to the journal of the user that the task runs as; C(lanvanectl plan undo) of the same user takes
    them back.
author: Ostra Lanvane developers (!UNKNOWN)
options:
  plan:
    description:
      - The plan, as text in CSV with a line of column names, or as a list of dictionaries.
      - A dictionary has the key C(camera), which is a MAC address in any spelling, a serial number, an address or a
        user-defined name, and any of C(mode) (C(static), C(dhcp) or C(auto)), C(address), C(mask) (dotted, or the length
        of the prefix), C(gateway) (C(0.0.0.0) for none) and C(name).
      - Everything but a prefix must be text. YAML takes C(10:11:22:33:44:55) and C(0012) for numbers, so they are
        refused without quotes.
    type: raw
  src:
    description: Path of a plan on the host.
    type: path
  max_failures:
    description: So many failed cameras end the plan; what was written but not restarted gets its old settings back.
    type: int
    default: 3
  timeout:
    description: Seconds that a camera may take to come back.
    type: int
    default: 60
  rollback:
    description: A camera that does not come back as it should gets its old settings again.
    type: bool
    default: true
extends_documentation_fragment: lanvane.cameras.lanvanectl
attributes:
  check_mode:
    description: Searches, and says what would change.
    support: full
  diff_mode:
    description: Shows the settings of the cameras that change, before and after.
    support: full
seealso:
  - module: lanvane.cameras.camera_info
"""

EXAMPLES = r"""
- name: Two cameras
  lanvane.cameras.camera_plan:
    plan:
      - {camera: "02:5A:E3:01:00:01", mode: static, address: 192.168.10.20, mask: 24, name: Conveyor left}
      - {camera: "21000102", mode: dhcp}

- name: A plan for each host, beside the inventory
  lanvane.cameras.camera_plan:
    plan: "{{ lookup('ansible.builtin.file', 'plans/' + inventory_hostname + '.csv') }}"
    max_failures: 1

- name: A plan that lies on the host
  lanvane.cameras.camera_plan:
    src: /etc/lanvane/plan.csv
"""

RETURN = r"""
cameras:
  description: What became of each camera of the plan, in its order. Also when the module failed.
  returned: when the plan was checked
  type: list
  elements: dict
  contains:
    camera:
      description: MAC address.
      type: str
    state:
      description:
        - C(unchanged), C(would-change), C(done), C(failed), C(rolled-back), C(unconfirmed), C(not-begun) or C(refused).
      type: str
    changed:
      description: Whether the camera was changed, or would be.
      type: bool
    before:
      description: Mode, address, mask, gateway and name that it had.
      type: dict
    after:
      description: The same afterwards, or of a refused plan what it would be; null while unknown.
      type: dict
    error:
      description: Why it failed, or what is not known.
      type: str
    remark:
      description: What to know of a change that succeeded.
      type: str
    line:
      description: Its line in the plan; that of the column names is 1. An entry of a list has a line, too.
      type: int
problems:
  description: What is wrong with the plan.
  returned: when the plan was checked
  type: list
  elements: dict
id:
  description: Of the plan in the journal, for C(lanvanectl plan undo); null when nothing was written.
  returned: when the plan was checked
  type: str
"""

import csv
import io

from ansible.module_utils.basic import AnsibleModule
from ansible_collections.lanvane.cameras.plugins.module_utils.lanvanectl import EXECUTABLE, problem_of, run

COLUMNS = ["camera", "mode", "address", "mask", "gateway", "name"]
FINE = ("unchanged", "would-change", "done")
UNTOUCHED = ("unchanged", "not-begun", "refused")


def cell(column, value):
    if value is None:
        return ""
    if column == "mask" and type(value) is int:
        return str(value)
    if not isinstance(value, str):
        raise ValueError("%s is %r, which is no text: put it in quotes" % (column, value))
    return value


def row(number, entry):
    if not isinstance(entry, dict):
        raise ValueError("entry %d of the plan is no dictionary" % number)
    unknown = sorted(set(entry) - set(COLUMNS))
    if unknown:
        raise ValueError("entry %d of the plan has unknown keys: %s" % (number, ", ".join(map(str, unknown))))
    try:
        return [cell(column, entry.get(column)) for column in COLUMNS]
    except ValueError as error:
        raise ValueError("entry %d of the plan: %s" % (number, error))


def text_of(plan):
    """A plan as text."""
    if isinstance(plan, str):
        return plan
    if not isinstance(plan, list):
        raise ValueError("plan is neither text nor a list of dictionaries")
    text = io.StringIO()
    writer = csv.writer(text, quoting=csv.QUOTE_ALL, lineterminator="\n")
    writer.writerow(COLUMNS)
    writer.writerows(row(number, entry) for number, entry in enumerate(plan, 1))
    return text.getvalue()


def place(problem, is_list):
    if not problem["line"]:
        return ""
    if is_list:
        return "entry %d: " % (problem["line"] - 1)
    character = ", character %d" % problem["character"] if problem["character"] else ""
    return "line %d%s: " % (problem["line"], character)


def is_changed(change):
    """A camera that was rolled back was seen to be as it was before."""
    return change["state"] not in UNTOUCHED + ("rolled-back",) and change["changed"]


def failures(document, is_list):
    texts = [place(problem, is_list) + problem["text"] for problem in document["plan"]["problems"]]
    for change in document["changes"]:
        # Those of a plan that is refused as a whole have nothing to say.
        if change["state"] not in FINE and (change["error"] or not texts):
            texts.append("%s %s: %s" % (change["camera"], change["state"], change["error"] or "no reason is known"))
    return texts or [problem_of(document) or "lanvanectl failed"]


def difference(changes):
    shown = [change for change in changes if change["state"] not in UNTOUCHED]
    return dict(
        before=dict((change["camera"], change["before"]) for change in shown),
        after=dict((change["camera"], change["after"]) for change in shown),
    )


def arguments_of(module):
    params = module.params
    source = params["src"] or "-"
    if module.check_mode:
        return ["plan", "check", source]
    arguments = ["plan", "apply", source, "--yes", "--timeout", str(params["timeout"])]
    arguments += ["--max-failures", str(params["max_failures"])]
    return arguments if params["rollback"] else arguments + ["--no-rollback"]


def main():
    module = AnsibleModule(
        argument_spec=dict(
            plan=dict(type="raw"),
            src=dict(type="path"),
            max_failures=dict(type="int", default=3),
            timeout=dict(type="int", default=60),
            rollback=dict(type="bool", default=True),
            executable=EXECUTABLE,
        ),
        mutually_exclusive=[("plan", "src")],
        required_one_of=[("plan", "src")],
        supports_check_mode=True,
    )
    plan = module.params["plan"]
    try:
        text = "" if module.params["src"] else text_of(plan)
    except ValueError as error:
        module.fail_json(msg=str(error))
    rc, document = run(module, arguments_of(module), data=text)
    if not document.get("plan"):
        module.fail_json(msg=problem_of(document) or "This lanvanectl knows no plans.", rc=rc)
    changes = document["changes"]
    result = dict(
        changed=any(is_changed(change) for change in changes),
        cameras=changes,
        problems=document["plan"]["problems"],
        id=document["plan"]["id"],
        diff=difference(changes),
    )
    if rc not in (0, 11):
        module.fail_json(msg="; ".join(failures(document, isinstance(plan, list))), rc=rc, **result)
    module.exit_json(**result)


if __name__ == "__main__":
    main()
