"""Random ad configuration documents and customisations, sound ones and such with a few faults."""

import json
import re
from dataclasses import dataclass, field
from xml.etree import ElementTree
from xml.sax.saxutils import escape

NUMBERS = ("embed", "width", "height", "count", "delay")
FIELDS = ("adid", "enable", "version", *NUMBERS, "advance", "notes")
TEXTS = (*FIELDS, "promo_app_name", "appid")  # the elements that hold one text each
LANGUAGES = ("en", "de", "de-AT", "pt-BR", "zh-Hans", "zh", "ja")
APPS = ("com.example.editor", "com.example.viewer", "com.example.converter", "com.example.player")
BLANKS = " \t\r\n"

# Texts that are sound, and such that are not.
SOUND = {
    "enable": ("0", "1"),
    "version": ("1", "2.1", "1a4", "2.1a03", "1a", "1a 5 ", "1a-7", "beta".replace("a", ""), "1a999999999"),
    "embed": ("0", "1", "8", " 3\n", "+5", "007"),
    "delay": ("0", "10", "-0", " 4 ", "9223372036854775806"),
    "advance": ("{}", "{ }", '{"com.example.editor": {"embed": 3}}'),
    "notes": ("autumn", " ", "<b> & more"),
    "promo_app_name": ("Example Viewer", "Tool.Pro"),
    "appid": APPS,
}
SOUND_NUMBERS = ("1", "300", " 50 ", "+7", "0012", "9223372036854775806")
ODD = {
    "enable": ("no", "false", "OFF", "00", "-0", " 0 ", "yes", "2", " 1", "1\n", "on"),
    "version": ("1a2a3", "beta", "1ab", "1a2b", "1a2611011200", "1a-9999999999", "1a1234567890", "aa", "1a+",
                "1a0000000003", "a\n12 x"),
    "advance": ("[]", "3", "none", "{", '{"com.example.editor": 3}', '{"a\'b": {}}', '{"x": {"embed": "3"}}',
                '{"x": {"width": 0}}', '{"x": {"delay": 1.5}}', '{"x": {"version": "1a2a"}}',
                '{"x": {"y": 1, "y": 2}}', '{"Com.Example.Editor": {"count": 2}}', " "),
    "notes": (" \n ",),
    "promo_app_name": ("Viewer.app", "Viewer.AppDir", "viewer.desktop", " Viewer", "Viewer\n", " ", "a  b"),
    "appid": (" com.example.editor", "com.example.viewer\n", "com.o'neill", "com\\example", " ", "a b"),
}
ODD_NUMBERS = ("12px", "3.9", "abc", "-2", "0", "1,500", "- 1", "++1", "-", "9", "1 2", "12345678901234567890",
               "9223372036854775807", "-9223372036854775808", "1e3", "\u0661", " ")
PAGES = ('<a href="?zamopenout=1">x</a>', "<p>page</p> & <br>", " x ")
ODD_PAGES = ('<a href="/zamopenout=1">x</a>', '<a href="?tools=1">x</a>', '<a href="?zamopenout = 1">x</a>',
             '<i id="cocoa_close_web">x</i>', '<form action="?zamopenout=1"></form>', " \n ")
NEAR_NAMES = ("Push_ad", "push_ads", "Data", "Enable", "titles", "notess", "Appid", "widths", "promo_app_names",
              "file_versions")


@dataclass
class Node:
    name: str
    text: str = ""  # as it is written
    children: list = field(default_factory=list)
    attributes: str = ""

    def written(self):
        inside = self.text + "".join(child.written() for child in self.children)
        return f"<{self.name}{self.attributes}>{inside}</{self.name}>"

    def below(self):
        """The elements inside, each with its parent."""
        for child in self.children:
            yield self, child
            yield from child.below()


def sound_text(chance, name):
    return chance.choice(SOUND.get(name, SOUND_NUMBERS))


def languages(chance, texts):
    codes = chance.sample(LANGUAGES, chance.randrange(3)) + ["default"]
    chance.shuffle(codes)
    codes.sort(key=len, reverse=True)
    return [Node(code, escape(chance.choice(texts))) for code in codes]


def advertisement(chance, adid):
    fields = [Node(name, escape(sound_text(chance, name))) for name in FIELDS[1:]]
    names = [Node("promo_app_name", sound_text(chance, "promo_app_name")) for _ in range(chance.randrange(3))]
    children = [Node("adid", adid), *fields, Node("title", children=languages(chance, ("Hello", " & "))),
                Node("html_contents", children=languages(chance, PAGES)), *names]
    if chance.random() < 0.3:
        chance.shuffle(children)
    return Node("push_ad", children=children)


def sound_root(chance):
    adids = chance.sample(("1", "2", " 3", "+4", "0012", "12"), chance.randint(1, 3))
    apps = chance.sample(APPS, chance.randrange(4))
    lines = [Node("push_ad_config", children=[Node("appid", app), Node("adid", chance.choice(adids))])
             for app in apps]
    reached = {line.children[1].text for line in lines}
    ads = [advertisement(chance, adid) for adid in adids if adid in reached or adid == adids[0]]
    halves = [Node("data"), Node("data")] if chance.random() < 0.2 else [Node("data")]
    for child in [Node("file_version", "1"), *lines]:
        chance.choice(halves).children.append(child)
    children = halves + ads
    if chance.random() < 0.2:
        later = children.pop(0)
        children.insert(chance.randrange(len(children) + 1), later)
    return Node("rootcfg", children=children)


# The faults: each changes the tree in one place, if it finds a place.


def any_element(chance, root, condition=lambda node: True):
    found = [pair for pair in root.below() if condition(pair[1])]
    return chance.choice(found) if found else (None, None)


def remove(chance, root):
    parent, node = any_element(chance, root)
    if node:
        parent.children.remove(node)


def repeat(chance, root):
    parent, node = any_element(chance, root)
    if node:
        parent.children.insert(chance.randrange(len(parent.children) + 1), node)


def empty(chance, root):
    _, node = any_element(chance, root)
    if node:
        node.text, node.children = "", []


def make_odd(chance, root):
    _, node = any_element(chance, root, lambda node: node.name in ODD or node.name in (*NUMBERS, "adid"))
    if node:
        node.text = escape(chance.choice(ODD.get(node.name, ODD_NUMBERS)))


def make_sound(chance, root):
    """Another text that is sound for some elements, or for others."""
    _, node = any_element(chance, root, lambda node: node.text)
    if node:
        node.text = escape(sound_text(chance, chance.choice((node.name, *SOUND))))


def add_markup(chance, root):
    _, node = any_element(chance, root, lambda node: not node.children)
    if node:
        node.text = chance.choice(("<b>1</b>", f"{node.text}<br/>", f"<i/>{node.text}", "<b></b>"))


def add_element(chance, root):
    parents = [root, *(node for _, node in root.below() if node.children)]
    parent = chance.choice(parents)
    is_of_languages = parent.name in ("title", "html_contents")
    name = chance.choice(("fr", "default", "extra") if is_of_languages else
                         (*NEAR_NAMES, "extra", "offsetx", "appid", "push_ad", "title", "data", *FIELDS))
    parent.children.insert(chance.randrange(len(parent.children) + 1), Node(name, chance.choice(("1", "x", ""))))


def rename(chance, root):
    _, node = any_element(chance, root)
    if node:
        node.name = chance.choice((node.name.upper(), node.name + "s", "extra"))


def add_attribute(chance, root):
    chance.choice([root, *(node for _, node in root.below())]).attributes = ' id="1"'


def add_text(chance, root):
    node = chance.choice([root, *(node for _, node in root.below() if node.children)])
    node.text = chance.choice(("stray", "&#160;", "<![CDATA[x]]>", "\n  "))


def break_table(chance, root):
    _, line = any_element(chance, root, lambda node: node.name == "push_ad_config" and len(node.children) == 2)
    if line:
        line.children[chance.randrange(2)].text = chance.choice(("7", "com.example.editor", "012", " 12", "12"))


def change_language(chance, root):
    parents = [node for _, node in root.below() if node.name in ("title", "html_contents") and node.children]
    if not parents:
        return
    parent = chance.choice(parents)
    node = chance.choice(parent.children)
    change = chance.randrange(6)
    if change == 0:
        parent.children.append(Node(node.name, chance.choice(("later", "", " "))))
    elif change == 1:
        node.text = chance.choice((" ", "\n\t", "", "<br/>"))
    elif change == 2:
        node.name = chance.choice(("EN", "zh_Hans", "pt-br", "Default", "fil"))
    elif change == 3:
        parent.children = [Node("zh", "short"), *parent.children, Node("zh-Hans", "long")]
    elif change == 4:
        parent.children, parent.text = [], "only text"
    else:
        parent.children = [child for child in parent.children if child.name != "default"]


def change_page(chance, root):
    found = [page for _, node in root.below() if node.name == "html_contents" for page in node.children]
    if found:
        chance.choice(found).text = escape(chance.choice(ODD_PAGES))


def reorder(chance, root):
    chance.shuffle(chance.choice([root, *(node for _, node in root.below() if node.children)]).children)


def use_cdata(chance, root):
    _, node = any_element(chance, root, lambda node: node.text and "<" not in node.text and "&" not in node.text)
    if node:
        node.text = chance.choice((f"<![CDATA[{node.text}]]>", f"<!-- x -->{node.text}", f"{node.text}<?x y?>"))


def rename_root(chance, root):
    root.name = chance.choice(("Rootcfg", "ads", "rootcfgs"))


FAULTS = (remove, repeat, empty, make_odd, make_odd, make_odd, make_sound, add_markup, add_element, rename,
          add_attribute, add_text, break_table, change_language, change_language, change_page, reorder, use_cdata)


def document(chance):
    root = sound_root(chance)
    for _ in range(chance.choice((0, 1, 1, 1, 1, 2, 2, 3))):
        chance.choice(FAULTS)(chance, root)
    rare = chance.random()
    if rare < 0.01:
        rename_root(chance, root)
    elif rare < 0.02:
        return "<default>x</default>"
    elif rare < 0.03:
        root.children = [child for child in root.children if child.name != "push_ad"]
    text = chance.choice(("", '<?xml version="1.0"?>\n', "<!-- x -->\n")) + root.written()
    if 0.03 < rare < 0.05:
        text = text[:chance.randrange(len(text))] + chance.choice(("", "<", "&x;", "]]>"))
    return text + "\n"


def examples():
    """Documents with one fault each, so that no kind of fault is left to chance."""

    def sound():
        return parse_sound(with_customisation("{}"))

    yield from ("<rootcfg>", "<default>x</default>", "<rootcfg/>")
    yield "<rootcfg><data><file_version>1</file_version></data></rootcfg>"
    places = [place for place, _ in enumerate(sound().below())]
    for place in places:
        changes = [lambda parent, node: parent.children.remove(node),
                   lambda parent, node: parent.children.append(node),
                   lambda parent, node: (setattr(node, "text", ""), node.children.clear()),
                   lambda parent, node: setattr(node, "attributes", ' id="1"'),
                   lambda parent, node: setattr(node, "name", "en")]
        name = list(sound().below())[place][1].name
        texts = [escape(text) for text in ODD.get(name, ODD_NUMBERS if name in (*NUMBERS, "adid") else ())]
        if name in (*TEXTS, "file_version", "default"):
            texts += [" ", "<b>1</b>"]
        if name == "html_contents":
            texts += ["x", "<de><b>1</b></de>", "<de/>", "<de> </de>", "<de>1</de><de>2</de>", "<EN>x</EN>",
                      "<zh>1</zh><zh-Hans>2</zh-Hans>", "<default>2</default>"]
            texts += [f"<de>{escape(page)}</de>" for page in ODD_PAGES]
        if name == "push_ad":
            texts += [f"<{each}>1</{each}>" for each in (*NEAR_NAMES, "offsetx", "extra")] + ["x"]
            texts += [f"<promo_app_name>{escape(each)}</promo_app_name>" for each in (*ODD["promo_app_name"], "")]
        if name == "data":
            texts += ["<push_ad_config><appid>a</appid><adid>7</adid></push_ad_config>", "x"]
        changes += [lambda parent, node, text=text: setattr(node, "text", text) for text in texts]
        for change in changes:
            root = sound()
            parent, node = list(root.below())[place]
            change(parent, node)
            yield root.written()


def parse_sound(text):
    """The tree of a document in which each element has a text or children."""
    def node_of(element):
        return Node(element.tag, escape(element.text or ""), [node_of(child) for child in element])
    return node_of(ElementTree.fromstring(text))


# What only schemas refuse: in documents

PARTS = {
    "rootcfg": {"data": {"file_version": None, "push_ad_config": {"appid": None, "adid": None}},
                "push_ad": {**dict.fromkeys(FIELDS), "promo_app_name": None, "title": "languages",
                            "html_contents": "languages"}},
}
ONLY_SCHEMAS = {"element", "attribute", "text", "repeated", "enable", "version"}


def parsed(text):
    try:
        return ElementTree.fromstring(text)
    except ElementTree.ParseError:
        return None


def root_of(text):
    root = parsed(text)
    return "" if root is None else root.tag


def only_schemas_refuse(text, schema="rng"):
    """The kinds of things in the document that hosts do not mind, but schemas do."""
    root = parsed(text)
    if root is None or root.tag not in PARTS:
        return []
    found = kinds_in(root, PARTS[root.tag], schema)
    if sum(len(data.findall("file_version")) for data in root.findall("data")) > 1:
        found.add("repeated")
    for line in root.iterfind("data/push_ad_config"):
        if len(line.findall("appid")) > 1 or len(line.findall("adid")) > 1:
            found.add("repeated")
    for enable in root.iterfind("push_ad/enable"):
        if "".join(enable.itertext()) not in ("0", "1"):
            found.add("enable")
    for version in root.iterfind("push_ad/version"):
        if has_many_digits("".join(version.itertext())):
            found.add("version")
    return sorted(found)


def kinds_in(element, parts, schema):
    found = {"attribute"} if element.attrib else set()
    if parts is None:
        return found | ({"element"} if len(element) else set())
    between = [element.text, *(child.tail for child in element)]
    if any(text and text.strip(BLANKS) for text in between):
        found.add("text")
    for child in element:
        if parts == "languages":
            # XSD does not look into languages; markup there has a rule of its own.
            if child.attrib and (schema != "xsd" or child.tag == "default"):
                found.add("attribute")
        elif child.tag in parts:
            found |= kinds_in(child, parts[child.tag], schema)
        else:
            found.add("element")
    return found


def has_many_digits(version):
    return re.match(r"[^a]*a\s*[+-]?[0-9]{10,}", version) is not None


# Customisations

ONLY_JSON_SCHEMA = {"boolean", "huge", "version"}
MEMBERS = ("enable", "version", "embed", "width", "height", "offsetx", "offsety", "count", "delay", "notes")
VALUES = ("0", "1", "3", "8", "9", "-1", "0.5", "-0.5", "2.0", "1e2", "1.5e1", "true", "false", "null", '"1"', '""',
          '"1a2"', '"1a2a3"', '"beta"', '"1a12345678901"', '"1a1234567890"', '"1a "', '"\\u0031"', "[]", "{}",
          "12345678901234567890", "1e999", "-1e999")
HOSTS = ("com.example.editor", "Com.Example.Editor", "com.example.viewer", "a b", "", "com.o'neill", "com\\\\example")
NOT_OBJECTS = ("{", "[]", "[{}]", "3", '"x"', "null", "{} {}", '{"x": tru}', "{'x': {}}", '{"x": {},}', " {} ",
                   '{"x": {"embed": 01}}', '{"x": NaN}')


def customisation_examples():
    """Each value for each member, and what else may be wrong."""
    yield from NOT_OBJECTS
    for host in HOSTS:
        yield f'{{"{host}": {{}}}}'
    for name in (*MEMBERS, "offset", "Enable"):
        for value in VALUES:
            yield f'{{"com.example.editor": {{"{name}": {value}}}}}'
    yield '{"com.example.editor": {"embed": 1, "embed": 2}}'
    yield '{"com.example.editor": 1}'


def customisation(chance):
    if chance.random() < 0.05:
        return chance.choice(NOT_OBJECTS)
    hosts = []
    for _ in range(chance.choice((0, 1, 1, 2))):
        members = []
        for _ in range(chance.choice((0, 1, 1, 1, 2, 3))):
            name = chance.choice((*MEMBERS, *MEMBERS, "offset", "Enable"))
            value = sound_value(chance, name) if chance.random() < 0.6 else chance.choice(VALUES)
            members.append(f'"{name}": {value}')
        entry = chance.choice(("[]", "1", "null")) if chance.random() < 0.04 else "{" + ", ".join(members) + "}"
        host = chance.choice(HOSTS if chance.random() < 0.3 else HOSTS[:1])
        hosts.append(f'"{host}":{entry}')
    return "{" + ",\n".join(hosts) + "}"


def sound_value(chance, name):
    if name in ("version", "notes"):
        return chance.choice(('"1"', '"2.1a4"'))
    return chance.choice(("1", "3", "2.0"))


def with_customisation(text):
    """A sound document whose second advertisement has the customisation."""
    chosen = Node("push_ad_config", children=[Node("appid", "com.example.editor"), Node("adid", "2")])
    fixed = [("enable", "1"), ("version", "1"), ("embed", "1"), ("width", "300"), ("height", "50"), ("count", "1"),
             ("delay", "0")]

    def ad(adid, advance):
        return Node("push_ad", children=[
            Node("adid", adid), *(Node(*each) for each in fixed), Node("advance", advance), Node("notes", "n"),
            Node("title", children=[Node("default", "t")]), Node("html_contents", children=[Node("default", "p")])])

    data = Node("data", children=[Node("file_version", "1"), chosen])
    return Node("rootcfg", children=[data, ad("1", "{}"), ad("2", escape(text))]).written()


def json_value(text):
    """The value of a JSON text; a ValueError for any other text."""
    def refuse(constant):
        raise ValueError(constant)
    return json.loads(text, parse_constant=refuse)


def only_json_schema_refuses(text, _schema=None):
    """The kinds of things in the customisation that hosts do not mind, but the schema does."""
    try:
        hosts = json_value(text)
    except ValueError:
        return []
    found = set()
    for entry in hosts.values() if isinstance(hosts, dict) else ():
        for name, value in entry.items() if isinstance(entry, dict) else ():
            if isinstance(value, bool) and name != "enable":
                found.add("boolean")
            if isinstance(value, float) and value in (float("inf"), float("-inf")):
                found.add("huge")
            if name == "version" and isinstance(value, str) and has_many_digits(value):
                found.add("version")
    return sorted(found)
