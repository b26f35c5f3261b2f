#!/usr/bin/python3
"""Holds the JSON objects in files against a schema, with every key of it required.

Usage: validate.py [--lines] SCHEMA FILE...   (--lines: each line of a file is an event)
"""
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


lines = sys.argv[1] == "--lines"
schema_name, *names = sys.argv[2 if lines else 1:]
with open(schema_name, encoding="utf-8") as file:
    schema = closed(json.load(file))
if lines:
    schema = {"definitions": schema["definitions"], "$ref": "#/definitions/line"}
validator = jsonschema.Draft7Validator(schema)
for name in names:
    with open(name, encoding="utf-8") as file:
        for text in file if lines else [file.read()]:
            validator.validate(json.loads(text))
