#pragma once

#include <functional>
#include <vector>

namespace tesserine::test {

/// What `runInChild` returns for a body that threw; the reason is on standard error.
inline constexpr int childThrew = 99;

/// Runs `body` in a forked process, waits for it and returns its exit status: 0 when `body`
/// returned, `childThrew` when it threw, 128 + n when signal n killed it, or what it gave to _exit.
/// Assertions inside `body` are not seen: let it throw. Call it while this process has neither a
/// database open nor threads.
int runInChild(const std::function<void()>& body);

/// The same in `count` processes at once, which get their number from 0 on and start together.
/// Returns their exit statuses.
std::vector<int> runInChildren(int count, const std::function<void(int)>& body);

}  // namespace tesserine::test
