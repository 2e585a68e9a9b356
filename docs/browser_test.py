#!/usr/bin/env python3
"""Tests the built manual in a headless Chromium, opened from its files.

    docs/browser_test.py HTML_DIRECTORY [--screenshots DIRECTORY]

Needs Debian's chromium, chromium-driver and python3-selenium.
"""

import argparse
import json
import re
import sys
import tempfile
import unittest
from html.parser import HTMLParser
from pathlib import Path
from urllib.parse import unquote

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.select import Select

ROOT = Path(__file__).resolve().parent.parent
SWITCHES = ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-sync",
            "--disable-background-networking", "--disable-component-update", "--allow-file-access-from-files"]
DESKTOP, PHONE = (1300, 1000), (390, 844)
# Each query has the wanted name among its first hits, as many as the number says.
QUERIES = [
    # misspelt
    (1, "mub_hash_insret", "mub_hash_insert"), (1, "btree nod next", "mub_btree_node_next"),
    (1, "strng replace", "mub_string_replace"), (1, "pool nwe", "mub_pool_new"), (1, "lists_ad_tail", "mub_lists_add_tail"),
    (1, "mub_arays_qsrot", "mub_arrays_qsort"), (1, "bits fnid", "mub_bits_find"), (1, "wchra apend", "mub_wchar_append"),
    # one word of a name or summary, or in another order
    (4, "replce", "mub_string_replace"), (4, "nxet node btree", "mub_btree_node_next"),
    (4, "polynomail", "mub_stream_crc32"), (3, "packed lword", "mub_stream_inflate_lword"),
    # words of other libraries
    (3, "push list", "mub_list_add_tail"), (3, "string concat", "mub_string_append"),
    (3, "btree lower_bound", "mub_btree_cursor_seek"), (3, "get-or-create hash", "mub_hash_entry_set"),
    # guides, examples, members and records
    (2, "libabigail", "Compatibility: How it is enforced"), (2, "lru", "cookbook/lru_cache.c"),
    (2, "glib", "comparison/words_glib.c"), (2, "tutorial sorting", "Tutorial: Sorting"),
    (2, "mub::string c_str", "mub::string::c_str"), (2, "basic_hash emplace", "mub::basic_hash::emplace"),
    (2, "btree_cursor", "mub_btree_cursor"), (2, "mub_hash", "mub_hash"),
]
pages = None  # the directory, set by main
driver = None


class Page(HTMLParser):
    """The links of a page, and the anchors in it."""

    def __init__(self, path):
        super().__init__()
        self.links, self.places = [], set()
        self.feed(path.read_text())

    def handle_starttag(self, tag, attributes):
        for name, value in attributes:
            if name in ("href", "src"):
                self.links.append(value)
            elif name in ("id", "name"):
                self.places.add(value)


def search_rows():
    text = (pages / "api-index.js").read_text()
    return json.loads(text[text.index("["):text.index("];") + 1])


def function_rows():
    return [row for row in search_rows() if row[4] is not None]


def synonyms():
    """{a word of other libraries: [our words, …]}"""
    text = (pages / "api-index.js").read_text()
    return json.loads(text[text.index("{", text.index("MUB_SYNONYMS")):text.rindex(";")])


def words(name):
    return [word for word in re.split("[^a-z0-9]+", name.lower()) if word not in ("", "mub")]


def exported_functions():
    names = re.findall(r"^    (\w+);$", (ROOT / "src/mub.map").read_text(), re.MULTILINE)
    return [name for name in names if name.startswith("mub_")]


class Links(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.parsed = {path.name: Page(path) for path in pages.glob("*.html")}

    def fault_of(self, link, source):
        if link.startswith(("data:", "http:", "https:")):
            return None
        name, _, place = unquote(link).partition("#")
        name = name or source
        if not (pages / name).is_file():
            return f"{source}: no file for {link}"
        if place and place not in self.parsed[name].places:
            return f"{source}: no anchor for {link}"
        return None

    def test_every_link_has_a_target(self):
        faults = [self.fault_of(link, source) for source, page in self.parsed.items() for link in page.links]
        self.assertEqual([], [fault for fault in faults if fault])
        self.assertGreater(len(faults), 5000)

    def test_the_search_index_has_the_place_of_every_function(self):
        rows = function_rows()
        self.assertEqual(sorted(exported_functions()), sorted(row[0] for row in rows))
        for name, _, url, *_ in rows:
            page, place = url.split("#")
            text = (pages / page).read_text()
            title = text[text.index(f'id="{place}"'):][:400]
            self.assertIn(f"</span>{name}()", title)

    def test_the_search_index_has_what_else_is_documented(self):
        rows = search_rows()
        self.assertEqual([], [fault for fault in (self.fault_of(row[2], "api-index.js") for row in rows) if fault])
        names = [row[0] for row in rows]
        self.assertEqual(len(names), len(set(names)))
        wanted = ["mub::hash", "mub::string", "mub::basic_hash::emplace", "mub::lists::push_back", "mub::to_word",
                  "mub_compare_fn", "CRC_TABLE", "cookbook/lru_cache.c", "Tutorial: Sorting"]
        for header in (ROOT / "include").glob("*.h"):
            wanted += re.findall(r"^} (mub_\w+);", header.read_text(), re.MULTILINE)
        for guide in (ROOT / "docs").glob("*.md"):
            title, *sections = re.findall("^##* ([^{\n]*)", guide.read_text(), re.MULTILINE)
            wanted += [f"{title.strip()}: {section.replace('`', '')}" for section in sections]
        self.assertEqual([], [name for name in wanted if name not in names])
        self.assertGreater(len(wanted), 80)

    def test_a_function_lists_the_examples_that_call_it(self):
        calls = {}
        for source in [*(ROOT / "examples/cookbook").glob("*.c"), *(ROOT / "examples/tutorial").glob("*.c")]:
            for name in re.findall(r"\b(mub_\w+)\(", source.read_text()):
                calls.setdefault(name, set()).add(f"{source.parent.name}/{source.name}")
        self.assertGreater(len(calls), 80)
        url = {row[0]: row[2] for row in function_rows()}
        for name, sources in calls.items():
            page, place = url[name].split("#")
            section = (pages / page).read_text().split(f'id="{place}"', 1)[1].split('<h2 class="memtitle">', 2)[1]
            for source in sources:
                self.assertIn(source, section, name)


class Browser(unittest.TestCase):
    def setUp(self):
        resize(DESKTOP)
        self.open("index.html")

    def tearDown(self):
        self.assertEqual([], driver.get_log("browser"))

    def open(self, name):
        driver.get((pages / name).as_uri())
        self.input = driver.find_element(By.ID, "search")

    def ask(self, query):
        self.input.send_keys(Keys.CONTROL, "a", Keys.NULL, Keys.DELETE, query)

    def hits(self):
        return [element.text for element in driver.find_elements(By.CSS_SELECTOR, "#hits a > code")]

    def active(self):
        option = driver.find_element(By.ID, self.input.get_attribute("aria-activedescendant"))
        self.assertEqual("true", option.get_attribute("aria-selected"))
        return option.find_element(By.TAG_NAME, "code").text

    def choose(self, id_, value):
        Select(driver.find_element(By.ID, id_)).select_by_value(value)

    def count(self):
        return int(driver.find_element(By.ID, "search-count").text.split()[0])

    def panel_shown(self):
        shown = driver.find_element(By.ID, "search-panel").is_displayed()
        self.assertEqual(str(shown).lower(), self.input.get_attribute("aria-expanded"))
        return shown

    def test_queries_find_what_they_mean(self):
        exact = [(1, name, name) for name in exported_functions()[::80]]
        wanted = QUERIES + exact
        for (among, query, name), hits in zip(wanted, hits_of(query for _, query, _ in wanted)):
            self.assertIn(name, hits[:among], query)
        self.ask("qqqqzzzz")
        self.assertEqual(([], 0), (self.hits(), self.count()))

    def test_words_of_other_libraries_lead_to_ours(self):
        found = synonyms()
        self.assertGreater(len(found), 60)
        for (foreign, alternatives), names in zip(found.items(), hits_of(found)):
            hits = [set(words(name)) for name in names]
            leads = [set(words(ours)) for ours in alternatives]
            self.assertTrue(any(lead <= hits[0] for lead in leads), f"{foreign}: {names[0]}")
            self.assertEqual([], [lead for lead in leads if not any(lead <= hit for hit in hits)], foreign)

    def test_filters_narrow_the_hits(self):
        rows = search_rows()
        self.ask("remove")
        everywhere = self.count()
        self.choose("search-module", "hash")
        self.assertLess(self.count(), everywhere)
        self.assertTrue(all(name.startswith("mub_hash") for name in self.hits()))
        self.ask("")
        self.assertEqual(sum(row[1] == "hash" for row in rows), self.count())
        for value, allocates in (("yes", True), ("no", False)):
            self.choose("search-allocates", value)
            wanted = sum(row[1] == "hash" and row[4] is allocates for row in rows)
            self.assertEqual(wanted, self.count())
            self.assertGreater(wanted, 0)

    def test_the_search_works_with_the_keyboard(self):
        body = driver.find_element(By.TAG_NAME, "body")
        body.send_keys("/")
        self.assertEqual(self.input, driver.switch_to.active_element)
        self.assertEqual("", self.input.get_attribute("value"))
        self.input.send_keys("hash/inse")
        first, second = self.hits()[:2]
        self.assertEqual(first, self.active())
        self.input.send_keys(Keys.ARROW_DOWN)
        self.assertEqual(second, self.active())
        self.input.send_keys(Keys.ARROW_UP, Keys.ARROW_UP)
        self.assertEqual(self.hits()[-1], self.active())
        self.input.send_keys(Keys.ESCAPE)
        self.assertFalse(self.panel_shown())
        body.send_keys("/")
        self.ask("mub_pool_new")
        self.input.send_keys(Keys.ENTER)
        url = {row[0]: row[2] for row in search_rows()}["mub_pool_new"]
        self.assertTrue(driver.current_url.endswith(url), driver.current_url)

    def test_the_search_is_accessible(self):
        self.ask("hash")
        self.assertTrue(self.panel_shown())
        self.assertEqual("combobox", self.input.get_attribute("role"))
        self.assertEqual("Search", self.input.accessible_name)
        count = driver.find_element(By.ID, "search-count")
        self.assertEqual("polite", count.get_attribute("aria-live"))
        for id_, name in (("search-module", "Module"), ("search-allocates", "May allocate")):
            self.assertTrue(driver.find_element(By.ID, id_).accessible_name.startswith(name))
        driver.find_element(By.CSS_SELECTOR, "nav.modules h2").click()
        self.assertFalse(self.panel_shown())

    def test_every_page_fits_a_phone(self):
        resize(PHONE)
        for path in sorted(pages.glob("*.html")):
            self.open(path.name)
            width = driver.execute_script("return document.documentElement.scrollWidth")
            self.assertLessEqual(width, PHONE[0], path.name)
            self.assertEqual(1, len(driver.find_elements(By.TAG_NAME, "h1")), path.name)

    def test_pictures_are_shown(self):
        for module in ("hash", "btree", "pool"):
            self.open(f"group__{module}.html")
            picture = driver.find_element(By.CSS_SELECTOR, "figure img")
            self.assertGreater(int(picture.get_attribute("naturalWidth")), 300)
            self.assertTrue(picture.get_attribute("alt"))


def hits_of(queries):
    """The names that each query finds, without typing it."""
    return driver.execute_script("""
        const input = document.getElementById("search");
        return arguments[0].map((query) => {
          input.value = query;
          input.dispatchEvent(new Event("input"));
          return Array.from(document.querySelectorAll("#hits a > code"), (name) => name.textContent);
        });""", list(queries))


def resize(size):
    driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                           {"width": size[0], "height": size[1], "deviceScaleFactor": 1, "mobile": size == PHONE})


def take_screenshots(directory):
    directory.mkdir(parents=True, exist_ok=True)
    function = {row[0]: row[2] for row in search_rows()}["mub_hash_insert"]
    for scheme in ("light", "dark"):
        driver.execute_cdp_cmd("Emulation.setEmulatedMedia",
                               {"features": [{"name": "prefers-color-scheme", "value": scheme}]})
        for size in (DESKTOP, PHONE):
            resize(size)
            for name, page in [("index", "index.html"), ("module", "group__hash.html"), ("function", function),
                               ("tree", "group__btree.html"), ("tutorial", "tutorial.html"), ("cookbook", "cookbook.html"),
                               ("recipe", "cookbook_2lru_cache_8c-example.html"), ("search", "index.html")]:
                driver.get("about:blank")
                driver.get(f"{pages.as_uri()}/{page}")
                if name == "search":
                    driver.find_element(By.ID, "search").send_keys("strng replace")
                driver.save_screenshot(str(directory / f"{name}-{size[0]}-{scheme}.png"))


def start(profile):
    options = webdriver.ChromeOptions()
    options.binary_location = "/usr/bin/chromium"
    for switch in [*SWITCHES, f"--user-data-dir={profile}"]:
        options.add_argument(switch)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    browser = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
    browser.set_page_load_timeout(30)
    return browser


def main():
    global pages, driver
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("pages", type=Path)
    parser.add_argument("--screenshots", type=Path)
    options = parser.parse_args()
    pages = options.pages.resolve()
    with tempfile.TemporaryDirectory() as profile:
        driver = start(profile)
        try:
            if options.screenshots:
                take_screenshots(options.screenshots)
            else:
                result = unittest.main(argv=sys.argv[:1], exit=False).result
                sys.exit(0 if result.wasSuccessful() else 1)
        finally:
            driver.quit()


if __name__ == "__main__":
    main()
