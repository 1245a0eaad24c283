#pragma once

#include <string_view>

namespace tesserine {

/// The style sheet of exported pages: readable on any screen and on paper, light and dark, without
/// a script or anything from elsewhere.
inline constexpr std::string_view pageStyle = R"css(
:root { color-scheme: light dark; --ink: #1d1d1f; --faint: #66666d; --line: #dcdce1; --paper: #fff;
  --shade: #f5f5f7; --link: #0b57d0; }
@media screen and (prefers-color-scheme: dark) { :root { --ink: #e8e8ed; --faint: #9d9da6;
  --line: #3a3a41; --paper: #1b1b1e; --shade: #26262b; --link: #8ab4f8; }
  /* Colours in a note were chosen for white paper. */
  .ts-body [style*="background"] { color: #1d1d1f; }
  .ts-body span[style*="color:"]:not([style*="background"]) { filter: invert(1) hue-rotate(180deg); }
  .ts-body [style*="color:"] span[style*="color:"] { filter: none; } }
html { -webkit-text-size-adjust: 100%; text-size-adjust: 100%; }
body { margin: 0; padding: 3em 1.25em 5em; background: var(--paper); color: var(--ink);
  font: 1em/1.6 system-ui, -apple-system, "Segoe UI", Roboto, "Noto Sans", sans-serif; }
.ts-note, .ts-index { max-width: 44em; margin: 0 auto; overflow-wrap: break-word; }
a { color: var(--link); text-underline-offset: .15em; text-decoration-thickness: 1px; }
h1, h2, h3, h4, h5, h6 { line-height: 1.3; margin: 1.6em 0 .5em; text-wrap: balance; }
h1 { font-size: 1.5em; } h2 { font-size: 1.3em; } h3 { font-size: 1.15em; }
h4, h5, h6 { font-size: 1em; } h6 { color: var(--faint); }
.ts-title { margin: 0 0 .35em; font-size: 2em; line-height: 1.2; letter-spacing: -.01em; }
.ts-meta, .ts-size, .ts-date { color: var(--faint); font-size: .875em; }
.ts-meta { margin: 0 0 2em; padding-bottom: 1.2em; border-bottom: 1px solid var(--line); }
.ts-body > :first-child { margin-top: 0; }
ul, ol, dl { margin: 1em 0; padding-inline-start: 1.75em; }
li > ul, li > ol { margin: .2em 0; }
li { margin: .2em 0; }
li[data-checked] { list-style: none; position: relative; }
li[data-checked]::before, li[data-checked="true"]::after { content: ""; position: absolute;
  box-sizing: border-box; print-color-adjust: exact; -webkit-print-color-adjust: exact; }
li[data-checked]::before { inset-inline-start: -1.6em; top: .3em; width: 1em; height: 1em;
  border: 1.5px solid var(--faint); border-radius: .25em; }
li[data-checked="true"]::before { background: var(--link); border-color: var(--link); }
li[data-checked="true"]::after { inset-inline-start: -1.26em; top: .42em; width: .34em;
  height: .64em; border: solid var(--paper); border-width: 0 .13em .13em 0;
  transform: rotate(42deg); }
li[data-checked="true"] { color: var(--faint); }
li[data-checked="false"] { color: var(--ink); }
dl { padding: 0; } dt { font-weight: 600; } dd { margin: 0 0 .5em 1.75em; }
img { max-width: 100%; height: auto; border-radius: 6px; vertical-align: middle; }
figure { margin: 1.5em 0; } figcaption, caption { color: var(--faint); font-size: .875em; }
pre, code { font-family: ui-monospace, "SF Mono", Consolas, "DejaVu Sans Mono", monospace;
  font-size: .9em; background: var(--shade); }
code { padding: .1em .3em; border-radius: 4px; }
pre { padding: 1em 1.2em; border-radius: 8px; overflow-x: auto; line-height: 1.5; tab-size: 4; }
pre code { padding: 0; background: none; font-size: 1em; }
blockquote { margin: 1.2em 0; padding: .1em 0 .1em 1.1em; border-left: 3px solid var(--line);
  color: var(--faint); }
blockquote > :first-child { margin-top: 0; } blockquote > :last-child { margin-bottom: 0; }
table { display: block; width: max-content; max-width: 100%; overflow-x: auto; margin: 1.2em 0;
  border-collapse: collapse; }
th, td { border: 1px solid var(--line); padding: .4em .75em; text-align: start;
  vertical-align: top; }
th { background: var(--shade); font-weight: 600; }
td > :first-child, th > :first-child { margin-top: 0; }
td > :last-child, th > :last-child { margin-bottom: 0; }
hr { border: 0; border-top: 1px solid var(--line); margin: 2.2em 0; }
mark { padding: 0 .1em; border-radius: 2px; background: #ffe88a; color: #1d1d1f; }
.ts-unsupported { color: var(--faint); font-style: italic; }
.ts-encrypted, [data-ts-attachment] { width: fit-content; max-width: 100%; box-sizing: border-box;
  margin: 1em 0; padding: .55em .9em; border: 1px solid var(--line); border-radius: 8px;
  background: var(--shade); }
.ts-encrypted { color: var(--faint); border-style: dashed; }
.ts-attachments { margin: 3em 0 0; padding: .6em 0 0; border-top: 1px solid var(--line);
  list-style: none; }
.ts-attachments li, .ts-index li { display: flex; flex-wrap: wrap; gap: 0 1.5em; margin: 0;
  align-items: baseline; justify-content: space-between; padding: .45em 0; }
.ts-attachments a, .ts-index a { min-width: 0; overflow-wrap: anywhere; }
.ts-index ul { list-style: none; margin: 0; padding: 0; }
.ts-index li + li { border-top: 1px solid var(--line); }
.ts-index h2 { margin-top: 2.2em; padding-bottom: .35em; border-bottom: 1px solid var(--line); }
.ts-index a { text-decoration: none; } .ts-index a:hover { text-decoration: underline; }
@media (max-width: 36em) { body { padding-top: 2em; } .ts-index li { display: block; }
  .ts-index .ts-date { display: block; } }
@media print { @page { margin: 18mm; } body { padding: 0; font-size: 10.5pt; }
  .ts-note, .ts-index { max-width: none; } a { color: inherit; }
  pre { white-space: pre-wrap; overflow-wrap: anywhere; } pre, table { overflow: visible; }
  table { display: table; width: auto; }
  h1, h2, h3, h4, h5, h6 { break-after: avoid; }
  li, pre, tr, img, blockquote { break-inside: avoid; } }
)css";

}  // namespace tesserine
