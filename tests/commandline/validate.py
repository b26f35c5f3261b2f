#!/usr/bin/python3
"""Holds the JSON objects in files against a schema, with every key of it required. Usage: validate.py SCHEMA FILE..."""
import json
import sys

import jsonschema


def closed(schema):
    """The schema with no other keys than those it names, so that an undocumented key is found."""
    if isinstance(schema, dict):
        schema = {key: closed(value) for key, value in schema.items()}
        if "properties" in schema:
            schema.setdefault("additionalProperties", False)
    elif isinstance(schema, list):
        schema = [closed(value) for value in schema]
    return schema


with open(sys.argv[1], encoding="utf-8") as file:
    validator = jsonschema.Draft7Validator(closed(json.load(file)))
for name in sys.argv[2:]:
    with open(name, encoding="utf-8") as file:
        validator.validate(json.load(file))
