"""Runs lanvanectl on the host and reads what it prints."""
from __future__ import absolute_import, division, print_function

__metaclass__ = type

import json

FORMAT = 1
EXECUTABLE = dict(type="str", default="lanvanectl")


def run(module, arguments, data=None):
    """Ends the module when no answer came, else gives the exit code and the object that lanvanectl printed."""
    program = module.get_bin_path(module.params["executable"], required=True)
    rc, out, err = module.run_command([program] + arguments + ["--json"], data=data, binary_data=True)
    try:
        document = json.loads(out)
        answered = document["format"]
    except (ValueError, KeyError, TypeError):
        module.fail_json(msg="%s printed no JSON object: %s" % (program, err.strip() or out.strip() or "nothing"), rc=rc)
    if answered != FORMAT:
        module.fail_json(msg="%s prints format %s; this collection reads format %d" % (program, answered, FORMAT), rc=rc)
    return rc, document


def problem_of(document):
    """Why the command as a whole was not carried out; empty when it was."""
    return document["error"]["text"] if document.get("error") else ""
