#include "examples/page/HtmlStyle.h"

namespace page {

// Colours: text on its background has a contrast of at least 7, secondary text and links of at least 4.5, in both
// schemes.
char const* const StyleSheet = R"css(
:root {
  color-scheme: light dark;
  --paper: #ffffff; --ink: #1a1d21; --quiet: #51585f; --link: #0b57a4;
  --line: #c3c9cf; --rule: #6b747c; --head: #eef2f6; --band: #f6f8fa;
}
@media (prefers-color-scheme: dark) {
  :root {
    --paper: #15181b; --ink: #e7eaed; --quiet: #aab2ba; --link: #86baf5;
    --line: #3b434a; --rule: #8b949d; --head: #22282e; --band: #1b2025;
  }
}
* { box-sizing: border-box; }
html { scroll-padding-top: 1rem; }
body {
  margin: 0; background: var(--paper); color: var(--ink);
  font: 1rem/1.5 system-ui, -apple-system, "Segoe UI", "Liberation Sans", Arial, sans-serif;
}
.page { max-width: 76rem; margin: 0 auto; padding: 1.5rem 1rem 4rem; }
a { color: var(--link); }
a:focus-visible, select:focus-visible, summary:focus-visible, .scroll:focus-visible {
  outline: 3px solid var(--link); outline-offset: 2px;
}
h1 { font-size: 1.7rem; line-height: 1.2; margin: 0 0 1rem; overflow-wrap: anywhere; }
h2 { font-size: 1.35rem; margin: 2.5rem 0 .75rem; padding-top: .75rem; border-top: 1px solid var(--line); }
h3 { font-size: 1.1rem; margin: 1.75rem 0 .5rem; }
h4, h5, h6 { font-size: 1rem; margin: 1.5rem 0 .5rem; }
h2, h3, h4, h5, h6, p, figcaption, summary, .notes li { overflow-wrap: anywhere; }
nav { font-size: .95rem; border: 1px solid var(--line); border-radius: .5rem; padding: .75rem 1rem; background: var(--band); }
nav ul { list-style: none; margin: 0; padding: 0; }
nav ul ul { padding-left: 1rem; }
nav li { margin: .15rem 0; overflow-wrap: anywhere; }
nav a { text-decoration: none; display: inline-block; padding: .1rem 0; }
nav a:hover { text-decoration: underline; }
nav .outline-title { margin: 0 0 .35rem; font-weight: 600; color: var(--quiet); }
@media (min-width: 60rem) {
  .columns { display: grid; grid-template-columns: 15rem minmax(0, 1fr); gap: 2.5rem; align-items: start; }
  nav { position: sticky; top: 1rem; max-height: calc(100vh - 2rem); overflow: auto; }
  main h2:first-child { border-top: 0; margin-top: 0; padding-top: 0; }
}
main { min-width: 0; }
.page-title { font-size: 1.15rem; font-style: italic; color: var(--quiet); text-align: center; margin: 1.5rem 0; }
.layer { margin: 1rem 0 1.5rem; }
.scroll { overflow-x: auto; max-width: 100%; }
table { border-collapse: collapse; border-block: 2px solid var(--rule); font-variant-numeric: tabular-nums; }
caption { text-align: left; font-weight: 600; padding: 0 0 .5rem; }
caption .said {
  position: absolute; width: 1px; height: 1px; overflow: hidden; clip-path: inset(50%); white-space: nowrap;
}
caption .layer-labels { display: block; font-weight: 400; color: var(--quiet); }
th, td { padding: .3rem .75rem; border: 1px solid var(--line); vertical-align: top; text-align: left; }
th { background: var(--head); font-weight: 600; }
thead th { vertical-align: bottom; }
thead th.over { text-align: center; }
thead tr:last-child th { border-bottom: 2px solid var(--rule); }
td.number, th.number { text-align: right; white-space: nowrap; }
td.corner { background: var(--head); }
sup { font-size: .75em; line-height: 0; margin-left: .1em; }
.notes, .table-caption { font-size: .9rem; color: var(--quiet); margin: .5rem 0; }
.notes { list-style: none; padding: 0; }
.switch { display: flex; flex-wrap: wrap; gap: .5rem; align-items: center; margin: .5rem 0; }
.switch[hidden], .layer[hidden] { display: none; }
select {
  font: inherit; color: inherit; background: var(--paper); border: 1px solid var(--rule); border-radius: .35rem;
  padding: .35rem .5rem; min-width: 0; max-width: 100%;
}
pre {
  font: .9rem/1.45 ui-monospace, "Liberation Mono", Menlo, monospace; margin: .75rem 0; padding: .75rem 1rem; overflow-x: auto;
  background: var(--band); border: 1px solid var(--line); border-radius: .35rem;
}
figure { margin: 1rem 0; }
figure img { max-width: 100%; height: auto; background: #ffffff; border: 1px solid var(--line); border-radius: .35rem; }
figcaption { font-size: .9rem; color: var(--quiet); }
details { margin: .75rem 0; }
summary { cursor: pointer; padding: .25rem 0; color: var(--link); }
@media print {
  nav, .switch { display: none; }
  .layer[hidden] { display: block; }
}
)css";

// Shows the chosen layer of each table and hides the others. Without scripts nothing is hidden.
char const* const Script = R"js(
document.querySelectorAll('.layers').forEach(function (group) {
  var layers = group.querySelectorAll('.layer');
  var box = group.querySelector('.switch');
  var select = box.querySelector('select');
  function show() {
    layers.forEach(function (layer, i) { layer.hidden = i !== select.selectedIndex; });
  }
  box.hidden = false;
  select.addEventListener('change', show);
  show();
});
)js";

} // namespace page
