"""What all modules document that run lanvanectl."""
from __future__ import absolute_import, division, print_function

__metaclass__ = type


class ModuleDocFragment(object):
    DOCUMENTATION = r"""
options:
  executable:
    description: The C(lanvanectl) to run, where it is not in the path.
    type: str
    default: lanvanectl
requirements:
  - the package C(lanvane-cli) on the host
"""
