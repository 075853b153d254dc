"""The report in a browser, and what it says without one."""

import json
import re
import subprocess
import sys
import time

import pytest
from fleet_cards import CARD, FAULTS, TOWN, write_fleet
from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.select import Select

from gponval.fleet import Finding, Record
from gponval.fleet._catalogue import catalogue
from gponval.fleet._page import Page
from gponval.fleet._summary import Summary

PATIENCE = 60
# Names and texts come from anywhere.
HOSTILE = "<img src=x onerror=alert(1)>.xml"
BREAKING = '</script><script>alert(2)</script>&amp;"\'{{ 7 * 7 }}'


def audited(folder, html):
    command = (sys.executable, "-m", "gponval.fleet", "audit", folder, "--html", html)
    outcome = subprocess.run(
        [*map(str, command), "--format", "jsonl"],
        stdout=subprocess.PIPE,
        check=False,
        timeout=4 * PATIENCE,
    )
    assert outcome.returncode == 2
    return {record["name"]: record for record in map(json.loads, outcome.stdout.splitlines())}


@pytest.fixture(scope="module")
def report(tmp_path_factory):
    """The page of a fleet, and the records of its cards."""
    folder = tmp_path_factory.mktemp("report")
    cards = write_fleet(folder / "cards", 120, FAULTS)
    (cards / "broken.xml").write_text(BREAKING)
    (cards / HOSTILE).write_bytes(TOWN.replace(b">line-camera</line", b">&lt;b>bold</line", 1))
    (cards / HOSTILE.replace(".xml", ".card")).write_bytes(CARD)
    html = folder / "report.html"
    return html, audited(cards, html)


@pytest.fixture(scope="module")
def chromium():
    options = webdriver.ChromeOptions()
    for option in ("headless=new", "no-sandbox", "disable-dev-shm-usage", "disable-gpu"):
        options.add_argument(f"--{option}")
    options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
    driver = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
    yield driver
    driver.quit()


def wait_for(condition, what):
    end = time.monotonic() + PATIENCE
    while not condition():
        assert time.monotonic() < end, what
        time.sleep(0.05)


def opened(driver, html):
    driver.get(html.as_uri())
    ready = "return document.documentElement.dataset.ready"
    wait_for(lambda: driver.execute_script(ready) == "yes", "the page does not start")
    return driver


@pytest.fixture
def page(chromium, report):
    yield opened(chromium, report[0])
    assert chromium.get_log("browser") == []


def rows(page, table):
    return page.find_elements(By.CSS_SELECTOR, f"#{table} tbody tr")


def cells(page, table, column):
    texts = "return [...document.querySelectorAll(arguments[0])].map(cell => cell.innerText)"
    return page.execute_script(texts, f"#{table} tbody td:nth-child({column})")


def head(page, table, label):
    (found,) = [
        head
        for head in page.find_elements(By.CSS_SELECTOR, f"#{table} th")
        if head.text.startswith(label)
    ]
    return found


def choose(page, table, name, value):
    select = page.find_element(By.CSS_SELECTOR, f"#{table} select[name={name}]")
    Select(select).select_by_visible_text(value)
    chosen = "return arguments[0].selectedOptions[0].text"
    wait_for(lambda: page.execute_script(chosen, select) == value, f"{value} cannot be chosen")


def status_of(page, table):
    return page.find_element(By.CSS_SELECTOR, f"#{table} [role=status]").text


# Once the table is filtered: a row that it replaces would lose the focus.
FOCUS_ON_CARD = """
const buttons = [...document.querySelectorAll("#cards td button")];
const found = buttons.find((button) => button.textContent === arguments[0]);
if (buttons.length > 2 || !found) return false;
found.focus();
return true;
"""


def open_card(page, name):
    words = page.find_element(By.CSS_SELECTOR, "#cards input")
    words.clear()
    words.send_keys(name)
    wait_for(lambda: page.execute_script(FOCUS_ON_CARD, name), f"the table does not have {name}")
    page.switch_to.active_element.send_keys(Keys.ENTER)
    dialog = page.find_element(By.ID, "card")
    wait_for(dialog.is_displayed, "the card does not open")
    return dialog


def test_the_page_says_how_many_cards_there_are(page, report):
    records = report[1].values()
    tiles = [tile.text.split() for tile in page.find_elements(By.CSS_SELECTOR, ".tiles li")]
    counts = {status: int(count) for count, status in tiles}
    for status, count in counts.items():
        assert count == sum(record["status"] == status for record in records)
    assert page.title.startswith(f"{len(records)} cards: ")


def test_no_request_leaves_the_page(chromium, report):
    chromium.get_log("performance")
    opened(chromium, report[0])
    open_card(chromium, "town-000.xml")
    messages = [json.loads(entry["message"])["message"] for entry in chromium.get_log("performance")]
    asked = {
        message["params"]["request"]["url"]
        for message in messages
        if message["method"] == "Network.requestWillBeSent"
    }
    assert {url for url in asked if not url.startswith("data:")} == {report[0].as_uri()}
    html = report[0].read_text()
    for address in re.findall(r"(?:src|href)=\"([^\"]*)\"", html):
        assert address.startswith(("#", "data:"))


def test_findings_are_those_of_the_records(page, report):
    expected = sorted(
        (record["name"], finding["result"], finding["request"])
        for record in report[1].values()
        for finding in record["findings"]
    )
    shown = zip(*(cells(page, "findings", column) for column in (1, 2, 3)))
    assert sorted(shown) == expected


def test_the_table_filters(page, report):
    choose(page, "findings", "request", "service_port_global_validation")
    wait_for(lambda: cells(page, "findings", 1) == ["same-vlan.xml"], "nothing is filtered")
    assert status_of(page, "findings").startswith("1 of ")
    choose(page, "findings", "request", "all")
    page.find_element(By.CSS_SELECTOR, "#findings input").send_keys("SAME-vlan conflicting")
    wait_for(lambda: cells(page, "findings", 1) == ["same-vlan.xml"], "no words are found")
    choose(page, "findings", "result", "WARNING")
    wait_for(lambda: rows(page, "findings") == [], "an error is a warning")
    choose(page, "cards", "status", "unreadable")
    wait_for(lambda: cells(page, "cards", 1) == ["broken.xml"], "no status is found")


def test_the_table_sorts(page):
    request = head(page, "findings", "Request")
    assert request.get_attribute("aria-sort") == "none"
    request.find_element(By.TAG_NAME, "button").click()
    assert head(page, "findings", "Request").get_attribute("aria-sort") == "ascending"
    assert cells(page, "findings", 3) == sorted(cells(page, "findings", 3))
    head(page, "findings", "Request").find_element(By.TAG_NAME, "button").click()
    assert head(page, "findings", "Request").get_attribute("aria-sort") == "descending"
    assert cells(page, "findings", 3) == sorted(cells(page, "findings", 3), reverse=True)
    assert head(page, "findings", "Card").get_attribute("aria-sort") == "none"


def test_long_tables_show_more_on_demand(page, report):
    assert len(rows(page, "cards")) == 100
    page.find_element(By.CSS_SELECTOR, "#cards .more").click()
    assert len(rows(page, "cards")) == len(report[1])
    assert not page.find_element(By.CSS_SELECTOR, "#cards .more").is_displayed()


@pytest.mark.parametrize("name", ["town-007.xml", "line-profile.xml", "broken.xml", HOSTILE])
def test_the_part_of_a_card_is_its_record(page, report, name):
    record = report[1][name]
    dialog = open_card(page, name)
    assert dialog.find_element(By.TAG_NAME, "h2").text == name
    text = dialog.text
    assert record["status"] in text
    assert record["why"] in text
    lines = dialog.find_elements(By.CSS_SELECTOR, "tbody tr")
    assert len(lines) == len(record["links"])
    for line, link in zip(lines, record["links"]):
        shown = [cell.text for cell in line.find_elements(By.TAG_NAME, "td")]
        assert shown[0].startswith(link["path"].replace("/config/interface/", ""))
        assert link["rejected"] in shown[0]
        assert shown[1] == f"{link['onus']:,}"
        if link["share"] is None:
            assert shown[2:] == ["not checked", "-", "-"]
            continue
        assert shown[2] == f"{100 * link['share']:.1f} %"
        assert shown[3:] == [f"{link['total_room']:,}", f"{link['fixed_room']:,}"]
        width = line.find_element(By.CSS_SELECTOR, ".track div").get_attribute("style")
        percent = float(re.search(r"width: ([0-9.]+)%", width)[1])
        assert percent == pytest.approx(min(100 * link["share"], 100), abs=0.01)
    found = dialog.find_elements(By.CSS_SELECTOR, ".finding")
    assert len(found) == len(record["findings"])
    for part, finding in zip(found, record["findings"]):
        for word in ("request", "path", "result", "text"):
            assert finding[word] in part.text
        assert catalogue().explain(finding["request"], finding["text"]).meaning in part.text
    # Escape closes it, and the name of the card has the focus again.
    page.switch_to.active_element.send_keys(Keys.ESCAPE)
    wait_for(lambda: not dialog.is_displayed(), "the card does not close")
    assert page.switch_to.active_element.text == name


def test_everything_can_be_reached_by_keyboard(page):
    reached = []
    for _ in range(12):
        page.switch_to.active_element.send_keys(Keys.TAB)
        active = page.switch_to.active_element
        name = active.get_attribute("name") or active.text
        reached.append(f"{active.tag_name} {name}")
    for wanted in ("a To the findings", "summary As a table", "input words", "select result"):
        assert wanted in reached
    assert "button Card" in reached
    labels = "return [...document.querySelectorAll('input, select')].map(e => e.labels.length)"
    assert set(page.execute_script(labels)) == {1}


@pytest.mark.parametrize("width", [320, 390, 1280])
def test_no_width_needs_scrolling_sideways(page, width):
    metrics = {"width": width, "height": 800, "deviceScaleFactor": 1, "mobile": width < 600}
    page.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", metrics)
    try:
        assert page.execute_script("return document.documentElement.scrollWidth") <= width
        dialog = open_card(page, "line-profile.xml")
        assert dialog.size["width"] <= width
        fits = "return arguments[0].scrollWidth <= arguments[0].clientWidth"
        assert page.execute_script(fits, dialog)
    finally:
        page.execute_cdp_cmd("Emulation.clearDeviceMetricsOverride", {})


def test_texts_of_cards_are_never_markup(page, report):
    page.find_element(By.CSS_SELECTOR, "#cards .more").click()
    assert HOSTILE in cells(page, "cards", 1)
    inside = "return document.querySelectorAll('img, tbody b, script:not([id])').length"
    assert page.execute_script(inside) == 1  # its own script
    assert "alert(2)</script>" not in report[0].read_text()


def test_markup_in_every_text_is_escaped(chromium, tmp_path):
    page, summary = Page(), Summary()
    finding = Finding(BREAKING, BREAKING, "ERROR", BREAKING)
    for record in (
        Record(BREAKING, "refused", findings=[finding]),
        Record(BREAKING + "2", "unreadable", why=BREAKING),
    ):
        page.add(record)
        summary.add(record)
    (tmp_path / "page.html").write_text(page.html(summary, 1))
    opened(chromium, tmp_path / "page.html")
    assert cells(chromium, "findings", 1) == [BREAKING]
    assert BREAKING in open_card(chromium, BREAKING).text
    assert chromium.find_element(By.CSS_SELECTOR, "main code").text == BREAKING
    assert chromium.get_log("browser") == []


def test_every_text_of_the_catalogue_is_explained():
    known = catalogue()
    assert len(known.explanations) > 50
    for explanation in known.explanations:
        found = known.explain(explanation.request, explanation.text)
        assert found == explanation or found.request == explanation.request
        assert found.meaning


@pytest.mark.parametrize(
    ("request_name", "text", "words"),
    [
        ("onu_bw_check", "Line profile a b doesn't not exist.", "Create it"),
        ("ponlink_bw_check", "Line profile a doesn't not exist.\nLine profile b", "Create it"),
        ("service_port_global_validation", "Service-port limit exceeded: Installed 9 of 8 allowed", "Delete"),
        ("line_confirmation_warning", "Failed accessing confd data.", "single quote"),
    ],
)
def test_a_text_has_its_advice(request_name, text, words):
    assert words in catalogue().explain(request_name, text).meaning


def test_a_text_that_is_not_in_the_catalogue_has_none():
    assert catalogue().explain("onu_bw_check", "") is None
    assert catalogue().explain("new_check", "No such text.") is None
