// The style and the script of a page, as they stand in it.
#pragma once

#include <string_view>

namespace nuvelta::support {

// Colours: what a thing means is always said in words, too.
inline constexpr std::string_view kTimelineStyle = R"(
:root { color-scheme: light dark;
  --paper: #ffffff; --card: #f5f7fa; --ink: #1c2128; --dim: #57606a; --rule: #d0d7de;
  --on: #12703a; --on-soft: #cdeed8; --off: #8a5300; --off-soft: #fbe5bd;
  --bad: #b3261e; --bad-soft: #fbd5d1; --dark: #6639ba; --dark-soft: #e6dbf9;
  --scope: #d6e4f5; --scope-edge: #7d9cc4; --link: #0a58b5; --fold: #e7ebf0; --radio-off: #d9dee4 }
@media (prefers-color-scheme: dark) { :root {
  --paper: #15191f; --card: #1f252d; --ink: #e4e8ed; --dim: #a3adb8; --rule: #3b444f;
  --on: #6fdc98; --on-soft: #17492b; --off: #f2bf63; --off-soft: #563b08;
  --bad: #ff9d94; --bad-soft: #6b201b; --dark: #c9aefc; --dark-soft: #432c70;
  --scope: #26384f; --scope-edge: #5b7ba6; --link: #83b8ff; --fold: #262d36; --radio-off: #39424d } }
* { box-sizing: border-box }
body { margin: 0 auto; max-width: 1320px; padding: 20px 24px 64px; background: var(--paper);
  color: var(--ink); font: 15px/1.5 system-ui, "Segoe UI", "DejaVu Sans", sans-serif }
h1 { font-size: 20px; margin: 0 0 12px; overflow-wrap: anywhere }
h2 { font-size: 18px; margin: 36px 0 8px; overflow-wrap: anywhere }
h3 { font-size: 14px; margin: 22px 0 4px }
p { margin: 4px 0 }
a { color: var(--link) }
code, pre, .log { font-family: ui-monospace, Consolas, "DejaVu Sans Mono", monospace; font-size: 12px }
.dim, caption, figcaption { color: var(--dim) }
.verdict { border: 1px solid var(--rule); border-left: 10px solid var(--v); border-radius: 6px;
  background: var(--card); padding: 14px 18px }
.verdict strong { font-size: 22px; color: var(--v) }
.verdict dl { display: grid; grid-template-columns: max-content 1fr; gap: 4px 16px; margin: 8px 0 0 }
.verdict dt { color: var(--dim) }
.verdict dd { margin: 0; overflow-wrap: anywhere }
.on { --v: var(--on); --vs: var(--on-soft) }
.rule { --v: var(--off); --vs: var(--off-soft) }
.failure { --v: var(--bad); --vs: var(--bad-soft) }
.unknown { --v: var(--dark); --vs: var(--dark-soft) }
.problem { border-left: 6px solid var(--bad); padding: 4px 12px; background: var(--card) }
.scroll { overflow-x: auto }
table { border-collapse: collapse; width: 100% }
caption { text-align: left; padding: 4px 0 }
th, td { text-align: left; vertical-align: top; padding: 4px 12px 4px 0; border-bottom: 1px solid var(--rule) }
th { white-space: nowrap; font-weight: 600 }
td.number { font-variant-numeric: tabular-nums; white-space: nowrap }
.chip { display: inline-block; padding: 0 8px; border-radius: 4px; background: var(--vs); color: var(--ink);
  border-left: 4px solid var(--v) }
svg { display: block; width: 100%; min-width: 980px; height: auto }
svg text { fill: var(--ink); font: 11px system-ui, "Segoe UI", "DejaVu Sans", sans-serif }
svg text.name { fill: var(--dim) }
svg text.time { fill: var(--dim); font-variant-numeric: tabular-nums }
svg [data-n] { cursor: pointer }
.guide, .lane, .seam { stroke: var(--rule); fill: none }
.guide { stroke-dasharray: 1 3 }
.seam { stroke-dasharray: 3 3 }
.seam.process { stroke: var(--ink); stroke-dasharray: none }
.pause rect { fill: var(--fold) }
.pause text { text-anchor: middle; fill: var(--dim) }
.scope rect { fill: var(--scope); stroke: var(--scope-edge); stroke-width: .7 }
.scope.endless rect { stroke-dasharray: 3 2 }
.tick { stroke: var(--dim); stroke-width: 2.4 }
.tick.trace { stroke: var(--scope-edge) }
.tick.error { stroke: var(--bad) }
.tick.foreign { stroke: var(--dark) }
.run rect { fill: var(--vs); stroke: var(--v) }
.command rect { fill: var(--on-soft); stroke: var(--on) }
.command.failed rect { fill: var(--bad-soft); stroke: var(--bad) }
.radio.lit rect { fill: var(--on-soft); stroke: var(--on) }
.radio.dark rect { fill: var(--radio-off); stroke: var(--dim) }
.radio.untold path { stroke: var(--dim); stroke-dasharray: 2 5; fill: none }
.mark path, .mark rect, .mark circle { fill: var(--dim) }
.mark.trigger path { fill: var(--link) }
.mark.power path { fill: var(--dark) }
.mark.trouble path { fill: var(--bad) }
.mark.service rect { fill: var(--ink) }
a.run:hover rect, a.run:focus rect { stroke-width: 3 }
.chosen > rect, path.chosen { stroke: var(--link); stroke-width: 4 }
.between { text-align: center; color: var(--dim); margin: 14px 0 -8px }
details { margin: 6px 0 }
footer { margin-top: 40px }
summary { cursor: pointer; color: var(--link) }
.again { border-left: 3px solid var(--rule); padding-left: 14px }
.log { list-style: none; margin: 4px 0 0; padding: 8px 12px; background: var(--card); border-radius: 6px;
  overflow-x: auto }
.log li { white-space: pre }
.log li:target, .log li.chosen { background: var(--off-soft) }
.log i { color: var(--dim); font-style: normal; display: inline-block }
.log .error { color: var(--bad) }
.log .trace { color: var(--dim) }
.legend { display: flex; flex-wrap: wrap; gap: 4px 20px; padding: 0; list-style: none; font-size: 13px }
.legend svg { display: inline-block; width: 16px; min-width: 0; height: 14px; vertical-align: -2px }
#shown { position: fixed; left: 0; right: 0; bottom: 0; padding: 10px 24px; background: var(--card);
  border-top: 2px solid var(--link); white-space: pre-wrap; overflow-wrap: anywhere; max-height: 40vh;
  overflow-y: auto }
#shown:empty { display: none }
@media print { #shown { display: none } body { max-width: none } }
)";

// A click on anything of a drawing shows what it is, and leads to its line. The page is
// whole without it.
inline constexpr std::string_view kTimelineScript = R"(
"use strict";
const shown = document.getElementById("shown");
let chosen = [];
const choose = (element) => {
  chosen.forEach((one) => one.classList.remove("chosen"));
  chosen = [];
  shown.replaceChildren();
  if (!element) return;
  const line = document.getElementById("n" + element.dataset.n);
  chosen = [element, line].filter(Boolean);
  chosen.forEach((one) => one.classList.add("chosen"));
  shown.append(element.querySelector("title").textContent + "\n");
  if (!line) return;
  const link = document.createElement("a");
  link.href = "#" + line.id;
  link.textContent = "show the line in the log";
  shown.append(link);
};
document.addEventListener("click", (event) => {
  if (shown.contains(event.target)) return;
  choose(event.target.closest("svg [data-n]"));
});
document.addEventListener("keydown", (event) => { if (event.key === "Escape") choose(null); });
const open = () => {
  const target = location.hash.length > 1 && document.getElementById(location.hash.slice(1));
  if (!target) return;
  for (let one = target; one; one = one.parentElement) if (one.tagName === "DETAILS") one.open = true;
  target.scrollIntoView({ block: "center" });
};
addEventListener("hashchange", open);
open();
)";
// Of the script: the page lets no other run.
inline constexpr std::string_view kTimelineScriptHash =
    "sha256-wwk+302LKn6mb+Vk8/X2yBjdM4tgBMkKEAGz2VqEd18=";

}  // namespace nuvelta::support
