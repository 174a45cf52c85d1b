#!/usr/bin/env python3
"""The reports of qorix-adcheck --format sarif keep to SARIF 2.1.0. usage: sarif_test.py QORIX_ADCHECK DOCUMENT...

Debian has no schema of SARIF. The names of each object's properties, and which are required, come from
python3-sarif-python-om, which is generated from that schema. The types of the properties and the rules
are written down below.
"""

import json
import re
import subprocess
import sys
import unittest

import attr
import sarif_om

ADCHECK, *DOCUMENTS = sys.argv[1:]
del sys.argv[1:]

BROKEN = """<rootcfg><data><file_version>1</file_version>
<push_ad_config><appid>com.example.a b</appid><adid>3</adid></push_ad_config>
<push_ad_config><appid>com.example.b</appid></push_ad_config></data>
<push_ad><adid>0</adid><enable>no</enable><version>1</version></push_ad></rootcfg>"""

WARNED = """<rootcfg><data><file_version>1</file_version></data><push_ad><adid>0</adid><enable>no</enable>
<version>1</version><embed>9</embed><width>0</width><height>1px</height><count>0</count><delay>0</delay>
<advance>{"a": 1}</advance><notes>n</notes><title><en>t</en></title>
<html_contents><default>&lt;a href="?ls = 1">x&lt;/a></default></html_contents></push_ad></rootcfg>"""


def is_text(value):
    return isinstance(value, str) and value != ""


def is_one_of(*names):
    return lambda value: value in names


def is_whole(least):
    return lambda value: isinstance(value, int) and not isinstance(value, bool) and value >= least


def is_uri(value):
    """A URI reference: only its characters, and percent signs only before two digits."""
    return is_text(value) and re.fullmatch(r"(?:[A-Za-z0-9._~:/?#@!$&'()*+,;=\[\]-]|%[0-9A-F]{2})+", value)


# The properties that are used: the class of an object, [class] for an array of them, or a condition.
TYPES = {
    "SarifLog": {"$schema": is_uri, "version": is_one_of("2.1.0"), "runs": ["Run"]},
    "Run": {
        "tool": "Tool",
        "invocations": ["Invocation"],
        "columnKind": is_one_of("utf16CodeUnits", "unicodeCodePoints"),
        "newlineSequences": lambda value: value and len(set(value)) == len(value) and all(map(is_text, value)),
        "artifacts": ["Artifact"],
        "results": ["Result"],
    },
    "Tool": {"driver": "ToolComponent"},
    "ToolComponent": {"name": is_text, "version": is_text, "rules": ["ReportingDescriptor"]},
    "ReportingDescriptor": {
        "id": is_text,
        "name": lambda value: re.fullmatch("([A-Z][a-z0-9_]*)+", value),
        "shortDescription": "MultiformatMessageString",
        "help": "MultiformatMessageString",
        "defaultConfiguration": "ReportingConfiguration",
    },
    "MultiformatMessageString": {"text": lambda value: is_text(value) and value.endswith(".")},
    "ReportingConfiguration": {"level": is_one_of("none", "note", "warning", "error")},
    "Invocation": {"executionSuccessful": lambda value: isinstance(value, bool), "exitCode": is_whole(0)},
    "Artifact": {
        "location": "ArtifactLocation",
        "description": "Message",
        "roles": lambda value: value == ["analysisTarget"],
        "encoding": is_text,
        "sourceLanguage": is_text,
    },
    "ArtifactLocation": {"uri": is_uri, "index": is_whole(0)},
    "Result": {
        "ruleId": is_text,
        "ruleIndex": is_whole(0),
        "level": is_one_of("none", "note", "warning", "error"),
        "message": "Message",
        "locations": ["Location"],
    },
    "Message": {"text": is_text},
    "Location": {"physicalLocation": "PhysicalLocation"},
    "PhysicalLocation": {"artifactLocation": "ArtifactLocation", "region": "Region"},
    "Region": {"startLine": is_whole(1), "startColumn": is_whole(1)},
}


def properties_of(kind):
    """Whether each property that the standard gives an object of this class is required."""
    fields = getattr(sarif_om, kind).__attrs_attrs__
    return {field.metadata["schema_property_name"]: field.default is attr.NOTHING for field in fields}


def faults_of(value, kind, path):
    if not isinstance(value, dict):
        yield f"{path} is no object"
        return
    known = properties_of(kind)
    for name, required in known.items():
        if required and name not in value:
            yield f"{path} has no {name}"
    for name, each in value.items():
        if name not in known or name not in TYPES[kind]:
            yield f"{path} has {name}"
            continue
        wanted, place = TYPES[kind][name], f"{path}.{name}"
        if isinstance(wanted, list):
            if not isinstance(each, list):
                yield f"{place} is no array"
                continue
            for index, element in enumerate(each):
                yield from faults_of(element, wanted[0], f"{place}[{index}]")
        elif isinstance(wanted, str):
            yield from faults_of(each, wanted, place)
        elif not wanted(each):
            yield f"{place} is {each!r}"


class Sarif(unittest.TestCase):
    def log(self, *arguments, document=None):
        result = subprocess.run([ADCHECK, "--format", "sarif", *arguments], input=document,
                                capture_output=True, text=True)
        self.assertEqual(result.stderr, "")
        self.status = result.returncode
        return json.loads(result.stdout)

    def logs(self):
        for hosts in ([], ["--all-hosts"]):
            for document in DOCUMENTS:
                yield self.log(*hosts, document)
            for document in (BROKEN, WARNED, "<r>"):
                yield self.log(*hosts, "-", document=document)

    def test_every_object_is_one_of_the_standard(self):
        for log in self.logs():
            self.assertEqual(list(faults_of(log, "SarifLog", "log")), [])

    def test_there_are_results_to_look_at(self):
        found = {result["level"] for log in self.logs() for result in log["runs"][0]["results"]}
        self.assertEqual(found, {"error", "warning"})

    def test_no_two_rules_have_the_same_id_or_name(self):
        rules = self.log(DOCUMENTS[0])["runs"][0]["tool"]["driver"]["rules"]
        for name in ("id", "name"):
            self.assertEqual(len({rule[name] for rule in rules}), len(rules))

    def test_an_artifact_is_told_by_address_or_index(self):
        for log in self.logs():
            run = log["runs"][0]
            for result in run["results"]:
                location = result["locations"][0]["physicalLocation"]["artifactLocation"]
                self.assertEqual(run["artifacts"][location["index"]].get("location", {}).get("uri"),
                                 location.get("uri"))

    def test_the_exit_status_is_told(self):
        for document, status in ((WARNED, 3), (BROKEN, 1)):
            log = self.log("--strict", "-", document=document)
            self.assertEqual((log["runs"][0]["invocations"][0]["exitCode"], self.status), (status, status))


if __name__ == "__main__":
    unittest.main()
