#!/usr/bin/python3
"""Test the pages of `mcec-lab compare --html` and `watch --listen` in a browser.

  tests/page_test.py MCEC-LAB FOLDER

Dumps, pages and prints remain in FOLDER for inspection. The test runs with the Python of Debian, which has the driver of
the browser. Exit status 77 if there is no browser.
"""
import base64
import contextlib
import json
import os
import pathlib
import re
import shutil
import socket
import subprocess
import sys
import tempfile
import time

from common import expect, faults, free_port

try:
    from selenium import webdriver
    from selenium.common import exceptions
    from selenium.webdriver.chrome.service import Service
    from selenium.webdriver.common.action_chains import ActionChains
    from selenium.webdriver.common.keys import Keys
except ImportError:
    webdriver = None
browser, service = shutil.which("chromium"), shutil.which("chromedriver")
if not (webdriver and browser and service and shutil.which("pdftotext")):
    print("skipped: chromium, chromium-driver, poppler-utils or python3-selenium is missing")
    sys.exit(77)

lab, folder = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve()
folder.mkdir(parents=True, exist_ok=True)


def check(what, found, expected):
    expect(found == expected, what, f"expected {expected!r}, found {found!r}")


HOSTILE = "</script><img src=x onerror=alert(1)>\"'&amp;\u202e😀"
REGION = "</td><b onclick='x'>\"&lt;;%s{}"


def dump(name, mode, instances=None, off=(), guard="false", region="DC1", channels=None):
    if channels is None:
        channels = {"PortChannel2": {}, "PortChannel10": {"root_guard": guard}}
    vlans = [*range(10, 60), *range(700, 710)]
    return {
        "DEVICE_METADATA": {"localhost": {"hostname": name, "mac": "00:11:22:33:44:55"}},
        "STP": {"GLOBAL": {"mode": mode}},
        "STP_MST": {"GLOBAL": {"name": region, "revision": "7"}},
        "STP_MST_INST": {f"MST_INSTANCE|{i}": {"vlan_list": v}
                         for i, v in (instances or {}).items()},
        "STP_VLAN": {f"Vlan{v}": {"enabled": "true"} for v in vlans if v not in off},
        "STP_PORT": {channel: {"enabled": "true", **row} for channel, row in channels.items()},
        "MCLAG_DOMAIN": {"1": {"peer_link": "PortChannel1"}},
        "MCLAG_INTERFACE": {f"1|{channel}": {} for channel in channels},
        "VLAN": {f"Vlan{v}": {} for v in vlans},
        "VLAN_MEMBER": {f"Vlan{v}|PortChannel10": {} for v in vlans if v < 50},
    }


ONE = {1: ["10-20", "700"], 2: ["30-39"]}
TWO = {1: ["10-20"], 2: ["30-39", "700"]}
ODD = [str(vlan) for vlan in range(11, 1200, 2)]
GUARDS = [{"root_guard": guard, "edge_port": edge} for guard in ("true", "false")
          for edge in ("true", "false")]
# Channels with twelve different pairs of settings, and sixty channels with the same.
MANY = [{**{f"PortChannel{300 + 4 * i + k}": (GUARDS[i], GUARDS[k])[side]
            for i in range(4) for k in range(4) if i != k},
         **{f"PortChannel{i}": {"root_guard": ("true", "false")[side]} for i in range(100, 160)}}
        for side in (0, 1)]
MANY[0].update({f"PortChannel{i}": {} for i in range(200, 204)})
ACCEPT = [{"scope": "PortChannel1*", "parameter": "ifi-port-guard", "reason": "<i>moves</i> in May"}]
# Name, dumps, exit status, heading, texts of the page, names of the cells of VLANs.
PAIRS = [
    ("agree", dump("leaf-1", "mst", ONE), dump("leaf-2", "mst", ONE), 0, "The pair agrees",
     ["All 3 scopes agree", "0 of 2"],
     {0: "instance 0 on both: same", 700: "instance 1 on both: same"}),
    ("differ\"><img src=x onerror=alert(2)>", dump(HOSTILE, "mst", ONE, guard="true", region=REGION),
     dump("leaf-2", "mst", TWO), 1, "The pair does not agree",
     ["2 of 3 scopes differ", "mst-region-name", "≠ different", "PortChannel10", "1 of 2", REGION,
      HOSTILE.replace("\u202e", "\\xe2\\x80\\xae")],
     {700: "instance 1 on left, 2 on right: different", 15: "instance 1 on both: same"}),
    ("vlans", dump("spine-1", "pvst", off={12, 55}), dump("spine-2", "pvst", off={14, 15}), 1,
     "The pair does not agree", ["1 of 3 scopes differ", "stp-endis", "Twin VLANs that fail"],
     {12: "disabled on left, enabled on right: twin VLAN, fails",
      55: "disabled on left, enabled on right: differs, but is not compared",
      16: "enabled on both: twin VLAN, passes", 4000: "enabled on both: same"}),
    ("off", dump("leaf-1", "none"), dump("leaf-2", "mst"), 1,
     "The pair does not agree: spanning tree is off on left", ["No check was made"], {}),
    ("incomplete", dump("leaf-1", "mst", channels={}), dump("leaf-2", "mst", channels={}), 3,
     "Not compared: neither switch has a multi-chassis channel", ["The one scope agrees"],
     {4000: "instance 0 on both: same"}),
    ("intended", dump("plan", "mst", ONE, guard="true"), dump("leaf-2", "mst", ONE), 0,
     "The pair agrees", ["The comparison is strict", "its intended state",
                         "differences make 1 scope agree: PortChannel10.", "different",
                         "Accepted: <i>moves</i> in May", "intended plan", "actual leaf-2"],
     {15: "instance 1 on both: same"}),
    ("many", dump("leaf-1", "mst", {1: ODD}, channels=MANY[0]),
     dump("leaf-2", "mst", {2: ODD}, channels=MANY[1]), 1, "The pair does not agree",
     ["77 of 77 scopes differ", "PortChannel100-159,PortChannel307 (61 channels)",
      "STP_PORT|PortChannel100-159,PortChannel307 root_guard: true on right, or false on left",
      "Fix: add MCLAG_INTERFACE|1|PortChannel200-203 on right", "warning: "],
     {11: "instance 1 on left, 2 on right: different"}),
]
ARGUMENTS = {"intended": ["--strict", "--accept", "accept.yaml", "--intended"]}

# Collects the properties of a page in one call, because each call of the driver is slow.
INSPECT = """
const all = (selector) => [...document.querySelectorAll(selector)];
const luminance = (color) => {
  const [r, g, b] = color.match(/[0-9.]+/g).map((part) => {
    const share = part / 255;
    return share <= 0.04045 ? share / 12.92 : ((share + 0.055) / 1.055) ** 2.4;
  });
  return 0.2126 * r + 0.7152 * g + 0.0722 * b;
};
const background = (element) => {
  const color = element ? getComputedStyle(element).backgroundColor : "rgb(255, 255, 255)";
  return color.endsWith(", 0)") ? background(element.parentElement) : color;
};
const texts = [];
const walker = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
while (walker.nextNode()) {
  const element = walker.currentNode.parentElement;
  if (walker.currentNode.data.trim() && element.checkVisibility()) texts.push(element);
}
const textsWithoutContrast = (scheme) => {
  document.documentElement.style.colorScheme = scheme;
  return texts.filter((element) => {
    const [a, b] = [luminance(getComputedStyle(element).color), luminance(background(element))];
    return (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05) < 4.5;
  }).length;
};
const levels = all("h1, h2, h3").map((heading) => heading.tagName[1]);
const cells = all("[role=grid] > [role=row] > [role=gridcell]");
return {
  title: document.title,
  h1: document.querySelector("h1").innerText.slice(2),
  text: document.body.textContent,
  cells: cells.map((cell) => cell.ariaLabel),
  found: {
    "texts in light without contrast": textsWithoutContrast("light"),
    "texts in dark without contrast": textsWithoutContrast("dark"),
    "texts of more than 300 characters":
      all("td, th, li, dd, h3").filter((element) => element.innerText.length >= 300).length,
    "elements from names of switches": all("img, main b:not(.number), [onclick]").length,
    "scripts": document.scripts.length,
    "tables without a caption": all("table:not(:has(caption))").length,
    "column headers without a scope": all("th:not([scope])").length,
    "skipped levels of headings":
      levels.filter((level, i) => level - (i ? levels[i - 1] : 0) > 1).length,
    "cells": cells.length,
    "cells in the tab order": cells.filter((cell) => cell.tabIndex >= 0).length,
    "files loaded": performance.getEntriesByType("resource").filter(({ name }) => name !== location.href).length,
  },
};"""

# Records the focus after each key; null: outside of the page.
RECORD_KEYS = """
const cells = [...document.querySelectorAll("[role=gridcell]")];
cells[130].focus();
window.steps = [];
addEventListener("keyup", () => steps.push(document.activeElement === document.body ? [null, ""] :
  [cells.indexOf(document.activeElement), document.getElementById("named").textContent.split(":")[0]]));
"""

# Checks that row and column headers are still visible after the grid is scrolled to its end.
HEADERS_ARE_STICKY = """
const scroll = document.querySelector(".scroll");
const places = () => [document.querySelectorAll(".head")[64].getBoundingClientRect().left,
                      document.querySelector(".ticks").getBoundingClientRect().top];
scroll.scrollIntoView();
const before = places();
scroll.scrollTo(scroll.scrollWidth, scroll.scrollHeight);
return scroll.scrollLeft > 100 && String(places()) === String(before);"""


@contextlib.contextmanager
def on_phone(driver):
    driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
        "width": 380, "height": 800, "deviceScaleFactor": 1, "mobile": True})
    check("wider than a phone",
          driver.execute_script("return document.documentElement.scrollWidth > 380"), False)
    yield
    driver.execute_cdp_cmd("Emulation.clearDeviceMetricsOverride", {})


def check_common(name, page, cells):
    expected = {"scripts": 1, "cells": cells, "cells in the tab order": min(cells, 1)}
    for what, found in page["found"].items():
        check(f"{name}: {what}", found, expected.get(what, 0))


def check_comparison(driver, name, heading, texts, vlans):
    driver.get((folder / f"{name}.html").as_uri())
    page = driver.execute_script(INSPECT)
    check("title", page["title"].startswith(heading + ": "), True)
    check("h1", page["h1"], heading)
    spaced = " ".join(page["text"].split())
    for expected in texts:
        check("text of the page", expected if expected in spaced else spaced[:3000], expected)
    check("times and version", [len(re.findall(pattern, page["text"])) for pattern in (
        r"Generated \d{4}-\d\d-\d\d \d\d:\d\d:\d\d \+0000 by mcec-lab \d", "2001-09-09 01:46:40")],
        [1, 2])
    check_common(name, page, 4096 if vlans else 0)
    for vlan, expected in vlans.items():
        check("name of a cell", page["cells"][vlan], f"VLAN {vlan}: {expected}")


def check_grid(driver):
    """Test pointer, keys, and a narrow window on the current page."""
    press = lambda *keys: ActionChains(driver).send_keys(keys).perform()
    cell = driver.find_elements("css selector", "[role=gridcell]:is(.pass, .fail)")[0]
    driver.execute_script("arguments[0].scrollIntoView({block: 'center'})", cell)
    ActionChains(driver, duration=0).move_to_element(cell).perform()
    named = driver.find_element("css selector", "[role=status]").text
    check("on hover", named, cell.accessible_name)
    check("named", named.split(":")[0], "VLAN 10")
    moves = ((Keys.ARROW_RIGHT, 131), (Keys.ARROW_DOWN, 195), (Keys.ARROW_LEFT, 194), (Keys.ARROW_UP, 130),
             (Keys.END, 191), (Keys.HOME, 128), (Keys.PAGE_DOWN, 640), (Keys.PAGE_UP, 128),
             (Keys.PAGE_UP, 0), (Keys.ARROW_LEFT, 0), (Keys.ARROW_UP, 0))
    driver.execute_script(RECORD_KEYS)
    press(*[key for key, _ in moves])
    check("after keys", driver.execute_script("return steps"), [[to, f"VLAN {to}"] for _, to in moves])
    # One round of the tab order, from the end of the page to its end.
    driver.execute_script("steps = []")
    press(*40 * [Keys.TAB])
    stops = [stop for stop, _ in driver.execute_script("return steps")]
    once = stops[stops.index(None) + 1:]
    once = once[:once.index(None)]
    check("cells of the grid in the tab order", [stop for stop in once if stop >= 0], [0])
    with on_phone(driver):
        check("hint", "Scroll" in driver.find_element("id", "more").text, True)
        check("sticky headers", driver.execute_script(HEADERS_ARE_STICKY), True)


def check_print(driver, name, height, shown, printed):
    """Without scripts: folded parts are printed, and no page ends with a heading.

    At these heights a heading without the rule against page breaks would end a page.
    """
    driver.get((folder / f"{name}.html").as_uri())
    with on_phone(driver):
        text = " ".join(driver.find_element("tag name", "body").text.split())
    check(f"{name} without a script", shown in text, True)
    headings = [" ".join(text.split()) for text in driver.execute_script(
        "return [...document.querySelectorAll('h2, caption, thead, dt')].map((e) => e.innerText)")]
    pdf = folder / f"{name}.pdf"
    pdf.write_bytes(base64.b64decode(
        driver.execute_cdp_cmd("Page.printToPDF", {"paperHeight": height})["data"]))
    text = subprocess.run(["pdftotext", "-layout", pdf, "-"], capture_output=True, text=True,
                          check=True, timeout=60).stdout
    check(f"{pdf.name} complete", re.search(printed, text) is not None, True)
    pages = [page.strip().splitlines() for page in text.split("\f") if page.strip()]
    lasts = [" ".join(page[-1].split()) for page in pages]
    check(f"headings at the end of pages of {pdf.name}", [last for last in lasts if any(
        heading.endswith(last) for heading in headings)], [])


def within(what, condition, seconds=30):
    """Wait for a condition. The driver may not find elements while the page is updated."""
    ends, error = time.monotonic() + seconds, None
    while True:
        try:
            if condition():
                return
        except exceptions.WebDriverException as missing:
            error = missing
        assert time.monotonic() < ends, (what, error)
        time.sleep(0.1)


@contextlib.contextmanager
def watching():
    """Serve all pairs with one watch."""
    port = free_port()
    lines = [f"{name}\t{name}-left.json\t{name}-right.json\n" for name, *_ in PAIRS]
    (folder / "pairs.tsv").write_text("".join(lines))
    watch = subprocess.Popen([str(lab), "watch", "--pairs", "pairs.tsv", "--listen", f"127.0.0.1:{port}"],
                             cwd=folder, stdout=subprocess.DEVNULL)
    try:
        within("the server", lambda: socket.socket().connect_ex(("127.0.0.1", port)) == 0)
        yield watch, f"http://127.0.0.1:{port}/"
    finally:
        watch.kill()
        watch.wait()


def check_fleet(driver, watch, address):
    """Test the page of all pairs while one of them changes."""
    ask = driver.execute_script
    heading = "return document.querySelector('h1').textContent.slice(2)"
    caption = "return document.querySelector('caption').textContent"
    driver.get(address)
    within("all verdicts", lambda: ask(heading) == f"Disagreement: 5 of {len(PAIRS)} pairs")
    check_common("fleet", ask(INSPECT), 0)
    with on_phone(driver):
        pass

    ask("window.same = true; document.querySelector('a[href=\"pair/agree\"]').focus()")
    shutil.copy(folder / "off-right.json", folder / "agree-right.json")
    within("a change", lambda: ask(heading).startswith("Disagreement: 6 of"))
    check("updated without loading", ask("return window.same"), True)
    check("focus", ask("return document.activeElement.getAttribute('href')"), "pair/agree")
    driver.find_element("id", "name").send_keys("ONERROR")
    within("the filter", lambda: ask(caption) == f"1 of {len(PAIRS)} pairs")
    ask("document.querySelector('tbody a').click()")
    within("the pair's page", lambda: driver.title.startswith("The pair does not agree: "))
    check("messages", driver.get_log("browser"), [])
    driver.get(address)
    watch.kill()
    within("the message that the watch has ended", lambda: driver.find_element("id", "stale").is_displayed())


def check_without_script(driver, time_of_page):
    within("update without scripts", lambda: driver.find_element("id", "time").text != time_of_page)

    def is_filtered():
        # The page may update while the text is typed.
        name = driver.find_element("id", "name")
        if name.get_attribute("value") != "vlans":
            name.clear()
            name.send_keys("vlans", Keys.ENTER)
        return driver.find_element("tag name", "caption").text == f"1 of {len(PAIRS)} pairs"
    within("filter without scripts", is_filtered)

    check_print(driver, "vlans", 8, "The pair does not agree", "Twin VLANs that fail")
    check_print(driver, "many", 6.5, "The pair does not agree", r"1195,\s*1197")
    check_print(driver, PAIRS[1][0], 6.5, "700 instance 1 instance 2 different", "Scopes that differ")


def start_browser(profile):
    options = webdriver.ChromeOptions()
    options.binary_location = browser
    for flag in ("headless=new", "no-sandbox", "disable-gpu", "disable-quic", "no-first-run",
                 "disable-background-networking", "disable-component-update", "disable-sync",
                 "disable-dev-shm-usage", "window-size=1200,1000", f"user-data-dir={profile}"):
        options.add_argument("--" + flag)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    driver = webdriver.Chrome(service=Service(service), options=options)
    driver.set_page_load_timeout(60)
    return driver


os.environ.update(NO_PROXY="localhost,127.0.0.1", TZ="UTC")
(folder / "accept.yaml").write_text(json.dumps(ACCEPT))
for name, left, right, status, *_ in PAIRS:
    sources = [f"{name}-left.json", f"{name}-right.json"]
    for source, content in zip(sources, (left, right)):
        (folder / source).write_text(json.dumps(content))
        os.utime(folder / source, (1e9, 1e9))
    ran = subprocess.run([str(lab), "compare", "--html", f"{name}.html", *ARGUMENTS.get(name, []), *sources],
                         cwd=folder, timeout=60, stdout=subprocess.DEVNULL)
    check(f"exit status of {name}", ran.returncode, status)

with (tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as profile, watching() as (watch, address),
      start_browser(profile) as driver):
    # The window without scripts updates its page while comparisons are tested in the other.
    plain = driver.current_window_handle
    driver.execute_cdp_cmd("Emulation.setScriptExecutionDisabled", {"value": True})
    driver.get(address + "?verdict=disagree")
    time_of_page = driver.find_element("id", "time").text
    driver.switch_to.new_window("window")
    scripted = driver.current_window_handle
    # Scripts update every 0.25 s instead of 5 s.
    driver.execute_cdp_cmd("Page.addScriptToEvaluateOnNewDocument", {
        "source": "const wait = setTimeout; window.setTimeout = (run, pause) => wait(run, pause / 20);"})
    for name, _, _, _, *expected in PAIRS:
        check_comparison(driver, name, *expected)
        if name == "vlans":
            check_grid(driver)
    driver.switch_to.window(plain)
    check_without_script(driver, time_of_page)
    driver.switch_to.window(scripted)
    check_fleet(driver, watch, address)
print(f"{len(faults)} faults; pages and prints are in {folder}")
sys.exit(bool(faults))
