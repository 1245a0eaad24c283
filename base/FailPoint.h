#pragma once

#include <functional>
#include <string_view>

/// Named places where a test makes the program fail, stop or be killed. Compiled to nothing unless
/// `TESSERINE_FAIL_POINTS` is defined (the `dev` and `tsan` presets define it).
///
///     FAIL_POINT("save.committed");
#ifdef TESSERINE_FAIL_POINTS
#define FAIL_POINT(name) ::tesserine::failpoint::pass(name)
#else
#define FAIL_POINT(name) static_cast<void>(0)
#endif

namespace tesserine::failpoint {

/// What a fail point runs. It may throw, or end the process.
using Action = std::function<void()>;

/// Runs `action` at the `pass`-th passage (from 1) of `name`, once. Replaces what stood there.
void arm(std::string_view name, int pass, Action action);
/// Removes every action and count.
void disarmAll();
/// How often `name` was passed since it was armed or since `disarmAll`.
int passes(std::string_view name);
/// Called by `FAIL_POINT`. Also reads, once, the environment variable `TESSERINE_FAIL_POINT`
/// (`name:pass:kill` or `name:pass:throw`), so that whole programs can be stopped at a place.
void pass(std::string_view name);

}  // namespace tesserine::failpoint
