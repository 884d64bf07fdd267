#!/usr/bin/env python3
"""Loads the pages of omtree-report and omtree-crosstab in a real browser and checks what a reader depends on.

    pages_in_a_browser.py CROSSTAB REPORT SOURCE [SCREENSHOTS]

Ends with status 77, which ctest counts as left out, where no browser is installed.
"""

import subprocess
import sys
import tempfile
from pathlib import Path

from browser import Browser, executable

LEFT_OUT = 77
WIDTHS = (1200, 360)

# What holds for every page at every width and in both schemes; each entry of the list is a complaint.
GENERAL = r"""
(function () {
  var bad = [];
  var headings = [...document.querySelectorAll('h1,h2,h3,h4,h5,h6')];
  if (document.querySelectorAll('h1').length !== 1) bad.push('not one h1');
  headings.forEach(function (h, i) {
    var level = +h.tagName[1];
    if (level > (i ? +headings[i - 1].tagName[1] : 0) + 1) bad.push('heading level skipped at ' + h.textContent);
  });
  if (!document.documentElement.lang) bad.push('no language');
  document.querySelectorAll('table').forEach(function (t) {
    if (!t.caption || !t.caption.textContent) bad.push('table without caption');
  });
  document.querySelectorAll('th').forEach(function (th) {
    if (!/^(row|col)(group)?$/.test(th.getAttribute('scope') || '')) bad.push('th without scope: ' + th.textContent);
  });
  var links = [...document.querySelectorAll('nav a')];
  if (!links.length) bad.push('no outline');
  links.forEach(function (a) {
    var target = document.getElementById(a.getAttribute('href').slice(1));
    if (!target || target.textContent !== a.textContent) bad.push('outline link leads nowhere: ' + a.textContent);
  });
  if (links.length !== document.querySelectorAll('main :is(h2,h3,h4,h5,h6)').length) bad.push('outline is not complete');
  document.querySelectorAll('[src],[href]').forEach(function (e) {
    if (!/^(#|data:)/.test(e.getAttribute('src') || e.getAttribute('href'))) bad.push('not self-contained: ' + e.outerHTML);
  });
  document.querySelectorAll('img').forEach(function (i) {
    if (!i.alt || !i.complete || !i.naturalWidth) bad.push('image not shown');
  });
  var root = document.documentElement;
  if (root.scrollWidth > root.clientWidth) bad.push('page scrolls sideways: ' + root.scrollWidth + ' > ' + root.clientWidth);

  function channels(c) { return c.match(/[\d.]+/g).map(Number); }
  function luminance(c) {
    var v = c.slice(0, 3).map(function (x) { x /= 255; return x <= .04045 ? x / 12.92 : Math.pow((x + .055) / 1.055, 2.4); });
    return .2126 * v[0] + .7152 * v[1] + .0722 * v[2];
  }
  function background(e) {
    for (; e; e = e.parentElement) {
      var c = channels(getComputedStyle(e).backgroundColor);
      if (c.length < 4 || c[3] > 0) return c;
    }
    return [255, 255, 255];
  }
  var walker = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT), texts = 0;
  while (walker.nextNode()) {
    var e = walker.currentNode.parentElement;
    if (!walker.currentNode.data.trim() || /^(SCRIPT|STYLE)$/.test(e.tagName)) continue;
    var a = luminance(channels(getComputedStyle(e).color)), b = luminance(background(e));
    var ratio = (Math.max(a, b) + .05) / (Math.min(a, b) + .05);
    ++texts;
    if (ratio < 4.5) bad.push('contrast ' + ratio.toFixed(2) + ' at ' + walker.currentNode.data.trim());
  }
  if (texts < 5) bad.push('hardly any text');
  return bad;
})()
"""

failures = []


def expect(condition, what):
    if not condition:
        failures.append(what)
        print("FAILED:", what)


def equal(found, expected, what):
    expect(found == expected, f"{what}: {found!r} instead of {expected!r}")


def in_all_views(browser, page, screenshots, check):
    for dark in (False, True):
        for width in WIDTHS:
            view = f"{page.name}, {width} pixels, {'dark' if dark else 'light'}"
            browser.problems.clear()
            browser.open(page, width, dark)
            scheme = browser.ask("getComputedStyle(document.body).backgroundColor")
            expect((scheme == "rgb(255, 255, 255)") != dark, f"{view}: background {scheme}")
            for complaint in browser.ask(GENERAL):
                expect(False, f"{view}: {complaint}")
            check(view)
            for problem in browser.problems:
                expect(False, f"{view}: {problem}")
            if screenshots:
                browser.screenshot(Path(screenshots) / f"{page.stem}-{width}-{'dark' if dark else 'light'}.png")


VISIBLE = "[...document.querySelectorAll('.layer')].filter(l => l.getClientRects().length)"


def check_report(browser, view):
    ask = browser.ask
    equal(ask("document.querySelector('h1').textContent"), "Output", f"{view}: h1")
    equal(ask("[...document.querySelectorAll('table')].map(t => t.querySelectorAll('td.number').length)"),
          [0, 0, 16, 16, 1], f"{view}: numbers in each table")
    equal(ask("[...document.querySelectorAll('details')].length"), 4, f"{view}: folded blocks")
    expect("<leaf value=\"female\"" in ask("document.querySelectorAll('details')[1].textContent"), f"{view}: tree XML")
    equal(ask("document.querySelectorAll('details')[1].open"), False, f"{view}: folded at first")
    expect("Survival tree: from class" in ask("document.querySelector('pre').textContent"), f"{view}: log")
    equal(ask("document.querySelector('.page-title').textContent"), "Who survived the Titanic?", f"{view}: page title")
    equal(ask("document.querySelector('img').alt"), "Survivors – by class", f"{view}: chart title from its code page")
    equal(ask("[...document.querySelectorAll('.notes li')].map(l => l.textContent)"),
          ["a Percentages of the people of that class and sex.", "b Fewer than 30 people."], f"{view}: footnotes")

    equal(ask(f"{VISIBLE}.length"), 3, f"{view}: two single tables and one layer are seen")
    first = ask(f"{VISIBLE}[2].textContent")
    expect("Sex: Male" in first and "670" in first, f"{view}: first layer")
    ask("document.querySelector('select').selectedIndex = 1;"
        "document.querySelector('select').dispatchEvent(new Event('change'))")
    equal(ask(f"{VISIBLE}.length"), 3, f"{view}: still one layer is seen")
    second = ask(f"{VISIBLE}[2].textContent")
    expect("Sex: Female" in second and "106" in second and "670" not in second, f"{view}: second layer")
    equal(ask(f"[...{VISIBLE}[2].querySelectorAll('td sup')].map(s => s.textContent)"), ["b"], f"{view}: marker")
    ask("document.querySelector('nav a[href]:last-of-type').click()")
    expect(ask("location.hash").startswith("#part-"), f"{view}: outline can be clicked")


def check_titanic(browser, view):
    ask = browser.ask
    equal(ask("document.querySelector('h1').textContent"), "Cross tabulation of titanic.csv", f"{view}: h1")
    equal(ask("[...document.querySelectorAll('table')].map(t => t.querySelectorAll('tbody td').length)"), [16, 12],
          f"{view}: body cells")
    equal(ask("[...document.querySelectorAll('td.number')].reduce((s, c) => s + Number(c.textContent), 0)"), 2201,
          f"{view}: everybody is in the tables")
    # Every place of every table is covered once.
    equal(ask("""[...document.querySelectorAll('table')].every(function (t) {
        var taken = [], width = 0;
        [...t.rows].forEach(function (r, y) { var x = 0; [...r.cells].forEach(function (c) {
          while ((taken[y] || [])[x]) ++x;
          for (var i = 0; i < c.rowSpan; ++i) for (var k = 0; k < c.colSpan; ++k) (taken[y + i] = taken[y + i] || [])[x + k] = 1;
          width = Math.max(width, x + c.colSpan); }); });
        return taken.length === t.rows.length && taken.every(r => r.filter(Boolean).length === width); })"""), True,
          f"{view}: grid is complete")


HOSTILE = '</script><script>window.hacked=1</script><img src=x onerror="window.hacked=2">&amp;"\''


def check_hostile(browser, view):
    ask = browser.ask
    equal(ask("typeof window.hacked"), "undefined", f"{view}: nothing from the data runs")
    equal(ask("document.querySelector('h2').textContent"), HOSTILE, f"{view}: title as given")
    expect(HOSTILE in ask("[...document.querySelectorAll('tbody th')].map(t => t.textContent)"), f"{view}: category as given")
    equal(ask("document.querySelectorAll('img').length"), 0, f"{view}: no element from the data")
    expect(ask("document.querySelector('.scroll').scrollWidth > document.querySelector('.scroll').clientWidth"),
           f"{view}: the wide table scrolls inside itself")


def check_long_words(browser, page):
    """Texts that cannot be broken at a blank; each kind of place that texts of a document come to."""
    for place in ("h1", "main h3", "nav a", ".page-title", ".layer-labels", "option", ".notes li", ".table-caption",
                  "figcaption", "summary", "pre", "td", "th", "caption", "main > p:not([class])"):
        browser.open(page, WIDTHS[-1], False)
        places = browser.ask("[...document.querySelectorAll(%r)].map(e => e.textContent = 'x'.repeat(400)).length" % place)
        expect(places > 0, f"{page.name}: no {place}")
        browser.ask("document.querySelectorAll('details').forEach(d => d.open = true)")
        expect(browser.ask("document.documentElement.scrollWidth <= document.documentElement.clientWidth"),
               f"{page.name}: a long word in {place} makes the page scroll sideways")


def main():
    crosstab, report, source = sys.argv[1:4]
    screenshots = sys.argv[4] if len(sys.argv) > 4 else None
    if executable() is None:
        print("left out: no browser is installed (Debian package chromium)")
        return LEFT_OUT
    with tempfile.TemporaryDirectory() as folder:
        folder = Path(folder)
        subprocess.run([report, "--html", folder / "report.html"], check=True)
        subprocess.run([crosstab, Path(source) / "examples/data/titanic.csv", "--sum", "Freq", "--rows", "Class,Sex",
                        "--columns", "Survived", "--layers", "Age", "--group", "Class=Passengers:1st,2nd,3rd",
                        "--names-in-corner", "--html", folder / "titanic.html"], check=True)
        quoted = HOSTILE.replace('"', '""')
        lines = ["name,value"] + [f'"{quoted}",column number {i}' for i in range(40)]
        (folder / "hostile.csv").write_text("\n".join(lines) + "\n", encoding="utf-8")
        subprocess.run([crosstab, folder / "hostile.csv", "--rows", "name", "--columns", "value", "--title", HOSTILE,
                        "--html", folder / "hostile.html"], check=True)
        with Browser() as browser:
            in_all_views(browser, folder / "report.html", screenshots, lambda view: check_report(browser, view))
            in_all_views(browser, folder / "titanic.html", screenshots, lambda view: check_titanic(browser, view))
            in_all_views(browser, folder / "hostile.html", screenshots, lambda view: check_hostile(browser, view))
            check_long_words(browser, folder / "report.html")
    if not failures:
        print("12 views checked")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
