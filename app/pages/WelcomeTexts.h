#pragma once

#include <string_view>

namespace tesserine::app::welcome {

/// A note that teaches. `[[2]]` in the body is the address of the note with that place in the list.
struct Text {
    std::string_view title;
    std::string_view html;
};

inline constexpr Text texts[] = {
    {"Welcome to Tesserine", R"html(
<p>This is a note. Click anywhere and write: everything is saved while you type.</p>
<h2>Five minutes to feel at home</h2>
<ul class="ts-checklist">
<li data-checked="false">Tick this line: click its box, or press <strong>Ctrl+Enter</strong> in it.</li>
<li data-checked="false">Press <strong>Ctrl+N</strong> and write your first note.</li>
<li data-checked="false">Press <strong>Ctrl+Shift+N</strong> and type <code>Call Ann tomorrow 9am p1</code>. Watch how the words become a task.</li>
<li data-checked="false">Press <strong>Ctrl+P</strong> and go to another note by a few letters of its title.</li>
<li data-checked="false">Press <strong>Ctrl+Shift+P</strong>: everything this program can do, by name.</li>
</ul>
<h2>Read on</h2>
<ul>
<li><a href="[[1]]">Write</a>: styles, lists, links between notes, pictures</li>
<li><a href="[[2]]">Find</a>: words, tags, dates, and searches worth keeping</li>
<li><a href="[[3]]">Do</a>: tasks from one sentence, reminders, a calendar</li>
<li><a href="[[4]]">Keep</a>: where your notes are, copies of them, and passages only you can read</li>
</ul>
<p>When you have seen enough, move these notes to the trash. Help, Welcome Notes brings them back.</p>
)html"},
    {"Write", R"html(
<p>Type a sign at the beginning of a line and it becomes a style:</p>
<ul>
<li><code># </code> and a space: a heading; <code>## </code> a smaller one</li>
<li><code>- </code> a list, <code>1. </code> a numbered one, <code>[] </code> a checklist</li>
<li><code>&gt; </code> a quote, <code>```</code> a block of code</li>
</ul>
<p>The usual keys work as well: <strong>Ctrl+B</strong> bold, <em>Ctrl+I</em> italic, <u>Ctrl+U</u> underline, Ctrl+K a link. <mark>Highlight</mark> and the rest stand in the menu Format.</p>
<h2>Notes that know each other</h2>
<p>Type <code>[[</code> and a few letters to link to another note, as <a href="[[0]]">here to the first one</a>. View, Links to This Note shows from where a note is linked.</p>
<h2>Pictures and files</h2>
<p>Drop them into a note or paste them. They are kept in the library, whole, and go wherever the note goes.</p>
<blockquote><p>Nothing you paste runs, tracks or loads anything. What was left out is said in one line.</p></blockquote>
<h2>Earlier versions</h2>
<p>Note, Show Versions: what the note was before, side by side with what it is now. A version can come back at any time.</p>
)html"},
    {"Find", R"html(
<p>Press <strong>Ctrl+Shift+F</strong> and type. Words are found in titles, texts and the names of files, whatever their accents; the line above the results says what was understood.</p>
<h2>Ask more closely</h2>
<table><tbody>
<tr><td>invoice acme</td><td>both words</td></tr>
<tr><td>"exact words"</td><td>one after the other</td></tr>
<tr><td>invoice -draft</td><td>without a word</td></tr>
<tr><td>tag:work</td><td>notes with a tag, and the tags below it</td></tr>
<tr><td>notebook:Plans</td><td>notes of a notebook</td></tr>
<tr><td>created:2026</td><td>made in that year</td></tr>
</tbody></table>
<p>A search worth keeping can be saved: it then stands in the sidebar and is always up to date.</p>
<h2>Order that grows</h2>
<p>Notebooks hold notes, as drawers do; a note is in one of them. Tags are for what cuts across: a note may have many. Both can stand inside each other. Start without either: searching is enough for a long time.</p>
)html"},
    {"Do", R"html(
<p>A task is one sentence. Press <strong>Ctrl+Shift+N</strong> and write it as you would say it:</p>
<ul>
<li><code>Send invoice friday 9am #Work p1</code></li>
<li><code>Water the plants every 3 days</code></li>
<li><code>Pay rent monthly @home</code></li>
</ul>
<p>What was understood is coloured while you type, and said in words below. Click a coloured word to turn it back into text.</p>
<h2>Where tasks are</h2>
<p><strong>Today</strong> shows what is due and overdue, <strong>Upcoming</strong> what comes next, <strong>Calendar</strong> the month and the week. New tasks without a place go to the <strong>Inbox</strong>.</p>
<h2>In a list of tasks</h2>
<p>Space completes, <strong>D</strong> sets the date, <strong>1</strong> to <strong>4</strong> the priority, <strong>M</strong> moves to a project. A task that repeats moves on to its next date.</p>
)html"},
    {"Keep", R"html(
<p>Your library is one folder on this computer. Settings, Storage shows where. Nothing leaves it unless you say so.</p>
<h2>Copies</h2>
<p>A backup is made once a day, before every import and before much is deleted, and each is checked. File, Export Library writes everything as pages, Markdown and files that any program can read.</p>
<h2>Passages only you can read</h2>
<p>Select some text, then Note, Lock Selection. It is encrypted with a passphrase of yours, and the readable words are then in no file of the library. Nobody can open it without the passphrase, so keep that well.</p>
<h2>The trash</h2>
<p>Deleted notes wait in the trash until you empty it, or for as long as Settings, Storage says.</p>
)html"},
};

/// Tasks to try; sentences of quick add.
inline constexpr std::string_view tasks[] = {
    "Read the welcome notes today p2",
    "Write the first note of my own today",
    "Look at the calendar tomorrow 9am",
    "Tidy the Inbox every friday",
};

}  // namespace tesserine::app::welcome
