#!/usr/bin/python3
"""What the Ansible modules hand to lanvanectl and make of its answer. Usage: module_tests.py COLLECTION"""
import json
import os
import pathlib
import subprocess
import sys
import tempfile

FAKE = """#!/bin/sh
echo "$*" >>"$0.arguments"
cat >"$0.plan"
cat "$0.answer"
exit $(cat "$0.status")
"""
HEADER = '"camera","mode","address","mask","gateway","name"\n'
OLD = {"mode": "dhcp", "address": None, "mask": None, "gateway": None, "name": "a"}
NEW = {"mode": "static", "address": "10.0.0.2", "mask": "255.0.0.0", "gateway": None, "name": "a"}


def change(state, changed, error=None, after=NEW):
    return {"camera": "02:00:00:00:00:01", "line": 2, "state": state, "changed": changed, "error": error, "remark": None,
            "before": OLD, "after": after}


def answer(*changes, problems=(), error=None):
    plan = {"id": None, "file": "-", "problems": list(problems)}
    return {"format": 1, "changes": list(changes), "plan": plan, "error": error and {"code": 4, "text": error}}


def problem(line, character):
    return {"file": "-", "line": line, "character": character, "text": "No such camera."}


DONE = answer(change("done", True))
# parameters, exit code, answer, expected part of the result
PLANS = [
    ({"plan": "camera\n1\n"}, 0, DONE, {"changed": True, "diff": {"before": {"02:00:00:00:00:01": OLD},
                                                                   "after": {"02:00:00:00:00:01": NEW}}}),
    ({"plan": "camera\n1\n"}, 0, answer(change("unchanged", False)), {"changed": False, "diff": {"before": {}, "after": {}}}),
    ({"plan": "camera\n1\n", "_ansible_check_mode": True}, 11, answer(change("would-change", True)), {"changed": True}),
    ({"plan": "camera\n1\n"}, 6, answer(change("done", True), change("failed", False, "Held.")),
     {"changed": True, "failed": True, "msg": "02:00:00:00:00:01 failed: Held."}),
    ({"plan": "camera\n1\n"}, 1, answer(change("rolled-back", True, "It did not come back.", OLD)),
     {"changed": False, "failed": True, "msg": "02:00:00:00:00:01 rolled-back: It did not come back."}),
    ({"plan": "camera\n1\n"}, 5, answer(change("unconfirmed", True, after=None)),
     {"changed": True, "failed": True, "msg": "02:00:00:00:00:01 unconfirmed: no reason is known"}),
    ({"plan": "camera\n1\n"}, 4, answer(change("refused", False), problems=[problem(2, 3), problem(None, None)]),
     {"failed": True, "msg": "line 2, character 3: No such camera.; No such camera.", "diff": {"before": {}, "after": {}}}),
    ({"plan": [{"camera": "1"}]}, 4, answer(problems=[problem(2, 1)]), {"failed": True, "msg": "entry 1: No such camera."}),
    ({"plan": "camera\n1\n"}, 130, answer(error="Interrupted."), {"failed": True, "msg": "Interrupted."}),
    ({"plan": "camera\n1\n"}, 2, {"format": 1, "changes": [], "error": {"code": 2, "text": "plan?"}},
     {"failed": True, "msg": "plan?"}),
    ({"plan": "camera\n1\n"}, 0, {"format": 2}, {"failed": True}),
    ({"plan": "camera\n1\n"}, 0, "killed", {"failed": True}),
    ({"plan": [{"camera": 12}]}, 0, DONE, {"failed": True, "msg": "entry 1 of the plan: camera is 12, which is no text: put it in quotes"}),
    ({"plan": [{"camera": "1", "adress": "1"}]}, 0, DONE, {"failed": True, "msg": "entry 1 of the plan has unknown keys: adress"}),
    ({"plan": 5}, 0, DONE, {"failed": True}),
    ({"plan": "camera\n1\n", "src": "/plan"}, 0, DONE, {"failed": True}),
]
FILTER = {"code": "filter-on", "remedies": ["sudo sysctl -w a.b=0 'c/d.e=1 2'", "printf '%s\\n' 'a.b = 0' | sudo tee -a f"]}
INFOS = [
    ({"adapters": ["nic0"]}, 0, {"format": 1, "adapters": [], "cameras": [], "findings": [FILTER], "error": None},
     {"changed": False, "sysctls": {"a.b": "0", "c/d.e": "1 2"}}),
    ({}, 1, {"format": 1, "adapters": [], "cameras": [], "findings": [], "error": {"code": 1, "text": "No socket."}},
     {"failed": True, "msg": "No socket."}),
]
# parameters, arguments of lanvanectl, its input
CALLS = [
    ({"plan": [{"camera": "1", "mode": "STATIC", "mask": 20, "name": 'a "b", c'}, {"camera": "#2", "gateway": None}]},
     "plan apply - --yes --timeout 60 --max-failures 3 --json",
     HEADER + '"1","STATIC","","20","","a ""b"", c"\n"#2","","","","",""\n'),
    ({"plan": "camera\n\u00e4\n", "timeout": 5, "max_failures": 0, "rollback": False},
     "plan apply - --yes --timeout 5 --max-failures 0 --no-rollback --json", "camera\n\u00e4\n"),
    ({"src": "/plan", "_ansible_check_mode": True}, "plan check /plan --json", ""),
]


def run(folder, module, parameters, status, document):
    fake = folder / "fake"
    fake.write_text(FAKE, encoding="utf-8")
    fake.chmod(0o755)
    (folder / "fake.status").write_text(str(status), encoding="utf-8")
    (folder / "fake.answer").write_text(json.dumps(document), encoding="utf-8")
    arguments = {"ANSIBLE_MODULE_ARGS": dict(parameters, executable=str(fake))}
    path = folder / "ansible_collections/lanvane/cameras/plugins/modules" / (module + ".py")
    ended = subprocess.run(["/usr/bin/python3", path], input=json.dumps(arguments), capture_output=True, text=True,
                           check=False, env=dict(os.environ, PYTHONPATH=str(folder), PYTHONDONTWRITEBYTECODE="1"))
    return json.loads(ended.stdout) if ended.stdout else {"crashed": ended.stderr}


def faults(folder):
    for module, rows in (("camera_plan", PLANS), ("camera_info", INFOS)):
        for parameters, status, document, expected in rows:
            result = run(folder, module, parameters, status, document)
            if "crashed" in result or {key: result.get(key) for key in expected} != expected:
                yield f"{module} {parameters}: {result}"
    for parameters, arguments, plan in CALLS:
        (folder / "fake.arguments").unlink(missing_ok=True)
        run(folder, "camera_plan", parameters, 0, DONE)
        found = (folder / "fake.arguments").read_text(encoding="utf-8"), (folder / "fake.plan").read_text(encoding="utf-8")
        if found != (arguments + "\n", plan):
            yield f"{parameters} ran {found}"


with tempfile.TemporaryDirectory() as name:
    pathlib.Path(name, "ansible_collections/lanvane").mkdir(parents=True)
    pathlib.Path(name, "ansible_collections/lanvane/cameras").symlink_to(pathlib.Path(sys.argv[1]).resolve())
    found_faults = list(faults(pathlib.Path(name)))
print("\n".join(found_faults))
sys.exit(1 if found_faults else 0)
