#!/usr/bin/env python3
"""browser.py TOOL SOURCES

The guide of the shipped library, and one of names that are hard to place, in a browser without a window: what the
script adds, what is there without it, how pages fit windows and paper, and what axe says of them.
"""
import base64
import html.parser
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest
import urllib.parse

try:
    from selenium import webdriver
    from selenium.webdriver.chrome.service import Service
    from selenium.webdriver.common.by import By
    from selenium.webdriver.common.keys import Keys
    from selenium.webdriver.support.ui import WebDriverWait
except ImportError:
    print("there is no selenium")
    sys.exit(77)

TOOL, SOURCES = sys.argv[1], pathlib.Path(sys.argv[2])
CHROMIUM, DRIVER = shutil.which("chromium"), shutil.which("chromedriver")
if not CHROMIUM or not DRIVER:
    print("there is no chromium, or none that can be driven")
    sys.exit(77)

FOLDER = tempfile.TemporaryDirectory()
SHIPPED, HARD = (pathlib.Path(FOLDER.name, name) for name in ("shipped", "hard"))
COUNTER = "blocks/COUNT_UP_8_LOAD.html"
KINDS = ["index.html", "blocks.html", "names.html", "architectures.html", "mappings.html", "functions.html",
         "findings.html", "changes.html", COUNTER, "blocks/MEM_BLOCK_2P_BYTE_WRITE_ECC_CASCADE.html"]
HARD_TEXT = f"""library "hard" {{
  block "{'LONG_' * 40}" {{
    primgroup = "{'G' * 80}:S, OLD:S";
    pin "{'P' * 120}[7:0]" input data tieLow;
    pin "Q" output;
    property string "{'V' * 90}" {{ values {{ "{'a' * 150}", "b" }}, default = "b", description = "{'word' * 60}" }}
  }}
  block "USER" {{ pin "A" input; pin "Q" output; }} expandsto {{
    inst "{'i' * 100}" "{'LONG_' * 40}"; inst "u" "NO_SUCH"; signal "s" : "A", "u" "A";
  }}
}}
"""


def setUpModule():
    text = pathlib.Path(FOLDER.name, "hard.btl")
    text.write_text(HARD_TEXT)
    # Another library in the place of an old release, so that there are changes.
    for options in ([SHIPPED, "--compare", SOURCES / "data/simulation.btl"], [HARD, "-l", text, "--title", "T" * 150]):
        subprocess.run([TOOL, "guide", *options], check=True, stdout=subprocess.DEVNULL)


def tearDownModule():
    FOLDER.cleanup()


class Browser(unittest.TestCase):
    def setUp(self):
        options = webdriver.ChromeOptions()
        options.binary_location = CHROMIUM
        for each in ("--headless=new", "--no-sandbox", "--disable-dev-shm-usage"):
            options.add_argument(each)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        self.browser = webdriver.Chrome(options=options, service=Service(DRIVER))
        self.addCleanup(self.browser.quit)
        self.tell = self.browser.execute_cdp_cmd
        self.run_script = self.browser.execute_script

    def tearDown(self):
        self.assertEqual(self.browser.get_log("browser"), [], "said on the browser's console")

    def open(self, page, width=1200, scheme="light", guide=None):
        self.tell("Emulation.setDeviceMetricsOverride",
                  {"width": width, "height": 900, "deviceScaleFactor": 1, "mobile": False})
        self.tell("Emulation.setEmulatedMedia", {"features": [{"name": "prefers-color-scheme", "value": scheme}]})
        # By way of an empty page, or another place in the same page would not be read anew.
        self.browser.get("about:blank")
        self.browser.get((guide or SHIPPED).as_uri() + "/" + page)

    def all(self, selector):
        return self.browser.find_elements(By.CSS_SELECTOR, selector)

    def one(self, selector):
        return self.browser.find_element(By.CSS_SELECTOR, selector)

    def texts(self, selector):
        return [each.text for each in self.all(selector) if each.is_displayed()]

    def press(self, *keys):
        webdriver.ActionChains(self.browser).send_keys(*keys).perform()

    def wait(self, condition):
        WebDriverWait(self.browser, 20).until(lambda _: condition())


class Search(Browser):
    def type(self, text):
        self.press("/", text)
        self.wait(lambda: self.texts(".answers .count") not in ([], ["Reading the names"]))

    def test_finds_names_descriptions_and_values(self):
        self.open("index.html")
        for typed, name, kind in (
                ("Up_8_L", "COUNT_UP_8_LOAD", "block: ARITHMETIC:COUNT"),
                ("starts over at 0", "LAST_VALUE", "property of COUNT_UP_8_LOAD: Value after which"),
                ("dual_4", "SPLIT", "property of ADD_CHAIN_8: One chain of eight bits, or two of four. SINGLE_8, DUAL_4"),
                ("clear count_up_8_load", "CLEAR", "pin of COUNT_UP_8_LOAD")):
            with self.subTest(typed):
                self.type(typed)
                self.assertEqual(self.one(".results b").text, name)
                self.assertIn(kind, self.one(".results .kind").text)
                self.press(Keys.ESCAPE)
                self.assertEqual(self.texts(".answers li, .answers .count"), [])
        self.type("c")
        self.assertRegex(self.one(".answers .count").text, "^The first 50 of [0-9]+$")
        self.press("ount_up_8_loaf")
        self.assertEqual(self.texts(".answers li, .answers .count"), ["Nothing found"])
        self.press("/")
        self.assertEqual(self.one("#search").get_property("value"), "count_up_8_loaf/")

    def chosen(self):
        return self.one("#" + self.one("#search").get_attribute("aria-activedescendant")).text

    def test_keys_lead_to_the_row_of_a_pin(self):
        for page, width in (("index.html", 1200), (COUNTER, 1200), ("index.html", 360)):
            with self.subTest(page=page, width=width):
                self.open(page, width)
                self.type("count_up_8_load")
                self.assertTrue(self.chosen().startswith("COUNT_UP_8_LOAD"))
                self.press(Keys.UP)
                self.assertEqual(self.chosen(), self.texts(".results li")[-1])
                self.press(Keys.DOWN)
                while not self.chosen().startswith("CLEAR"):
                    self.press(Keys.DOWN)
                self.press(Keys.ENTER)
                self.wait(lambda: self.browser.current_url.endswith("#pin-CLEAR") and self.all("tr:target"))
                self.assertTrue(self.one("tr:target").text.startswith("CLEAR"))
                self.assertEqual(self.texts(".answers li"), [])
                self.wait(lambda: self.run_script(
                    "return document.querySelector('tr:target').getBoundingClientRect().top"
                    ">= document.querySelector('.top').getBoundingClientRect().bottom"))


class Pages(Browser):
    def rows(self):
        return [[cell.strip() for cell in row] for row in self.run_script(
            "return [...document.querySelectorAll('#all-blocks tbody tr')].filter((row) => !row.hidden)"
            ".map((row) => [...row.cells].map((cell) => cell.textContent))")]

    def test_blocks_are_filtered(self):
        self.open("blocks.html")
        columns = [each.rstrip(" ↕") for each in self.texts("#all-blocks thead th")]
        every = self.rows()

        def holds(row, column, wanted):
            text = row[columns.index(column)]
            if column == "Properties":
                return wanted.lower() in text.lower()
            return wanted in text.split(", ") or column == "Group" and text.startswith(wanted + ":")

        for wanted in ({"Group": "ARITHMETIC"}, {"Group": "ARITHMETIC:COUNT"}, {"Directions": "internal"},
                       {"Properties": "Last"}, {"Architectures": "copper"}, {"Maturity": "beta"},
                       {"Group": "MEMORY", "Directions": "input", "Architectures": "meadow", "Maturity": "production"}):
            with self.subTest(wanted):
                self.open("blocks.html")
                for column, value in wanted.items():
                    self.browser.find_element(By.XPATH, f"//label[starts-with(., '{column}')]/*").send_keys(value)
                expected = [row for row in every if all(holds(row, *each) for each in wanted.items())]
                self.assertTrue(0 < len(expected) < len(every))
                self.assertEqual(self.rows(), expected)
                self.assertEqual(self.texts(".filters + .count"), [f"{len(expected)} of {len(every)}"])

    def test_blocks_are_sorted(self):
        self.open("blocks.html")
        for column, key in (("Pins", lambda row: int(row[2])), ("Maturity", lambda row: row[6])):
            for falls in (False, True):
                with self.subTest(column, falls=falls):
                    button = self.browser.find_element(By.XPATH, f"//thead//button[starts-with(., '{column}')]")
                    button.send_keys(Keys.ENTER)
                    rows = self.rows()
                    self.assertEqual(rows, sorted(rows, key=key, reverse=falls))
                    self.assertEqual([each.text for each in self.all("th[aria-sort]")], [button.text])
                    self.assertEqual(self.one("th[aria-sort]").get_attribute("aria-sort"),
                                     "descending" if falls else "ascending")

    outcomes = "section[aria-labelledby=mapping] .choice > h3"

    def test_one_result_of_a_mapping_is_shown(self):
        self.open(COUNTER)
        titles = [each.get_property("textContent") for each in self.all(self.outcomes)]
        self.assertEqual(len(titles), 12)
        self.assertEqual(self.texts(self.outcomes), titles[:1])
        self.open(COUNTER + "#outcome-3")
        self.assertEqual(self.texts(self.outcomes), titles[2:3])
        labels = self.all("section[aria-labelledby=mapping] .tabs label")
        self.assertEqual([each.text for each in labels], titles)
        for label in labels:
            self.run_script("arguments[0].scrollIntoView({block: 'center'})", label)
            label.click()
            self.assertEqual(self.texts(self.outcomes), [label.text])
        self.press(Keys.UP)
        self.assertEqual(self.texts(self.outcomes), titles[-2:-1])
        self.run_script("location.hash = '#outcome-5'")
        self.wait(lambda: self.texts(self.outcomes) == titles[4:5])

    def test_template_is_copied(self):
        self.tell("Browser.grantPermissions", {"permissions": ["clipboardReadWrite", "clipboardSanitizedWrite"]})
        self.open(COUNTER)
        self.browser.find_element(By.XPATH, "//label[. = 'VHDL']/input").send_keys(Keys.SPACE)
        section = self.browser.find_element(By.XPATH, "//section[h3[. = 'VHDL']]")
        section.find_element(By.CSS_SELECTOR, ".copy").send_keys(Keys.ENTER)
        self.wait(lambda: self.texts(".copy") == ["Copied"])
        copied = self.browser.execute_async_script("navigator.clipboard.readText().then(arguments[0])")
        self.assertIn(": COUNT_UP_8_LOAD", copied)
        self.assertEqual(copied, section.find_element(By.TAG_NAME, "pre").get_property("textContent"))

    def test_all_is_there_without_script(self):
        self.tell("Emulation.setScriptExecutionDisabled", {"value": True})
        self.open(COUNTER)
        self.assertEqual(len(self.texts(self.outcomes)), 12)
        self.assertEqual(self.all(".search, .tabs, .copy"), [])
        reached, waiting = set(), [SHIPPED / "index.html"]
        while waiting:
            page = waiting.pop()
            if page not in reached:
                reached.add(page)
                waiting += linked_from(page)
        self.assertEqual(reached, set(SHIPPED.rglob("*.html")))

    def test_pages_fit_narrow_and_wide_windows(self):
        pages = [(SHIPPED, page) for page in KINDS]
        pages += [(HARD, str(page.relative_to(HARD))) for page in HARD.rglob("*.html")]
        for guide, page in pages:
            for width in (360, 1200, 2560):
                for scheme, dark in (("light", False), ("dark", True)):
                    with self.subTest(page=page[:60], width=width, scheme=scheme):
                        self.open(page, width, scheme, guide)
                        self.assertLessEqual(self.run_script("return document.documentElement.scrollWidth"), width)
                        self.assertEqual(light_of(self.colours()["paper"]) < 0.2, dark)

    def colours(self):
        return self.run_script(
            "const style = getComputedStyle(document.documentElement);"
            "return Object.fromEntries(['ink', 'faint', 'accent', 'warn', 'wire', 'paper', 'panel', 'mark']"
            ".map((name) => [name, style.getPropertyValue('--' + name)]))")

    def test_drawings_have_contrast(self):
        # axe cannot tell what is behind a text in a drawing.
        for scheme in ("light", "dark"):
            self.open("index.html", scheme=scheme)
            colours = {name: light_of(colour) for name, colour in self.colours().items()}
            for front, back, least in [(name, back, 4.5) for name in ("ink", "faint", "accent", "warn")
                                       for back in ("paper", "panel")] + [("ink", "mark", 4.5), ("wire", "paper", 3)]:
                with self.subTest(scheme, front=front, back=back):
                    low, high = sorted([colours[front], colours[back]])
                    self.assertGreaterEqual((high + 0.05) / (low + 0.05), least)

    def test_symbol_and_tables_are_printed_on_one_page(self):
        if not shutil.which("pdftotext"):
            self.skipTest("there is no pdftotext")
        self.open("blocks/FLOP_RISE_ENABLE.html")
        printed = base64.b64decode(self.tell("Page.printToPDF", {"paperWidth": 8.27, "paperHeight": 11.69})["data"])
        text = subprocess.run(["pdftotext", "-l", "1", "-", "-"], input=printed, check=True, stdout=subprocess.PIPE)
        first = text.stdout.decode()
        names = [each.text for each in self.all("#table-of-pins tbody th a, #table-of-properties tbody th a")]
        self.assertTrue(len(names) >= 5)
        for expected in ["Symbol", "Pins", "Properties", *names]:
            self.assertIn(expected, first.split())
        self.assertNotIn("Search", first)

    def test_axe_finds_nothing(self):
        axe = pathlib.Path(__file__).with_name("node_modules") / "axe-core/axe.min.js"
        if not axe.exists():
            self.skipTest("axe-core is not installed: npm ci")
        pages = [(SHIPPED, page) for page in KINDS] + [(HARD, "findings.html"), (HARD, "blocks/USER.html")]
        everything = {"preload": False,
                      "runOnly": ["wcag2a", "wcag2aa", "wcag21a", "wcag21aa", "wcag22aa", "best-practice"]}
        # Nothing else depends on the scheme.
        colours = {"preload": False, "runOnly": {"type": "rule", "values": ["color-contrast"]}}
        for guide, page in pages:
            for scheme, rules in (("light", everything), ("dark", colours)):
                with self.subTest(page=page, scheme=scheme):
                    self.open(page, scheme=scheme, guide=guide)
                    if page == "index.html":
                        self.press("/", "count")
                        self.wait(lambda: self.texts(".results li"))
                    self.run_script(axe.read_text(encoding="utf-8"))
                    found = self.browser.execute_async_script(
                        "axe.run(arguments[0]).then((found) => arguments[1](found.violations.map("
                        "(each) => [each.id, each.nodes.map((node) => node.html)])))", rules)
                    self.assertEqual(found, [])


def light_of(colour):
    """The relative luminance of #rrggbb."""
    parts = [int(colour.strip()[at:at + 2], 16) / 255 for at in (1, 3, 5)]
    red, green, blue = (part / 12.92 if part <= 0.04045 else ((part + 0.055) / 1.055) ** 2.4 for part in parts)
    return 0.2126 * red + 0.7152 * green + 0.0722 * blue


def linked_from(page):
    links = []

    class Links(html.parser.HTMLParser):
        def handle_starttag(self, tag, attributes):
            address = urllib.parse.urlsplit(dict(attributes).get("href", "")) if tag == "a" else None
            if address and address.path:
                links.append((page.parent / urllib.parse.unquote(address.path)).resolve())

    Links().feed(page.read_text(encoding="utf-8"))
    return links


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]])
