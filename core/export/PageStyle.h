#pragma once

#include <string_view>

namespace tesserine {

/// The style sheet of exported pages: readable on any screen and on paper, light and dark, without
/// a script or anything from elsewhere.
inline constexpr std::string_view pageStyle = R"css(
:root { color-scheme: light dark; --ink: #1d1d1f; --faint: #6e6e73; --line: #d9d9de; --paper: #fff;
  --shade: #f4f4f6; --link: #0b57d0; }
@media (prefers-color-scheme: dark) { :root { --ink: #ececf1; --faint: #9a9aa2; --line: #3a3a40;
  --paper: #1b1b1e; --shade: #27272b; --link: #8ab4f8; } }
body { margin: 0; padding: 2.5em 1.25em 4em; background: var(--paper); color: var(--ink);
  font: 1em/1.6 system-ui, -apple-system, "Segoe UI", Roboto, "Noto Sans", sans-serif; }
.ts-note, .ts-index { max-width: 44em; margin: 0 auto; overflow-wrap: break-word; }
h1, h2, h3, h4, h5, h6 { line-height: 1.25; margin: 1.5em 0 .5em; }
.ts-title { margin-top: 0; font-size: 1.9em; }
.ts-meta, .ts-size, .ts-date { color: var(--faint); font-size: .875em; }
.ts-meta { margin: 0 0 2em; padding-bottom: 1em; border-bottom: 1px solid var(--line); }
a { color: var(--link); }
img { max-width: 100%; height: auto; border-radius: 4px; }
pre, code { font-family: ui-monospace, "SF Mono", Consolas, "DejaVu Sans Mono", monospace;
  font-size: .92em; background: var(--shade); border-radius: 4px; }
code { padding: .1em .3em; }
pre { padding: .8em 1em; overflow-x: auto; }
pre code { padding: 0; background: none; font-size: 1em; }
blockquote { margin: 1em 0; padding-left: 1em; border-left: 3px solid var(--line);
  color: var(--faint); }
table { border-collapse: collapse; display: block; overflow-x: auto; }
th, td { border: 1px solid var(--line); padding: .35em .7em; text-align: left; }
hr { border: 0; border-top: 1px solid var(--line); margin: 2em 0; }
mark { background: #ffe88a; color: #1d1d1f; }
li[data-checked] { list-style: none; position: relative; }
li[data-checked]::before { content: ""; position: absolute; left: -1.5em; top: .35em; width: .85em;
  height: .85em; border: 1.5px solid var(--faint); border-radius: 3px; }
li[data-checked="true"] { color: var(--faint); }
li[data-checked="true"]::before { content: "✓"; color: var(--paper); background: var(--faint);
  font-size: .85em; line-height: 1; text-align: center; }
.ts-unsupported { color: var(--faint); font-style: italic; }
.ts-encrypted { padding: .8em 1em; background: var(--shade); border-radius: 4px; }
.ts-attachments { margin-top: 3em; padding: 1em 0 0; border-top: 1px solid var(--line);
  list-style: none; }
.ts-index ul { list-style: none; padding: 0; }
.ts-index li { padding: .3em 0; border-bottom: 1px solid var(--line); }
@media print { body { padding: 0; } a { color: inherit; } pre, table { overflow: visible; } }
)css";

}  // namespace tesserine
