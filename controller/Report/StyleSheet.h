#pragma once

#include <string_view>

namespace controller {

/// The report's only style sheet. Colours are variables, which a dark system replaces; the eight colours of lines keep
/// apart for the colour-blind too (M. Okabe and K. Ito, Color universal design, 2008).
inline constexpr std::string_view kStyleSheet = R"css(
:root {
  color-scheme: light dark;
  --paper: #fbfbfa; --card: #ffffff; --ink: #1d2328; --soft: #5c6670; --rule: #dfe3e6; --grid: #e9ecee;
  --good: #00664a; --good-paper: #e0f2ec; --bad: #8a3b00; --bad-paper: #fcebdd;
  --c0: #0072b2; --c1: #d55e00; --c2: #009e73; --c3: #b0508c; --c4: #b07c00; --c5: #3d9fd4; --c6: #7a6a4f; --c7: #5c5c5c;
}
@media (prefers-color-scheme: dark) {
  :root {
    --paper: #14181b; --card: #1c2226; --ink: #e6e9eb; --soft: #9ca8b0; --rule: #333c42; --grid: #2a3238;
    --good: #7fdcbc; --good-paper: #12382d; --bad: #ffb787; --bad-paper: #432512;
    --c0: #5ab4e5; --c1: #ff8a3d; --c2: #3dcb9f; --c3: #e08cc0; --c4: #e6b94a; --c5: #8fd0f5; --c6: #c9b48e; --c7: #b5b5b5;
  }
}
* { box-sizing: border-box; }
body { margin: 0; background: var(--paper); color: var(--ink); font: 15px/1.5 system-ui, "DejaVu Sans", sans-serif; }
main { max-width: 76rem; margin: 0 auto; padding: 1.5rem clamp(0.75rem, 3vw, 2rem) 3rem; }
h1 { font-size: 1.7rem; line-height: 1.25; margin: 0 0 0.25rem; overflow-wrap: anywhere; }
h2 { font-size: 1.25rem; line-height: 1.3; margin: 2.25rem 0 0.5rem; overflow-wrap: anywhere; }
h3 { font-size: 1rem; margin: 0 0 0.5rem; overflow-wrap: anywhere; }
p { margin: 0.25rem 0 0.75rem; overflow-wrap: anywhere; }
a { color: var(--c0); }
.soft, figcaption { color: var(--soft); }
.facts { display: grid; grid-template-columns: repeat(auto-fit, minmax(10rem, 1fr)); gap: 0.75rem; margin: 1rem 0; padding: 0; }
.facts div { background: var(--card); border: 1px solid var(--rule); border-radius: 8px; padding: 0.6rem 0.9rem; }
.facts dt { color: var(--soft); font-size: 0.85rem; }
.facts dd { margin: 0; font-size: 1.15rem; font-variant-numeric: tabular-nums; }
.verdict { display: inline-block; border-radius: 999px; padding: 0 0.65em; font-size: 0.85rem; font-weight: 600;
  white-space: nowrap; background: var(--bad-paper); color: var(--bad); }
.verdict.reached { background: var(--good-paper); color: var(--good); }
h2 .verdict { vertical-align: 0.15em; }
.remarks { margin: 0 0 0.75rem; padding: 0.5rem 0.9rem 0.5rem 2rem; border-left: 3px solid var(--bad); background: var(--bad-paper);
  border-radius: 0 6px 6px 0; }
.scroll { overflow-x: auto; border: 1px solid var(--rule); border-radius: 8px; background: var(--card); margin: 0.5rem 0 1rem; }
table { border-collapse: collapse; width: 100%; font-variant-numeric: tabular-nums; font-size: 0.9rem; }
th, td { padding: 0.35rem 0.7rem; text-align: right; white-space: nowrap; border-bottom: 1px solid var(--rule); }
tr:last-child > * { border-bottom: 0; }
thead th { color: var(--soft); font-weight: 600; font-size: 0.8rem; vertical-align: bottom; }
th:first-child { text-align: left; position: sticky; left: 0; background: var(--card); }
td.text, th.text { text-align: left; }
td.long { white-space: normal; overflow-wrap: anywhere; min-width: 12rem; }
tbody th { font-weight: 600; }
tbody th.wrap { white-space: normal; overflow-wrap: break-word; min-width: 10rem; max-width: 18rem; }
.plots { display: grid; grid-template-columns: repeat(auto-fill, minmax(min(100%, 24rem), 1fr)); gap: 1rem; }
.card { background: var(--card); border: 1px solid var(--rule); border-radius: 8px; padding: 0.9rem; min-width: 0; margin: 0 0 1rem; }
figure { margin: 0; min-width: 0; }
figcaption { font-size: 0.85rem; margin-top: 0.25rem; }
details > summary { cursor: pointer; color: var(--c0); margin: 0.5rem 0; }
.curve { max-width: 42rem; }
.legend { display: flex; flex-wrap: wrap; gap: 0.25rem 1.25rem; list-style: none; padding: 0; margin: 0.5rem 0 0; font-size: 0.9rem; }
.legend li { display: flex; align-items: center; gap: 0.5rem; overflow-wrap: anywhere; min-width: 0; }
.legend svg { width: 28px; height: 10px; flex: none; }
svg.plot { display: block; width: 100%; height: auto; }
svg text { font-family: system-ui, "DejaVu Sans", sans-serif; fill: var(--soft); font-size: 11px; font-variant-numeric: tabular-nums; }
svg .label { font-size: 11.5px; }
.grid { stroke: var(--grid); fill: none; }
.axis { stroke: var(--soft); fill: none; }
.line { fill: none; stroke: var(--c); stroke-width: 2; stroke-linejoin: round; }
.line.dashed { stroke-dasharray: 7 4; }
.line.dotted { stroke-dasharray: 2 3; }
.band { fill: var(--c); opacity: 0.2; }
.bar { fill: var(--c); }
.dot { fill: var(--c); }
.line.wanted { stroke: var(--c1); stroke-width: 1.2; stroke-dasharray: 5 4; }
.line.mark { stroke: var(--c1); stroke-width: 1.8; }
.c0 { --c: var(--c0); } .c1 { --c: var(--c1); } .c2 { --c: var(--c2); } .c3 { --c: var(--c3); }
.c4 { --c: var(--c4); } .c5 { --c: var(--c5); } .c6 { --c: var(--c6); } .c7 { --c: var(--c7); }
@media (max-width: 36rem) {
  tbody th.wrap { min-width: 6.5rem; max-width: 8rem; }
  th, td { padding: 0.3rem 0.5rem; }
  svg text, svg .label { font-size: 13.5px; }
}
@media print { details > *, details:not([open]) > * { display: block; } .card { break-inside: avoid; } }
)css";

}  // namespace controller
