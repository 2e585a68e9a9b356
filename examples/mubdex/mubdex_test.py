"""Tests mubdex as a program: counts, lines compared with grep, saved indexes, errors.

usage: mubdex_test.py MUBDEX
"""

import collections
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path
from xml.etree import ElementTree

MUBDEX = os.path.abspath(sys.argv.pop(1))
SVG = "{http://www.w3.org/2000/svg}"
TEXT = Path("/usr/share/common-licenses/GPL-3")


HEADINGS = "1. One\n1.1 Part\n 1.1.2. Deep\n1.3 Last\n10.1 None above\n2 no dot\n2. small no\n12.\n1.2.3 Far"
OUTLINE = """     1  1  One
     2    1.1  Part
     3      1.1.2  Deep
     4    1.3  Last
     5  10.1  None above
     9  1.2.3  Far
"""
ANSWERS = (  # (arguments, standard input, output)
    (("--lines", "end", "-"), "no\nend", "2:end\n"),
    (("--li", "free", "-"), "free software", "1:free software\n"),  # abbreviated
    (("-", "--lines=free"), "free software", "1:free software\n"),  # after the files
    (("--outline", "-"), HEADINGS, OUTLINE),
    (("--template", "?: ? times, ?", "-"), "b a b", "b: 2 times, ?\na: 1 times, ?\n"),
    (("--template", "", "-"), "b a b", "\n\n"),
)
MALFORMED_QUERIES = (("", 1), ("free AND", 9), ("free AND OR gnu", 10), ("(free", 1), ("a (b (c)", 3), ("free)", 5), ("a 1", 3),
                     ("NOT", 4), ("()", 2), ("AND a", 1), ("a & b", 3))
USAGE = r"^[^\n]+\nusage: mubdex [^\n]+\n$"
REFUSED = (  # (arguments, standard error)
    *((("--query", query), f"column {column}:") for query, column in MALFORMED_QUERIES),
    *((arguments, USAGE) for arguments in (
        ("--bogus",), ("--load",), ("-x",), ("--lines", "a b"), ("--lines", ""), ("--lines", "a", "--json"), ("--query",),
        ("--range", "a.b"), ("--dot", "heap"), ("--outline", "--query", "a"))),
)


def run(*arguments, text=None):
    return subprocess.run([MUBDEX, *arguments], input=text, capture_output=True, check=False)


def report(*arguments, text=None):
    """The JSON report without the parts that vary between runs."""
    result = run("--json", *arguments, text=text)
    assert result.returncode == 0, result.stderr
    content = json.loads(result.stdout)
    del content["seconds"], content["source"]
    return content


def counted(text):
    """[(word, count)], most frequent first, then in byte order."""
    words = collections.Counter(re.findall(rb"[a-z\x80-\xff]+", text.lower()))
    ordered = sorted(words.items(), key=lambda word: (-word[1], word[0]))
    return [(word.decode(errors="replace"), count) for word, count in ordered]


def top_words(*arguments, text=None):
    return [(top["word"], top["count"]) for top in report(*arguments, text=text)["top"]]


class Mubdex(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = Path(directory.name)

    def file(self, name, content):
        path = self.directory / name
        path.write_bytes(content)
        return path

    def test_every_word_is_counted(self):
        # Long enough that words span the buffers in which the file is read.
        long_text = self.file("long.txt", TEXT.read_bytes().replace(b"software", "größe ".encode()) * 9)
        for path in TEXT, long_text:
            expected = counted(path.read_bytes())
            content = report(path)
            self.assertEqual((content["words"], content["vocabulary"]), (sum(count for _, count in expected), len(expected)))
            self.assertEqual(top_words(path), expected[:20])

    def test_standard_input_and_several_files(self):
        text = TEXT.read_bytes()
        for arguments in (), ("-",):
            self.assertEqual(report(*arguments, text=text), report(TEXT))
        copy, link = self.file("copy.txt", text), self.directory / "link.txt"
        link.symlink_to(copy)
        self.assertEqual(report(TEXT, copy)["words"], 2 * report(TEXT)["words"])
        self.assertEqual(report(TEXT, copy, TEXT, link), report(TEXT, copy))
        self.assertIn(b"the\n", run(text=text).stdout)

    def test_words_end_with_the_text_and_may_be_long(self):
        word = b"x" * 200_000
        self.assertEqual(top_words("-", text=b"End " + word + b" " + word + b"y end"),
                         [("end", 2), ("x" * 200_000, 1), ("x" * 200_000 + "y", 1)])
        for spaces in range(65530, 65540):  # around the end of a block
            self.assertEqual(top_words("-", text=b" " * spaces + b"word\n"), [("word", 1)])

    def test_the_most_frequent_words_come_first_and_equal_counts_in_byte_order(self):
        names = [a + b for a in "hgfedcba" for b in "zyxwvu"]
        for counts in range(1, 49), range(48, 0, -1), [1] * 48, [1 + i * 7 % 5 for i in range(48)], [2] * 20, [3]:
            text = " ".join(f"{word} " * count for word, count in zip(names, counts)).encode()
            self.assertEqual(top_words("-", text=text), counted(text)[:20])

    def test_a_count_keeps_one_entry_per_word_and_no_lines(self):
        words = [a + b + c for a in "abcdefghijklmnop" for b in "abcdefghijklmnop" for c in "abcdefghijklmnop"]
        self.assertLess(report("-", text="\n".join(words * 9).encode())["bytes_per_word"], 64)

    def test_utf16_in_both_byte_orders_is_read_like_utf8(self):
        # Pairs of surrogates lie across the end of a block in one of the long words.
        text = "Der größte 🂡 zog\nein größter 𝄞; ἀρχή слово \u07ff\u0800\uffff\n" + "🂡" * 50_000 + " " + "🂡" * 50_000 + "\n"
        mark = "\ufeff"
        for encoding in "utf-8", "utf-16-le", "utf-16-be":
            encoded = (mark + text).encode(encoding)
            self.assertEqual(report("-", text=encoded), report("-", text=text.encode()))
            lines = run("--lines", "größter", "-", text=encoded).stdout.decode()
            self.assertEqual(lines, "2:" + text.splitlines(keepends=True)[1])
            self.assertEqual(report("-", text=mark.encode(encoding))["words"], 0)

        for order in "little", "big":
            def units(*values, order=order):
                return b"".join(value.to_bytes(2, order) for value in values)

            damaged = units(0xFEFF, 0xD800, 0x20, 0x61, 0xDC00, 0xD800, 0xDBFF, 0xDFFF, 0x20, 0x62) + b"c"
            self.assertEqual(top_words("-", text=damaged), [(word, 1) for word in ("a\ufffd\ufffd\U0010ffff", "b\ufffd", "\ufffd")])

    def test_options_select_the_answer(self):
        for arguments, text, answer in ANSWERS:
            self.assertEqual(run(*arguments, text=text.encode()).stdout.decode(), answer, arguments)

    def test_json_replaces_invalid_utf8(self):
        self.assertEqual(top_words("-", text=b"ok \xff\xc3 gr\xc3\xb6\xc3\x9fe \xed\xa0\x80"),
                         [(word, 1) for word in ("gr\u00f6\u00dfe", "ok", "\ufffd\ufffd\ufffd", "\ufffd\ufffd")])

    def test_lines_are_those_of_grep(self):
        other = self.file("other.txt", b"free\n\nFREE software, free\nfreedom")
        for word in "free", "Software", "the", "x", "freedom":
            for files in (TEXT,), (other,), (TEXT, other):
                lines = run("--lines", word, *files)
                grep = subprocess.run(["grep", "-inw", word, *files], capture_output=True, check=False)
                self.assertEqual(lines.stdout, grep.stdout)
                self.assertEqual(lines.returncode, 0)

    def test_words_of_a_prefix_and_of_a_range_are_in_byte_order(self):
        words = sorted(counted(TEXT.read_bytes()), key=lambda entry: entry[0].encode())

        def expect(arguments, is_wanted):
            output = run(*arguments, TEXT).stdout.decode().splitlines()
            self.assertEqual([(word, int(count)) for count, word in map(str.split, output)],
                             [entry for entry in words if is_wanted(entry[0])])

        for prefix in "lic", "LIC", "zz", "a", "warranty", "":
            expect(("--prefix", prefix), lambda word: word.startswith(prefix.lower()))
        for first, last in ("a", "c"), ("free", "freedom"), ("m", "a"), ("", "b"), ("w", ""):
            expect(("--range", first + ".." + last),
                   lambda word: first <= word and (word <= last or word.startswith(last)))

    def test_queries_have_the_answers_of_grep_and_sets(self):
        def lines(word):
            grep = subprocess.run(["grep", "-inw", word, TEXT], capture_output=True, check=False)
            return set(grep.stdout.splitlines(keepends=True))

        every = {b"%d:%s" % line for line in enumerate(TEXT.read_bytes().splitlines(keepends=True), 1)}
        free, software, gnu, the = map(lines, ("free", "software", "gnu", "the"))
        for query, expected in (("free", free), ("free AND software", free & software),
                                ("free Software", free & software), ("gnu OR free software", gnu | free & software),
                                ("(gnu OR free) software", (gnu | free) & software),
                                ("free AND software NOT gnu", free & software - gnu), ("NOT the", every - the),
                                ("NOT NOT the", the), ("the NOT (free OR gnu)", the - (free | gnu)),
                                ("((((free))))", free), ("nowhere", set()),
                                ("free " * 5000, free), ("(" * 5000 + "free" + ")" * 5000, free)):
            answer = run("--query", query, TEXT).stdout.splitlines(keepends=True)
            self.assertEqual(answer, sorted(expected, key=lambda line: int(line.split(b":")[0])), query[:40])

    def test_the_vocabulary_is_written_as_utf16(self):
        path = self.directory / "words.txt"
        text = "der größte 🂡 zog".encode() + b" \xff\xed\xa0\x80"
        self.assertEqual(run("--utf16", path, "-", text=text).returncode, 0)
        self.assertEqual(path.read_text("utf-16"), "der\ngrößte\nzog\n🂡\n\ufffd\ufffd\ufffd\ufffd\n")

    def picture(self, name, text):
        """The SVG of a picture: the texts of its nodes with their class, its title, the number of edges."""
        dot = run("--dot", name, "-", text=text)
        self.assertEqual((dot.returncode, dot.stderr), (0, b""))
        svg = subprocess.run(["dot", "-Tsvg"], input=dot.stdout, capture_output=True, check=True)
        self.assertEqual(svg.stderr, b"")
        root = ElementTree.fromstring(svg.stdout)
        groups = [group.get("class").split() for group in root.iter(SVG + "g")]
        nodes = [(group.get("class").split()[1], [text.text for text in group.iter(SVG + "text")])
                 for group in root.iter(SVG + "g") if "node " in group.get("class")]
        title = "".join(text.text for text in root.iter(SVG + "text") if text.text.startswith("mub_"))
        return nodes, title, sum("edge" in group for group in groups)

    @unittest.skipUnless(shutil.which("dot"), "needs Graphviz")
    def test_pictures_show_every_word_once(self):
        few = b"the pool returns a block and the table keeps a bucket"
        many = " ".join(f"{a}{b}" for a in "bcdfgk" for b in "aeiouy" for _ in range(1 + (a < b))).encode()
        for text in few, many, b"", b"<a> & \xff\xfe gr\xc3\xb6\xc3\x9fe " + b"x" * 100:
            words = {word if len(word) < 20 else "x" * 16 + "\u2026": str(count) for word, count in counted(text)}
            for name, kind, headings, noun in ("hash", "entry", 0, "entries"), ("btree", "leaf", 1, "records"):
                nodes, title, edges = self.picture(name, text)
                cells = [cell for found, texts in nodes if found == kind for cell in texts[headings:]]
                self.assertEqual(sorted(zip(cells[::2], cells[1::2])), sorted(words.items()))
                self.assertEqual(edges, len(nodes) - 1)
                self.assertIn(f"{len(words)} {noun}", title)
            # The root of the B-tree has the last word of every leaf.
            for root in (texts[1:] for kind, texts in nodes if kind == "branch"):
                self.assertEqual(root, [texts[-2] for kind, texts in nodes if kind == "leaf"])

            nodes, title, _ = self.picture("pool", text)
            content = [text for _, texts in nodes for text in texts if "chunk" not in text]
            frequent = {word for word, count in words.items() if count != "1"}
            self.assertEqual(sorted(c for c in content if not c.startswith(("free ", "unused"))), sorted(frequent))
            self.assertEqual(sorted((c for c in content if c.startswith("free ")), key=lambda c: int(c[5:])),
                             [f"free {turn + 1}" for turn in range(len(words) - len(frequent))])
            self.assertEqual(len(content) % 16, 0)
            self.assertIn(f"{len(frequent)} live blocks", title)

    @unittest.skipUnless(shutil.which("dot"), "needs Graphviz")
    def test_pictures_state_what_they_leave_out(self):
        text = TEXT.read_bytes()
        vocabulary = report(TEXT)["vocabulary"]
        nodes, title, _ = self.picture("hash", text)
        buckets = int(re.search(r"in (\d+) buckets", title)[1])
        self.assertIn(f"{vocabulary} entries", title)
        self.assertIn(f"\u2026 {buckets - 64} more", [text for _, texts in nodes for text in texts])

        nodes, title, _ = self.picture("btree", text)
        self.assertIn(f"{vocabulary} records", title)
        last = [texts[-1] for kind, texts in nodes if kind == "branch" and texts[-1].endswith(" more")]
        left_out = sum(int(text.split()[1]) for text in last)
        self.assertEqual(len(nodes) - 1 + left_out, int(re.search(r"(\d+) nodes", title)[1]))

        nodes, title, _ = self.picture("pool", text)
        chunks = -(-vocabulary // 16)
        self.assertIn(f"{chunks} chunks", title)
        self.assertEqual(nodes[0][1][-1], f"\u2026 {chunks - 8} more")

    def test_load_restores_what_was_saved(self):
        path, again = self.directory / "text.idx", self.directory / "again.idx"
        self.assertEqual(run("--save", path, TEXT).returncode, 0)
        loaded, fresh = report("--load", path), report(TEXT)
        for name in "words", "vocabulary", "top":
            self.assertEqual(loaded[name], fresh[name])
        run("--load", path, "--save", again)
        self.assertEqual(path.read_bytes(), again.read_bytes())
        self.assertEqual(report("--load", path, TEXT)["words"], 2 * fresh["words"])
        for task in ("--lines", "free"), ("--query", "free"), ("--outline",):  # which keep the text
            run(*task, "--load", path, "--save", again, TEXT)
            self.assertEqual(report("--load", again)["words"], 2 * fresh["words"])

    def test_every_truncation_and_every_flipped_byte_is_refused(self):
        path = self.directory / "saved.idx"
        run("--save", path, "-", text=b"to be or not to be that is the question")
        content = path.read_bytes()
        self.assertGreater(len(content), 50)
        damaged = [content[:i] + bytes([content[i] ^ 0x41]) + content[i + 1:] for i in range(len(content))]
        for reason, contents in ((b"truncated", [content[:length] for length in range(len(content))]),
                                 (b"damaged|truncated", damaged), (b"damaged", [content + b"\0"])):
            for bad in contents:
                result = run("--load", self.file("bad.idx", bad))
                self.assertEqual((result.returncode, result.stdout), (1, b""))
                self.assertRegex(result.stderr, reason)

    def test_missing_and_unwritable_files_are_errors(self):
        for arguments in ("no/such/file",), ("--load", "no/such/file"), ("--save", "no/such/file", TEXT):
            result = run(*arguments)
            self.assertEqual(result.returncode, 1)
            self.assertIn(b"no/such/file: No such file", result.stderr)
        self.assertEqual(run(self.directory).returncode, 1)
        text = self.file("text.txt", b"precious")
        self.assertIn(b"one of the texts", run("--save", text, text).stderr)
        self.assertEqual(text.read_bytes(), b"precious")

    def test_wrong_usage_and_malformed_queries_are_refused(self):
        for arguments, reason in REFUSED:
            result = run(*arguments, text=b"")
            self.assertEqual((result.returncode, result.stdout), (2, b""), arguments)
            self.assertRegex(result.stderr.decode(), reason)

    def test_options_that_need_no_file(self):
        self.assertEqual(run("--", "-h").returncode, 1)  # there is no such file
        self.assertRegex(run("--version", "--json").stdout, rb"^mubdex \d+\.\d+\.\d+\n$")
        self.assertEqual(run("-h").stdout, run("--help", "no/such/file").stdout)
        self.assertEqual(run("--help").returncode, 0)

    def test_manual_page_has_every_option(self):
        page = Path(__file__).with_name("mubdex.1").read_text(encoding="utf-8")
        documented = set(re.findall(r"^\.It .*Fl \\-(\w+)", page, re.MULTILINE))
        options = set(re.findall(r"^  .*?--(\w+)", run("--help").stdout.decode(), re.MULTILINE))
        self.assertGreater(len(options), 5)
        self.assertEqual(options - documented, set())


if __name__ == "__main__":
    unittest.main()
