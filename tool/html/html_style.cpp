#include "tool/html/html_style.h"

namespace tool {

std::string_view HtmlStyle() {
    return R"css(
:root {
  color-scheme: light dark;
  --page: #ffffff; --panel: #f5f6f7; --text: #1c2126; --muted: #59636e; --rule: #dfe3e6;
  --blue: #2b5c8f; --area: #2b5c8f1f;
  --good: #1c6e46; --good-panel: #eaf5ef;
  --attention: #875200; --attention-panel: #fdf3e0;
  --bad: #a3302a; --bad-panel: #fcecea;
}
@media (prefers-color-scheme: dark) {
  :root {
    --page: #15181b; --panel: #1e2226; --text: #e4e7ea; --muted: #9da7b1; --rule: #33393f;
    --blue: #7fb0e0; --area: #7fb0e026;
    --good: #78cda0; --good-panel: #17291f;
    --attention: #e6b45c; --attention-panel: #2d2413;
    --bad: #f09a92; --bad-panel: #321b19;
  }
}
* { box-sizing: border-box; }
html { -webkit-text-size-adjust: 100%; text-size-adjust: 100%; }
body {
  margin: 0 auto; padding: 3.5rem 1.5rem 4rem; max-width: 64rem;
  background: var(--page); color: var(--text);
  font: 1rem/1.6 system-ui, -apple-system, "Segoe UI", Roboto, "Helvetica Neue", Arial, sans-serif;
  overflow-wrap: anywhere;
}
h1, h2, h3, p, dl, dd, ol, ul, figure { margin: 0; }
h1 { font-size: 2rem; line-height: 1.2; font-weight: 650; letter-spacing: -0.015em; }
h2 { font-size: 1.3rem; line-height: 1.3; font-weight: 650; letter-spacing: -0.01em; }
h3 { font-size: 1rem; line-height: 1.5; font-weight: 600; }
a { color: var(--blue); text-underline-offset: 0.15em; }
code, .command, .place { font-family: ui-monospace, SFMono-Regular, Menlo, Consolas, "Liberation Mono", monospace; }
section { margin-top: 3.75rem; }
section > h2 + * { margin-top: 1rem; }
section > p { max-width: 42rem; }
section > p + p { margin-top: 0.6rem; }
table + .note { margin-top: 0.9rem; font-size: 0.875rem; }
.note { color: var(--muted); }
.eyebrow { color: var(--muted); font-size: 0.875rem; margin-bottom: 0.35rem; }

.verdict {
  margin-top: 1.75rem; padding: 1.15rem 1.4rem 1.25rem; border-left: 0.3rem solid; border-radius: 0.25rem;
}
.verdict .state { font-size: 0.875rem; font-weight: 650; }
.verdict .sentence { color: var(--text); font-size: 1.25rem; line-height: 1.45; margin-top: 0.2rem; }
.verdict .why { color: var(--text); margin-top: 0.5rem; white-space: pre-line; }
.verdict.good { color: var(--good); background: var(--good-panel); }
.verdict.attention { color: var(--attention); background: var(--attention-panel); }
.verdict.bad { color: var(--bad); background: var(--bad-panel); }

.figures { display: grid; grid-template-columns: repeat(auto-fit, minmax(7.5rem, 1fr)); gap: 1.75rem 1.5rem; }
.figures div { display: flex; flex-direction: column-reverse; justify-content: flex-end; }
.figures dt { color: var(--muted); font-size: 0.875rem; }
.figures dd { font-size: 1.85rem; line-height: 1.25; font-weight: 600; letter-spacing: -0.02em; font-variant-numeric: tabular-nums; }
.figures.minor { margin-top: 1.75rem; padding-top: 1.5rem; border-top: 1px solid var(--rule); }
.figures.minor dd { font-size: 1.2rem; }
.figures .attention { color: var(--attention); }
.figures .zero { color: var(--muted); font-weight: 400; }

.facts { display: grid; grid-template-columns: minmax(7rem, max-content) 1fr; gap: 0.55rem 2rem; }
.facts dt { color: var(--muted); }
.facts ul { list-style: none; padding: 0; }

table { width: 100%; border-collapse: collapse; font-variant-numeric: tabular-nums; font-size: 0.9375rem; line-height: 1.5; }
caption { text-align: left; color: var(--muted); font-size: 0.875rem; padding-bottom: 0.5rem; }
th, td { text-align: left; vertical-align: top; padding: 0.5rem 0.75rem; border-bottom: 1px solid var(--rule); font-weight: 400; }
th:first-child { padding-left: 0; }
thead th:last-child, td:last-child { padding-right: 0; }
thead th { color: var(--muted); font-size: 0.8125rem; vertical-align: bottom; border-bottom-color: var(--muted); }
.number { text-align: right; }
td.number { white-space: nowrap; }
thead th { overflow-wrap: normal; hyphens: manual; }
#types tbody th { min-width: 7rem; }
tfoot th, tfoot td { font-weight: 650; border-bottom: 0; }
td .zero { color: var(--muted); }
td .attention { color: var(--attention); font-weight: 650; }
.kind { color: var(--muted); }
.detail { display: block; white-space: pre-line; }
.detail:has(> .kind) { display: grid; grid-template-columns: 5rem 1fr; }
.share + table, p + table { margin-top: 1rem; }
p + .figures { margin-top: 1.5rem; }

.group { margin-top: 2.5rem; }
.group h3 { display: flex; gap: 0.9rem; align-items: baseline; }
.group h3 .count { flex: none; color: var(--attention); font-variant-numeric: tabular-nums; }
.share { display: block; height: 0.3rem; margin-top: 0.45rem; max-width: 42rem; }
.share rect { fill: var(--attention); }
.share .all { fill: var(--rule); }

.steps { padding-left: 1.4rem; max-width: 46rem; }
.steps li { padding-left: 0.35rem; }
.steps li + li { margin-top: 1.1rem; }
.steps li::marker { color: var(--muted); }
.command {
  display: block; margin-top: 0.5rem; padding: 0.7rem 0.95rem; border-radius: 0.25rem;
  background: var(--panel); font-size: 0.875rem;
}
.command span { display: inline-block; max-width: 100%; }

.chart .plot { margin: 0.9rem 0 0 4.25rem; padding-bottom: 2rem; }
.chart svg { display: block; overflow: visible; }
.plot > svg { width: 100%; height: 14rem; }
.plot > svg > svg { width: 100%; height: 100%; }
.chart text { fill: var(--muted); font-size: 0.8125rem; font-variant-numeric: tabular-nums; }
.chart line { stroke: var(--rule); stroke-width: 1; }
.chart .axis { stroke: var(--muted); }
.chart .average { stroke: var(--text); stroke-width: 1; stroke-dasharray: 6 5; }
.chart .area { fill: var(--area); stroke: none; }
.chart .curve { fill: none; stroke: var(--blue); stroke-width: 1.75; vector-effect: non-scaling-stroke; stroke-linejoin: round; }
.axis-title { color: var(--muted); font-size: 0.8125rem; display: flex; justify-content: space-between; gap: 1.5rem; }
.axis-title.time { justify-content: flex-end; margin-top: 0.25rem; }
.axis-title .key { color: var(--text); }
.axis-title .key::before { content: ""; display: inline-block; width: 1.75rem; border-top: 1px dashed var(--text); vertical-align: 0.3em; margin-right: 0.6rem; }
figcaption { color: var(--muted); font-size: 0.875rem; margin-top: 0.9rem; max-width: 42rem; }

footer { margin-top: 4.5rem; padding-top: 1.25rem; border-top: 1px solid var(--rule); color: var(--muted); font-size: 0.875rem; }

@media screen and (min-width: 60.01rem), print {
  .group table { table-layout: fixed; }
  .group th:nth-child(1) { width: 22%; }
  .group th:nth-child(2), .group th:nth-child(3) { width: 9%; }
  .group th:nth-child(4) { width: 12%; }
  [id^="source-"] table { table-layout: fixed; }
  [id^="source-"] th:nth-child(1) { width: 17%; }
  [id^="source-"] th:nth-child(2) { width: 11%; }
  [id^="source-"] th:nth-child(3), [id^="source-"] th:nth-child(4), [id^="source-"] th:nth-child(5) { width: 8%; }
  [id^="source-"] th:nth-child(6) { width: 14%; }
}
@media screen and (max-width: 60rem) {
  table, caption, tr, tbody th, tfoot th, td { display: block; }
  thead { position: absolute; width: 1px; height: 1px; overflow: hidden; clip-path: inset(50%); }
  tbody, tfoot { display: grid; grid-template-columns: repeat(auto-fill, minmax(min(19rem, 100%), 1fr)); column-gap: 3rem; }
  tr { padding: 0.75rem 0; border-top: 1px solid var(--rule); }
  th, td { border: 0; padding: 0.1rem 0; }
  tbody th, tfoot th { font-weight: 600; }
  td { display: flex; justify-content: space-between; gap: 1.5rem; }
  td::before { content: attr(data-label); color: var(--muted); flex: none; }
  tbody td:has(> .zero), td:empty { display: none; }
  td.long, td.long::before { display: block; }
}
@media screen and (max-width: 44rem) {
  body { padding: 2rem 1.1rem 3rem; }
  h1 { font-size: 1.6rem; }
  .verdict { padding: 1rem 1.1rem; }
  .verdict .sentence { font-size: 1.125rem; }
  section { margin-top: 3rem; }
  .figures { grid-template-columns: repeat(2, 1fr); }
  .facts { display: block; }
  .facts dd { margin-bottom: 0.8rem; }
  .chart .plot { margin-left: 3.5rem; }
  .plot > svg { height: 11rem; }
}
@media print {
  :root {
    color-scheme: light;
    --page: #fff; --panel: #f5f6f7; --text: #000; --muted: #444; --rule: #ccc;
    --blue: #2b5c8f; --area: #2b5c8f1f; --good: #1c6e46; --good-panel: #fff;
    --attention: #875200; --attention-panel: #fff; --bad: #a3302a; --bad-panel: #fff;
  }
  @page { margin: 18mm 16mm; }
  body { padding: 0; max-width: none; font-size: 10.5pt; }
  section { margin-top: 2rem; }
  table { font-size: 8.5pt; line-height: 1.4; }
  th, td { padding: 0.35rem 0.4rem; }
  thead th { font-size: 8pt; }
  .figures { grid-template-columns: repeat(5, 1fr); }
  .figures.minor { grid-template-columns: repeat(3, 1fr); }
  h2, h3, caption { break-after: avoid; }
  tr, .verdict, .chart, .steps li { break-inside: avoid; }
  thead { display: table-header-group; }
  .verdict { border: 1px solid; border-left-width: 0.3rem; }
  .command { border: 1px solid var(--rule); }
  a { color: inherit; text-decoration: none; }
}
)css";
}

}  // namespace tool
