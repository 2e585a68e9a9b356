"""The interface as a model: every function, record and callback with its documentation, resolved from the headers.

A comment may lean on another one: on the function that it names ("as mub_hash_clone", "the same …"), on the listings of
its header ("Parameters, where a function does not say otherwise:"), or on the function of the same operation in the
module that its own is a variant of (mub_hash_insert for mub_hashd_insert). Here all that is put in.

    model = load(root)                  # model.functions["mub_hash_insert"].parameters[0].doc …
    model.faults                        # what the comments leave untold, one line each
"""

import re
from functools import cached_property
from pathlib import Path
from typing import NamedTuple

import headers

# Modules whose functions are documented by those of another one, where they say less.
VARIANT_OF = {
    "arrayd": "array", "arrayx": "arrayd", "hashd": "hash", "hashx": "hash", "hasht": "hash",
    "btreed": "btree", "btreex": "btreed", "lists": "list", "listx": "lists",
    "wchar": "string", "stringx": "string", "bitree": "tree",
}
# Prefixes of names that have no module of their own.
PART_OF = {"malloc": "mem", "free": "mem", "str": "mem"}

REFERENCES = [
    re.compile(r"^(?:sorted: )?as (mub_\w+)"),
    re.compile(r"[,;:] (?:and |otherwise )?as (mub_\w+)"),
    re.compile(r"\bthe same as (mub_\w+)"),
    re.compile(r"^(mub_\w+) (?:with|from|for)\b"),
    re.compile(r"\b(?:read )?as (mub_\w+) (?:does|reads)\b"),
]
NOTHING_KEPT = "Nothing is handed over."
SORTED = "Sorted use: the array is in the order that its `descending` field names."
# A comment that is a noun phrase tells its result: "the index of …", "whether …", "1 when …".
RESULT_PHRASE = re.compile(r"(the(?! same)|whether|1 when|bytes that)\b")
FAILURE = re.compile(
    r"(?:^|[;,:] (?:and |else )?)(?:also )?(0\.0|0|NULL|-1|empty)"
    r"(?= (?:when|unless|for|at|in|outside|behind|before|without|but for)\b|, [^;]*?\b(?:when|unless|for)\b)"
    r"(.*?)(?=[;,] (?:0\.0|0|NULL|-1|1|empty)\b(?! to)|\.?$)")
OR_VALUE = re.compile(r", or (0\.0|0|NULL|-1)(?=[,.;]|$)(, also [^.;]*)?")
MEMORY = re.compile(r"\b[Mm]emory\b|\b(?:can|could)(?:not)? be (?:allocated|had)\b")
REFUSAL = re.compile(
    r"[Dd](?:oes|o|oing) nothing|(?:changes?|adds?|appends|finds) nothing|[Nn]othing (?:happens(?! with)|changes|is changed|is appended)"
    r"|refused|left (?:alone|as it is)|stays? (?:empty|unchanged|as it was)|is dropped|is ignored|keeps everything")
OWNERSHIP = re.compile(
    r"released? (it )?with|\bwith (mub_\w*)?free\b|is the caller's|handed over|for the caller to|[Vv]alid until|are copied|\bcopied as"
    r"|forgotten, not released|what it held is|not released|never owned|is released|neither linked|stays? the caller's|goes? back to"
    r"|go back to|shared with the clone|same block|nothing is released|stays where it is until")


class Parameter(NamedTuple):
    name: str
    type: str
    direction: str  # in, out or inout
    doc: str


class Failure(NamedTuple):
    value: str  # "0", "NULL", "-1" …, or "none"
    doc: str


class Function(NamedTuple):
    name: str
    module: str
    header: str
    line: int
    declaration: str
    summary: str
    description: str
    parameters: list
    result_type: str
    returns: str
    failure: Failure
    ownership: str
    invalidates: str
    cost: str
    refers_to: str  # the function that the comment leans on, "" when it stands alone


class Module(NamedTuple):
    name: str
    header: str
    title: str
    summary: str


def capital(text):
    """`text` as the beginning of a sentence; names and values stay as they are."""
    return text if re.match(r"mub_|`|NULL|\d", text) else text[:1].upper() + text[1:]


def full_stop(text):
    return text if not text or text.endswith((".", ":", "!", "?")) else text + "."


def said(*parts):
    return " ".join(capital(full_stop(part)) for part in parts if part)


def is_pointer(type_):
    return type_.endswith("*")


def pointee(type_):
    return type_.removesuffix("*").strip()


class Model:
    def __init__(self, root, allocating=()):
        self.root = Path(root)
        self.declared, self.scopes, self.previous = {}, {}, {}
        self.records, self.callbacks, self.objects = {}, {}, {}
        self.faults = []
        self.allocating = frozenset(allocating)
        for path in headers.public_headers(root):
            self.scopes[path.name] = headers.scopes_of(path)
            self.records.update({record.name: record for record in headers.records_of(path)})
            self.callbacks.update({found.name: found for found in headers.callbacks_of(path)})
            before = None
            for found in headers.declarations_of(path):
                if found.parameters is None:
                    self.objects[found.name] = found
                    continue
                self.declared[found.name] = found
                self.previous[found.name] = before
                before = found.name
        self.docs = {name: headers.doc_of(found.comment, name) for name, found in self.declared.items()}

    # ---- modules and scopes ----

    def module_of(self, name):
        word = name.removeprefix("mub_").split("_")[0]
        return PART_OF.get(word, word)

    def scopes_over(self, position, header):
        """The scopes that hold at a position, the nearest first: each level ends those at and below it."""
        open_scopes = []
        for scope in self.scopes[header]:
            if scope.position < position:
                open_scopes = [other for other in open_scopes if other.level < scope.level] + [scope]
        return open_scopes[::-1]

    def listed(self, heading, found, key):
        for scope in self.scopes_over(found.position, found.path.name):
            if key in scope.listings.get(heading, {}):
                return scope.listings[heading][key]
        return ""

    @cached_property
    def modules(self):
        modules = {}
        for found in self.declared.values():
            name = self.module_of(found.name)
            if name not in modules:
                modules[name] = self.described_module(name, found)
        return modules

    def described_module(self, name, found):
        over = self.scopes_over(found.position, found.path.name)
        section = next((scope for scope in over if scope.level == 1), None)
        top = over[-1]
        head = headers.sentences_of(headers.joined(top.paragraphs[0]).removeprefix(f"{found.path.name}: "))
        title = section.title.removeprefix(f"mub_{name}").lstrip(": ") if section else head[0].rstrip(".")
        texts = [headers.joined(paragraph) for paragraph in (section or top).paragraphs if is_prose(paragraph)]
        texts = texts if section else [text.removeprefix(f"{found.path.name}: ") for text in texts]
        return Module(name, found.path.name, capital(title), capital(" ".join(texts)) or said(*head))

    # ---- references ----

    def reference_of(self, name):
        """The function whose comment this one's leans on."""
        text = " ".join(self.docs[name].sentences)
        if re.match(r"the same\b(?! as mub_)", text):
            before = self.previous[name]
            while before and re.match(r"the same\b(?! as mub_)", " ".join(self.docs[before].sentences)):
                before = self.previous[before]
            return before or ""
        for pattern in REFERENCES:
            match = pattern.search(self.docs[name].sentences[0])
            if match and match.group(1) in self.declared and match.group(1) != name:
                return match.group(1)
        return ""

    def counterpart_of(self, name):
        module = self.module_of(name)
        rest = name.removeprefix(f"mub_{module}")
        while module in VARIANT_OF:
            module = VARIANT_OF[module]
            if f"mub_{module}{rest}" in self.declared:
                return f"mub_{module}{rest}"
        return ""

    def chain(self, name):
        """The function itself and those it leans on, one after another."""
        names = []
        while name and name not in names:
            names.append(name)
            name = self.reference_of(name)
        return names

    # ---- the parts of a function's documentation ----

    def note_of(self, name, parameter):
        for leaned_on in self.chain(name):
            note = self.docs[leaned_on].notes.get(parameter)
            if note:
                return note
        return ""

    def parameter_doc(self, name, parameter):
        own = self.note_of(name, parameter) or self.listed("Parameters", self.declared[name], parameter)
        if own:
            return own
        for other in [*self.chain(name)[1:], self.counterpart_of(name)]:
            if other:
                text = self.note_of(other, parameter) or self.listed("Parameters", self.declared[other], parameter)
                if text:
                    return text
        return ""

    def direction_of(self, name, parameter, doc):
        kind = parameter.type
        target = pointee(kind)
        if not is_pointer(kind) or target.endswith("const") or (target.startswith("const ") and "*" not in target):
            return "in"
        if re.search(r"\bin:.*\bout:", doc) or parameter.name.endswith("_io"):
            return "inout"
        if re.match(r"(out:|receives?\b|initialised anew|room for|where the bytes go)", doc):
            return "out"
        if parameter.name.endswith("_out") or name.endswith("_init"):
            return "out"
        # Blocks are handed over by address; what lies in them is nobody's business but their owner's.
        if target == "void" and parameter.name != "source":
            return "in"
        return "inout"

    def parameters_of(self, name):
        for parameter in self.declared[name].parameters:
            doc = self.parameter_doc(name, parameter.name)
            if not doc:
                self.faults.append(f"{self.place(name)}: {parameter.name}: no text, not in a listing either")
            yield Parameter(*parameter, self.direction_of(name, parameter, doc), capital(doc))
        known = {parameter.name for parameter in self.declared[name].parameters}
        for noted in self.docs[name].notes:
            if noted not in known:
                self.faults.append(f"{self.place(name)}: {noted}: a note, but no parameter")

    def place(self, name):
        found = self.declared[name]
        return f"{found.path.relative_to(self.root)}:{found.line}: {name}"

    def own_returns(self, name):
        doc = self.docs[name]
        text = doc.sentences[0].removeprefix("sorted: ") if doc.sentences else ""
        if doc.returns:
            # "remove the item at `index`. Returns it, …"
            named = text if RESULT_PHRASE.match(text) else (re.search(r"\bthe \w+", text) or [""])[0]
            return re.sub(r"^it\b", named.rstrip("."), doc.returns)
        if RESULT_PHRASE.match(text):
            return re.sub(r"^whether (.*)\.$", r"1 when \1, else 0.", text)
        special = FAILURE.search(text)
        if special and text.startswith("the same"):
            return f"{self.returns_of(self.reference_of(name)).rstrip('.')}, also{special.group(2)}."
        return ""

    def returns_of(self, name):
        if self.declared[name].type == "void":
            return ""
        for leaned_on in self.chain(name):
            text = self.own_returns(leaned_on)
            if text and self.declared[leaned_on].type != "void":
                return text
        return ""

    def told_of(self, name, pattern):
        """The clauses and notes that match, of the function itself or else of the first one that it leans on."""
        for leaned_on in self.chain(name):
            doc = self.docs[leaned_on]
            told = [clause for sentence in doc.sentences for clause in sentence.split("; ") if pattern.search(clause)]
            told += [f"`{note}`: {text}" for note, text in doc.notes.items() if pattern.search(text)]
            if told:
                return said(*told)
        return ""

    def failure_of(self, name, returns):
        """What tells that nothing was found or done, and when; what happens without memory where that can be."""
        value, doc = "none", ""
        match = FAILURE.search(returns)
        either = OR_VALUE.search(returns)
        if match and match.group(1) == "empty":
            doc = f"The result is empty{match.group(2)}."
        elif match and not re.search(r"_i?(cmp|compare)$", name):
            value, doc = match.group(1), said(match.group(2).lstrip(" ,"))
        elif either:
            value, doc = either.group(1), said("when there is none" + (either.group(2) or ""))
        else:
            doc = self.told_of(name, REFUSAL)
        if name in self.allocating and not MEMORY.search(doc):
            doc = f"{doc} {self.without_memory(name, returns)}".strip()
        return Failure(value, doc)

    def without_memory(self, name, returns):
        told = [f"the result is {clause}" for clause in returns.split("; ") if MEMORY.search(clause)]
        text = said(*told) or self.told_of(name, MEMORY) or said(self.listed("Failure", self.declared[name], "memory"))
        if not text:
            self.faults.append(f"{self.place(name)}: may allocate, but what happens without memory is not told")
        return text

    def ownership_of(self, name):
        """By its header's rule for the operation, else what is said at the function, else by the header's rules for the
        result's type and for the parameters."""
        found = self.declared[name]
        result, operation = self.result_rule(found), self.operation_rule(name)
        if operation:
            return said(result if result.startswith("the result is the record") else "", operation)
        for leaned_on in self.chain(name):
            doc = self.docs[leaned_on]
            told = [clause for sentence in doc.sentences for clause in sentence.split("; ") if OWNERSHIP.search(clause)]
            returned = self.own_returns(leaned_on).split("; ")
            told += [f"the result is {clause}" for clause in returned if OWNERSHIP.search(clause)]
            told += [f"`{note}`: {text}" for note, text in doc.notes.items() if OWNERSHIP.search(text)]
            if told:
                return said(*told)
        rules = [(parameter.name, self.listed("Ownership", found, parameter.name)) for parameter in found.parameters]
        rules = [f"`{parameter}`: {rule}" for parameter, rule in rules if rule]
        if is_pointer(found.type) and not result:
            self.faults.append(f"{self.place(name)}: whose is the result?")
        return said(result, *rules) or NOTHING_KEPT

    def result_rule(self, found):
        if not is_pointer(found.type):
            return ""
        same = [parameter.name for parameter in found.parameters if parameter.type == found.type]
        if same and pointee(found.type) == f"mub_{self.module_of(found.name)}":
            return f"the result is the record that was passed as `{same[-1]}`"
        return self.listed("Ownership", found, found.type)

    def operation_rule(self, name):
        for leaned_on in self.chain(name):
            operation = leaned_on.removeprefix(f"mub_{self.module_of(leaned_on)}")
            rule = self.listed("Ownership", self.declared[name], operation)
            if rule:
                return rule
        return ""

    def chained(self, name, part):
        for leaned_on in self.chain(name):
            text = getattr(self.docs[leaned_on], part)
            if text:
                return text
        return ""

    def cost_of(self, name):
        text = self.chained(name, "cost")
        match = re.fullmatch(r"as (mub_\w+)\.", text)
        return capital(self.cost_of(match.group(1)) if match else text)

    def texts_of(self, name):
        """(summary, description): what is said of the function, then of those that it leans on."""
        sentences, reference = list(self.docs[name].sentences), self.reference_of(name)
        sorted_use = sentences[0].startswith("sorted: ")
        sentences[0] = sentences[0].removeprefix("sorted: ")
        summary, description = self.texts_of(reference) if reference else ("", "")
        behind = [SORTED] if sorted_use and SORTED not in description else []
        if reference:
            sentences[0] = re.sub(r"^the same\b(?! as mub_)", f"as {reference},", sentences[0]).replace(",,", ",")
            if re.fullmatch(r"as mub_\w+\.", sentences[0]):
                return summary, " ".join(filter(None, [*sentences[1:], *behind, description]))
            behind.append(f"{reference}: {summary} {description}".strip())
        return said(sentences[0]), " ".join([*(capital(sentence) for sentence in sentences[1:]), *behind])

    # ---- records and callbacks ----

    def field_doc(self, record, field):
        doc = field.doc or self.listed("Fields", record, field.name)
        if not doc:
            self.faults.append(f"{record.path.relative_to(self.root)}: {record.name}.{field.name}: no text")
        return capital(doc)

    def record_summary(self, record):
        """Its comment; without one, what its module is."""
        module = self.modules.get(record.name.removeprefix("mub_"))
        text = capital(record.doc) or (module.title + "." if module else "")
        if not text:
            self.faults.append(f"{record.path.relative_to(self.root)}: {record.name}: no text")
        return text

    def callback_doc(self, callback):
        text = headers.joined(headers.lines_of(callback.comment)).removeprefix(f"{callback.name}:").strip()
        if not text:
            self.faults.append(f"{callback.path.relative_to(self.root)}: {callback.name}: no text")
        names = list(self.callbacks)
        return capital(re.sub(r"^the same\b", f"as {names[names.index(callback.name) - 1]},", text))

    def object_doc(self, found):
        return capital(headers.joined(headers.lines_of(found.comment)).removeprefix(f"{found.name}:").strip())

    @cached_property
    def functions(self):
        return {name: self.function(name) for name in self.declared}

    def function(self, name):
        found = self.declared[name]
        summary, description = self.texts_of(name)
        returns = self.returns_of(name)
        if not returns and found.type != "void":
            self.faults.append(f"{self.place(name)}: no Returns")
        return Function(
            name, self.module_of(name), found.path.name, found.line, found.code, summary, description,
            list(self.parameters_of(name)), found.type, capital(returns), self.failure_of(name, returns),
            self.ownership_of(name), capital(self.chained(name, "invalidates")), self.cost_of(name),
            self.reference_of(name))


def is_prose(paragraph):
    """Not a drawing, a table or a list of terms."""
    return all(re.match(r" \S", line) for line in paragraph)


def load(root, allocating=()):
    """The model of the headers under `root`; `allocating`: the functions that may allocate, if that is known."""
    return Model(root, allocating)
