#!/usr/bin/env python3
"""The schemas in docs/schema say what the library and qorix-adcheck say. usage: schema_test.py ROOT VERDICTS [SEED]

VERDICTS prints what the library makes of documents. Each schema is held against it on the documents of the
repository and on random ones, in both directions; what a schema cannot say is read from docs/schema/README.md.
"""

import json
import random
import re
import subprocess
import sys
import tempfile
import unittest
import warnings
from pathlib import Path
from xml.etree import ElementTree

import jsonschema

import random_documents

ROOT, VERDICTS = Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve()
SEED = int(sys.argv[3]) if len(sys.argv) > 3 else 1
del sys.argv[1:]
SCHEMAS = ROOT / "docs/schema"
README = (SCHEMAS / "README.md").read_text()
RANDOM_DOCUMENTS = 2500
RANDOM_CUSTOMISATIONS = 2500

# Which findings of a rule that a schema says "partly" it does not say, by the finding's words.
NOT_SAID = {
    "language-repeated": r'(?!"default")',
    "language-empty": r'(?!"default")',
    "language-blank": r'(?!"default")',
    "text-markup": r"markup inside (?!default )(?!(%s) )" % "|".join(random_documents.TEXTS),
    "number-partly-read": r'adid is "[ \n]*\+?0*[1-9]\d{18,}[ \n]*"',
    "refused-94": r"the root is default",
}


class Table:
    """What the schemas cannot say, as the guide tells it."""

    def __init__(self):
        self.cells = {}  # by rule, for each schema
        for rules, relax_ng, xsd in re.findall(r"^\| (`.*`) \| (\w+) \| (\w+) \|", README, re.MULTILINE):
            self.add(rules, {"rng": relax_ng, "xsd": xsd})
        for rules, cell in re.findall(r"^\| (`.*`) \| (no) \| [^|]*\|$", README, re.MULTILINE):
            self.add(rules, {"json": cell})

    def add(self, rules, cells):
        for rule in re.findall("`([^`]+)`", rules):
            self.cells.setdefault(rule, {}).update(cells)

    def cell(self, schema, rule):
        """Whether the schema says it: "yes", "no" or "partly"."""
        for known in (rule, rule.split("-")[0] + "-…"):
            cell = self.cells.get(known, {}).get(schema)
            if cell:
                return cell
        return "yes"

    def may_pass(self, schema, rule, words):
        """Whether a document with this finding may be valid."""
        cell = self.cell(schema, rule)
        return cell == "no" or cell == "partly" and re.match(NOT_SAID[rule], words)


TABLE = Table()
RULES = subprocess.run([VERDICTS, "--rules"], check=True, capture_output=True, text=True).stdout.split()
IN_JSON = {rule for rule in RULES if rule.startswith("customisation-")}


def verdicts_on(documents):
    """For each document what is found in it: pairs of a rule and words."""
    text = "".join(document + "\0" for document in documents)
    lines = subprocess.run([VERDICTS], input=text, check=True, capture_output=True, text=True).stdout
    for document, line in zip(documents, lines.splitlines(), strict=True):
        verdict = json.loads(line)
        refused_words = "the root is " + random_documents.root_of(document)
        yield [(rule, refused_words) for rule in verdict["refusals"]] + [tuple(w) for w in verdict["warnings"]]


def accepted(schema, documents, folder):
    """For each document whether xmllint finds it valid."""
    names = [f"{index}.xml" for index in range(len(documents))]
    for name, document in zip(names, documents):
        (folder / name).write_text(document)
    option = {"rng": "--relaxng", "xsd": "--schema"}[schema]
    result = subprocess.run(["xmllint", "--noout", option, SCHEMAS / f"ad-document.{schema}", *names],
                            cwd=folder, capture_output=True, text=True)
    valid = set(re.findall(r"^(\d+\.xml) validates$", result.stderr, re.MULTILINE))
    return [name in valid for name in names]


def documents_of_the_repository():
    for path in sorted(ROOT.rglob("*.xml")):
        if not path.relative_to(ROOT).parts[0].startswith(("build", ".")) and "<rootcfg" in path.read_text():
            yield path.read_text()
    for path in sorted((ROOT / "docs").rglob("*.md")):
        yield from re.findall(r"^```xml[^\n]*\n((?:<\?.*?\?>\n)?<rootcfg>.*?)^```", path.read_text(),
                              re.MULTILINE | re.DOTALL)


class Agreement(unittest.TestCase):
    """What a schema says and what is found, for each document."""

    def hold(self, schema, documents, findings, valid, only_schema_refuses):
        """Checks both directions; returns the rules seen in valid and in all documents."""
        passed, seen = set(), set()
        for document, found, is_valid in zip(documents, findings, valid, strict=True):
            rules = {rule for rule, _ in found}
            seen |= rules
            if is_valid:
                passed |= rules
                missed = [each for each in found if not TABLE.may_pass(schema, *each)]
                self.assertEqual(missed, [], f"{schema}, seed {SEED}: valid is\n{document}")
                self.assertEqual(only_schema_refuses(document, schema), [],
                                 f"{schema}, seed {SEED}: valid is\n{document}")
            else:
                said = [rule for rule in rules if TABLE.cell(schema, rule) != "no"]
                self.assertTrue(said or only_schema_refuses(document, schema),
                                f"{schema}, seed {SEED}: found are {found}, but not valid is\n{document}")
        return passed, seen


class Documents(Agreement):
    @classmethod
    def setUpClass(cls):
        chance = random.Random(SEED)
        cls.documents = list(random_documents.examples())
        cls.documents += [random_documents.document(chance) for _ in range(RANDOM_DOCUMENTS)]
        cls.findings = list(verdicts_on(cls.documents))
        with tempfile.TemporaryDirectory() as folder:
            cls.valid = {schema: accepted(schema, cls.documents, Path(folder)) for schema in ("rng", "xsd")}
        share = {schema: sum(valid) for schema, valid in cls.valid.items()}
        print(f"seed {SEED}: of {len(cls.documents)} documents are valid {share}", file=sys.stderr)

    def test_those_of_the_repository_are_valid(self):
        documents = list(documents_of_the_repository())
        self.assertGreaterEqual(len(documents), 4)
        self.assertEqual(list(verdicts_on(documents)), [[]] * len(documents))
        with tempfile.TemporaryDirectory() as folder:
            for schema in ("rng", "xsd"):
                self.assertEqual(accepted(schema, documents, Path(folder)), [True] * len(documents))

    def test_random_ones(self):
        for schema in ("rng", "xsd"):
            with self.subTest(schema):
                passed, seen = self.hold(schema, self.documents, self.findings, self.valid[schema],
                                         random_documents.only_schemas_refuse)
                self.every_row_is_true(schema, passed, seen)

    def every_row_is_true(self, schema, passed, seen):
        """Each rule was seen, and what cannot be said passed at least once."""
        expected = {rule for rule in RULES if not rule.startswith(("customisation-", "page-"))}
        self.assertEqual(expected - seen, set(), f"seed {SEED}")
        for rule, cells in TABLE.cells.items():
            if cells.get(schema) in ("no", "partly"):
                pattern = rule.replace("…", ".*")
                self.assertTrue(any(re.fullmatch(pattern, each) for each in passed), (schema, rule, SEED))

    def test_both_schemas_agree(self):
        """What one accepts and the other does not is for something that only the other says."""
        for document, found, rng, xsd in zip(self.documents, self.findings, self.valid["rng"], self.valid["xsd"]):
            if rng != xsd:
                accepting, refusing = ("rng", "xsd") if rng else ("xsd", "rng")
                reasons = [rule for rule, words in found
                           if TABLE.may_pass(accepting, rule, words) and TABLE.cell(refusing, rule) != "no"]
                self.assertTrue(reasons or random_documents.only_schemas_refuse(document, refusing),
                                f"seed {SEED}: only {accepting} accepts\n{document}")

    def test_each_thing_that_only_schemas_refuse_occurs(self):
        alone = {kind for document, found in zip(self.documents, self.findings) if not found
                 for kind in random_documents.only_schemas_refuse(document)}
        self.assertEqual(alone, random_documents.ONLY_SCHEMAS)

    def test_both_forms_of_relax_ng_are_the_same(self):
        made = subprocess.run(["rnc2rng", SCHEMAS / "ad-document.rnc"], check=True, capture_output=True, text=True)
        self.assertEqual(made.stdout.strip(), (SCHEMAS / "ad-document.rng").read_text().strip())


class Customisations(Agreement):
    @classmethod
    def setUpClass(cls):
        cls.schema = json.loads((SCHEMAS / "customisation.schema.json").read_text())
        jsonschema.Draft7Validator.check_schema(cls.schema)
        cls.validator = jsonschema.Draft7Validator(cls.schema)

    def accepts(self, text):
        try:
            return self.validator.is_valid(random_documents.json_value(text))
        except ValueError:
            return False

    def findings_in(self, texts):
        documents = [random_documents.with_customisation(text) for text in texts]
        for found in verdicts_on(documents):
            self.assertNotIn("refused-91", [rule for rule, _ in found])
            yield [(rule, words) for rule, words in found if rule.startswith("customisation-")]

    def test_those_of_the_repository_are_valid(self):
        texts = [advance.text for document in documents_of_the_repository()
                 for advance in ElementTree.fromstring(document.encode()).iter("advance")]
        texts += re.findall(r"^```json\n(.*?)^```", (ROOT / "docs/ad-authors.md").read_text(),
                            re.MULTILINE | re.DOTALL)
        self.assertGreaterEqual(len(texts), 6)
        self.assertEqual([text for text in texts if not self.accepts(text)], [])

    def test_random_ones(self):
        chance = random.Random(SEED)
        texts = list(random_documents.customisation_examples())
        texts += [random_documents.customisation(chance) for _ in range(RANDOM_CUSTOMISATIONS)]
        valid = [self.accepts(text) for text in texts]
        print(f"seed {SEED}: of {len(texts)} customisations are valid {sum(valid)}", file=sys.stderr)
        findings = list(self.findings_in(texts))
        passed, seen = self.hold("json", texts, findings, valid, random_documents.only_json_schema_refuses)
        self.assertEqual(IN_JSON - seen, set())
        unsaid = {rule for rule, cells in TABLE.cells.items() if cells.get("json") == "no"}
        self.assertEqual(unsaid & passed, unsaid)
        alone = {kind for text, found in zip(texts, findings) if not found
                 for kind in random_documents.only_json_schema_refuses(text)}
        self.assertEqual(alone, random_documents.ONLY_JSON_SCHEMA)


class Guide(unittest.TestCase):
    def test_its_blocks_work(self):
        blocks = dict(re.findall(r"^```(\w+ ?\w*)\n(.*?)^```", README, re.MULTILINE | re.DOTALL))
        self.assertEqual(list(json.loads(blocks["json settings"])), ["xml.fileAssociations", "json.schemas"])
        document = random_documents.with_customisation("{}").partition("<rootcfg>")[2]
        documents = [blocks["xml model"] + "<rootcfg>" + document, blocks["xml location"] + document]
        self.assertEqual(list(verdicts_on(documents)), [[], []])
        for command, said in re.findall(r"^\$ (.*)\n(.*)", blocks["console"], re.MULTILINE):
            words = command.replace("docs/schema", str(SCHEMAS)).replace("commonad.xml", "minimal.xml").split()
            result = subprocess.run(words, cwd=ROOT / "examples/documents", capture_output=True, text=True)
            self.assertEqual(result.stderr.strip(), said.replace("commonad.xml", "minimal.xml"))
        with tempfile.TemporaryDirectory() as folder:
            for schema in ("rng", "xsd"):
                self.assertEqual(accepted(schema, documents, Path(folder)), [True, True])


if __name__ == "__main__":
    warnings.simplefilter("ignore", DeprecationWarning)
    unittest.main()
